#include "platform/text_file.h"

#include <algorithm>
#include <utility>

namespace torvik::platform {

namespace {

// Cuts the text off at the end mark that stands behind `begin`; false: there is none.
bool endAtMark(std::string& text, std::size_t begin) {
    constexpr char controlZ = '\x1A';
    const std::size_t end = controlZEndsText ? text.find(controlZ, begin) : std::string::npos;
    if (end == std::string::npos) return false;
    text.resize(end);
    return true;
}

}  // namespace

TextFile::TextFile(const char* name, StopCheck mustEnd)
    : file_(name), mustEnd_(std::move(mustEnd)), error_(file_.error()) {}

void TextFile::write(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size());
        append(text.substr(0, length));
        if (length < text.size()) append(lineEnd);
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

void TextFile::append(std::string_view text) {
    while (!text.empty()) {
        if (length_ == buffer_.size()) flush();
        const std::size_t length = text.copy(buffer_.data() + length_, buffer_.size() - length_);
        length_ += length;
        text.remove_prefix(length);
    }
}

void TextFile::flush() {
    std::string_view rest(buffer_.data(), length_);
    while (error_ == 0 && !rest.empty()) {
        std::size_t written = 0;
        error_ = file_.write(rest, mustEnd_, written);
        rest.remove_prefix(written);
    }
    length_ = 0;
}

std::uint32_t TextFile::close() {
    flush();
    const std::uint32_t error = file_.close();
    if (error_ == 0) error_ = error;
    return error_;
}

ReadResult readTextFile(const char* name, std::size_t limit, std::string& text, const StopCheck& mustEnd) {
    text.clear();
    const InputStream file(name);
    if (file.error() != 0) return {ReadStatus::systemError, file.error()};
    if (!file.isRegular()) return {ReadStatus::notRegular};
    constexpr std::size_t portion = 65536;
    while (text.size() < limit) {
        if (mustEnd && mustEnd()) return {ReadStatus::stopped};
        const std::size_t before = text.size();
        text.resize(before + portion);
        std::size_t got = 0;
        const std::uint32_t error = file.read({text.data() + before, portion}, got);
        text.resize(before + got);
        if (error != 0) return {ReadStatus::systemError, error};
        if (got == 0 || endAtMark(text, before)) break;
    }
    return {};
}

}  // namespace torvik::platform
