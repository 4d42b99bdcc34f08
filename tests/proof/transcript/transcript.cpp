#include "transcript/transcript.h"

#include <array>
#include <bit>
#include <charconv>
#include <cinttypes>
#include <span>
#include <stdexcept>

#include "virtual_control.h"

namespace torvik::proof {

Transcript::Transcript(const char* fileName) : file_(std::fopen(fileName, "w")) {
    if (file_ == nullptr) throw std::runtime_error("the transcript cannot be written");
}

Transcript::~Transcript() {
    std::fclose(file_);
}

void Transcript::section(std::string_view title) {
    write("== ");
    write(title);
    write("\n");
    writeFrames();
}

void Transcript::note(std::string_view name, std::int32_t deviceNo, std::int32_t result, std::string_view output) {
    begin(name, deviceNo);
    writeResult(result);
    write("\n  out ");
    writeText(output);
    end(deviceNo);
}

void Transcript::finish() {
    std::fprintf(file_, "end: %" PRIu64 " calls, %" PRIu64 " frames, %" PRIu64 " floating-point numbers\n", calls_,
                 frames_, values_);
    if (std::fflush(file_) != 0 || std::ferror(file_) != 0) throw std::runtime_error("the transcript is incomplete");
}

void Transcript::begin(std::string_view name, std::int32_t deviceNo) {
    ++calls_;
    write(name);
    write("(");
    writeInteger(deviceNo);
}

void Transcript::writeResult(std::int32_t result) {
    write(") = ");
    writeInteger(result);
}

void Transcript::end(std::int32_t deviceNo) {
    std::array<char, 128> text{};
    std::uint32_t code = 0;
    TORVIKgetLastErrorText(deviceNo, text.data(), &code);
    if (code != 0) {
        write("\n  error ");
        writeInteger(code);
        write(" ");
        writeText({text.data(), text.size()});
    }
    write("\n");
    writeFrames();
}

void Transcript::writeFrames() {
    std::array<VirtualFrame, 256> frames{};
    while (const std::uint32_t count = virtualTakeWritten(frames.data(), frames.size())) {
        for (const VirtualFrame& frame : std::span(frames).first(count)) {
            ++frames_;
            std::fprintf(file_, "  wire %03" PRIX32 " %u", frame.id, static_cast<unsigned>(frame.type));
            for (const std::uint8_t byte : std::span(frame.data).first(frame.length))
                std::fprintf(file_, " %02X", static_cast<unsigned>(byte));
            write("\n");
        }
    }
}

void Transcript::writeBits(double number) {
    ++values_;
    std::fprintf(file_, "%016" PRIX64, std::bit_cast<std::uint64_t>(number));
}

void Transcript::writeInteger(std::int64_t number) {
    std::array<char, 24> digits{};
    const auto [stop, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    write({digits.data(), stop});
}

void Transcript::writeText(std::string_view text) {
    write("\"");
    for (const char character : text.substr(0, text.find('\0'))) {
        if (character >= ' ' && character <= '~') {
            write({&character, 1});
        } else {
            std::fprintf(file_, "\\%02X", static_cast<unsigned>(static_cast<unsigned char>(character)));
        }
    }
    write("\"");
}

void Transcript::write(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), file_);
}

}  // namespace torvik::proof
