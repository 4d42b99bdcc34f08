#include "support/bench_fixture.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace torvik::test {

LastError takeLastError(std::int32_t deviceNo) {
    std::array<char, 128> text{};
    std::uint32_t code = 0xFFFFFFFF;
    EXPECT_EQ(TORVIKgetLastErrorText(deviceNo, text.data(), &code), 0);
    return {code, text.data()};
}

std::string frameText(const VirtualFrame& frame) {
    std::array<char, 16> piece{};
    std::snprintf(piece.data(), piece.size(), "%X:", static_cast<unsigned>(frame.id));
    std::string text = piece.data();
    for (unsigned i = 0; i < frame.length && i < 8; ++i) {
        std::snprintf(piece.data(), piece.size(), " %02X", static_cast<unsigned>(frame.data[i]));
        text += piece.data();
    }
    return text;
}

std::vector<std::string> takeWritten() {
    std::vector<VirtualFrame> frames(65536);
    frames.resize(virtualTakeWritten(frames.data(), static_cast<std::uint32_t>(frames.size())));
    std::vector<std::string> texts(frames.size());
    std::ranges::transform(frames, texts.begin(), frameText);
    return texts;
}

VirtualFrame valueFrame(std::uint32_t id, unsigned channel, unsigned sequence, unsigned type, std::uint32_t value,
                        unsigned statusNibble) {
    // The value stands at the left end of the four bytes.
    const unsigned shift = type == int16Type ? 16 : type == int24Type ? 8 : 0;
    const std::uint32_t bits = value << shift;
    const auto byte = [](std::uint32_t number, unsigned place) {
        return static_cast<std::uint8_t>(number >> (8 * place));
    };
    return {id,
            0,
            8,
            {byte(channel, 0), byte(type << 4U | statusNibble, 0), byte(sequence, 1), byte(sequence, 0), byte(bits, 3),
             byte(bits, 2), byte(bits, 1), byte(bits, 0)}};
}

void Bench::SetUp() {
    TORVIKrelease(0);
    ASSERT_EQ(virtualReset(), 0) << virtualMessage();
    virtualHoldStream(amplifier, 1);
    takeLastError(40);
}

void Bench::TearDown() {
    TORVIKrelease(0);
}

void Bench::answerWith(std::uint32_t command, std::initializer_list<std::uint8_t> statusAndData, std::uint32_t times) {
    std::array<std::uint8_t, 8> answer{0x46};
    std::ranges::copy(statusAndData, answer.begin() + 1);
    virtualAnswerRule(amplifier, command, VIRTUAL_ANSWER_REPLACE, times, 0, answer.data());
}

void Bench::drop(std::uint32_t command, std::uint32_t times) {
    virtualAnswerRule(amplifier, command, VIRTUAL_ANSWER_DROP, times, 0, nullptr);
}

void Bench::activate(std::uint32_t bufferSize, std::uint8_t channels) {
    answerWith(0x49, {0, 0, channels}, 1);
    std::uint32_t count = 0;
    ASSERT_EQ(TORVIKactivateExtended(device, TORVIK_ADAPTER_USB, 1000000, bufferSize, &count, 0x100, answerId,
                                     TORVIK_FLAG_PROTOCOL_KIND_16),
              0)
        << takeLastError(device).text;
    ASSERT_EQ(count, channels);
    takeWritten();
}

void Bench::push(const std::vector<VirtualFrame>& frames) {
    ASSERT_EQ(virtualPushFrames(frames.data(), static_cast<std::uint32_t>(frames.size())), frames.size());
}

void Bench::pushSet(unsigned sequence, unsigned type, std::initializer_list<std::int32_t> values) {
    std::vector<VirtualFrame> frames;
    for (const std::int32_t value : values) {
        frames.push_back(valueFrame(valueId, static_cast<unsigned>(frames.size()), sequence, type,
                                    static_cast<std::uint32_t>(value)));
    }
    push(frames);
}

void Bench::settle() {
    // Frames are handled in order: an answer comes after all that was there before it.
    std::uint32_t ident = 0;
    ASSERT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), 0) << takeLastError(device).text;
}

void Bench::expectNothingSent() {
    EXPECT_THAT(takeWritten(), testing::IsEmpty());
}

void expectLastError(std::int32_t deviceNo, std::uint32_t code, std::string_view text) {
    const LastError first = takeLastError(deviceNo);
    EXPECT_EQ(first.code, code);
    EXPECT_EQ(first.text, text);
    EXPECT_EQ(takeLastError(deviceNo).text, "no error exists");
}

void expectNoError(std::int32_t deviceNo) {
    const LastError error = takeLastError(deviceNo);
    EXPECT_EQ(error.code, 0u);
    EXPECT_EQ(error.text, "no error exists");
}

}  // namespace torvik::test
