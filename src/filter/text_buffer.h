// Text of numbers and words, the same under every locale.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace torvik {

// Appends to a buffer of the caller; what does not fit is cut.
class TextBuffer {
  public:
    explicit TextBuffer(std::span<char> buffer) : buffer_(buffer) {}

    TextBuffer& text(std::string_view words) {
        const std::size_t length = words.copy(buffer_.data() + length_, buffer_.size() - length_);
        length_ += length;
        return *this;
    }
    TextBuffer& integer(std::int64_t number) { return accept(std::to_chars(begin(), end(), number)); }
    // As printf's %.*f.
    TextBuffer& fixed(double number, int decimals) {
        return accept(std::to_chars(begin(), end(), number, std::chars_format::fixed, decimals));
    }
    // As printf's %g.
    TextBuffer& general(double number) {
        return accept(std::to_chars(begin(), end(), number, std::chars_format::general, 6));
    }

    std::string_view view() const { return {buffer_.data(), length_}; }
    void clear() { length_ = 0; }

  private:
    char* begin() const { return buffer_.data() + length_; }
    char* end() const { return buffer_.data() + buffer_.size(); }
    TextBuffer& accept(std::to_chars_result result) {
        if (result.ec == std::errc()) length_ = static_cast<std::size_t>(result.ptr - buffer_.data());
        return *this;
    }

    std::span<char> buffer_;
    std::size_t length_ = 0;
};

}  // namespace torvik
