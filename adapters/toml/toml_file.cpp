#include "toml_file.hpp"

#include <algorithm>
#include <array>
#include <chrono>

#include "read_bounded.hpp"

namespace bounded_toml {
namespace {

constexpr std::chrono::seconds kPatience{10};
constexpr std::string_view kTooLarge = "the file has more than 1048576 bytes";

std::string_view reasonOf(ReadResult result) {
    switch (result) {
        case ReadResult::folder:
            return "this is a folder";
        case ReadResult::noFile:
            return "this is no file on a disk";
        case ReadResult::notRead:
            return "the file cannot be read";
        case ReadResult::tooLarge:
            return kTooLarge;
        case ReadResult::tooSlow:
            return "the file does not end within 10 s";
        default:
            return "there is no such file, or it cannot be opened";
    }
}

// Control characters of ASCII and, in UTF-8, of the 32 codes from U+0080.
std::string printable(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool upper = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (byte >= 0x20 && byte != 0x7F && !upper) {
            shown += text[i];
        } else {
            const unsigned code = upper ? static_cast<unsigned char>(text[++i]) : byte;
            shown += {'\\', 'x', digits[code >> 4U], digits[code & 0xFU]};
        }
    }
    return shown;
}

// Finds what would make toml++ go too deep or astray. It need not understand TOML: in a text that is none, it may find
// a limit exceeded where toml++ would find something else, but it never sees less depth than toml++ reaches.
class LimitCheck {
  public:
    explicit LimitCheck(std::string_view text) : text_(text) {}

    void run() {
        constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
        if (text_.starts_with(byteOrderMark)) at_ = byteOrderMark.size();
        while (at_ < text_.size())
            step();
    }

  private:
    void step() {
        const char character = text_[at_];
        switch (character) {
            case '#':
                at_ = std::min(text_.find('\n', at_), text_.size());
                return;
            case '"':
            case '\'':
                return string(character);
            case '[':
            case '{':
                open(character);
                break;
            case ']':
            case '}':
                if (depth_ > 0) --depth_;
                parts_ = 1;
                value_ = depth_ > 0 && nested_[depth_ - 1] == '[';
                break;
            case '\n':
                newLine();
                break;
            case '=':
            case ',':
                value_ = character == '=' || (depth_ > 0 && nested_[depth_ - 1] == '[' && !header_);
                parts_ = 1;
                break;
            case '.':
                if (++parts_ > kMostParts) fail("a key has more than 16 parts");
                break;
            default:
                if (character != ' ' && character != '\t' && character != '\r') return bare();
        }
        ++at_;
    }

    // No key and no table's name contains one of these characters outside quotes, or goes on in the next line.
    static bool endsBare(char character) {
        return std::string_view(" \t\r\n.=,[]{}#\"'").find(character) != std::string_view::npos;
    }

    void newLine() {
        ++line_;
        lineBegin_ = at_ + 1;
        parts_ = 1;
        if (depth_ == 0) value_ = false;
    }

    void open(char bracket) {
        if (depth_ == kMostNested) fail("arrays and inline tables are more than 16 deep");
        if (depth_ == 0) header_ = bracket == '[' && !value_;
        nested_[depth_++] = bracket;
        value_ = bracket == '[' && !header_;
        parts_ = 1;
    }

    void bare() {
        const std::size_t begin = at_;
        for (; at_ < text_.size() && !endsBare(text_[at_]); ++at_) {
            // No TOML, and some letters lead toml++ 3.3 to code that it takes for unreachable.
            if (static_cast<unsigned char>(text_[at_]) >= 0x80) fail("characters beyond ASCII need quotes");
        }
        checkLength(begin, at_ - begin);
    }

    void string(char quote) {
        const std::size_t begin = at_;
        if (text_.substr(at_, 3) == std::string(3, quote)) return longString(quote);
        for (++at_; at_ < text_.size() && text_[at_] != quote && text_[at_] != '\n'; ++at_) {
            if (quote == '"' && text_[at_] == '\\' && at_ + 1 < text_.size() && text_[at_ + 1] != '\n') ++at_;
        }
        const std::size_t length = at_ - begin - 1;
        // An unterminated string ends with its line, which toml++ rejects.
        if (at_ < text_.size() && text_[at_] == quote) ++at_;
        checkLength(begin, length);
    }

    void longString(char quote) {
        const std::string end(3, quote);
        for (at_ += 3; at_ < text_.size() && text_.substr(at_, 3) != end; ++at_) {
            if (text_[at_] == '\n') {
                ++line_;
                lineBegin_ = at_ + 1;
            }
            if (quote == '"' && text_[at_] == '\\' && at_ + 1 < text_.size() && text_[at_ + 1] != '\n') ++at_;
        }
        at_ = std::min(at_ + 3, text_.size());
        // Up to two quotes more belong to the string.
        for (int more = 0; more < 2 && at_ < text_.size() && text_[at_] == quote; ++more)
            ++at_;
    }

    void checkLength(std::size_t begin, std::size_t length) const {
        if (!value_ && length > kLongestPart) failAt(begin, "a key is longer than 128 bytes");
    }

    [[noreturn]] void fail(const char* reason) const { failAt(at_, reason); }

    [[noreturn]] void failAt(std::size_t place, const char* reason) const {
        throw Error({line_, static_cast<toml::source_index>(place - lineBegin_ + 1)}, reason);
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t lineBegin_ = 0;
    toml::source_index line_ = 1;
    std::size_t depth_ = 0;
    std::size_t parts_ = 1;
    bool header_ = false;  // inside the brackets of a table's name
    bool value_ = false;   // after "=", or inside an array
    std::array<char, kMostNested> nested_{};
};

}  // namespace

Error::Error(const toml::source_position& place, const std::string& reason)
    : std::runtime_error(reason), place_(place) {}

std::string Error::message(std::string_view name) const {
    std::string place(name);
    if (place_.line != 0) place += ":" + std::to_string(place_.line) + ":" + std::to_string(place_.column);
    return printable(place + ": " + what());
}

std::string readFile(const std::string& path) {
    std::string text;
    const ReadResult result = readBounded(path, kMostBytes, kPatience, text);
    if (result != ReadResult::complete) throw Error({0, 0}, std::string(reasonOf(result)));
    return text;
}

toml::table parse(std::string_view text) {
    if (text.size() > kMostBytes) throw Error({0, 0}, std::string(kTooLarge));
    LimitCheck(text).run();
    try {
        return toml::parse(text);
    } catch (const toml::parse_error& error) {
        throw Error(error.source().begin, std::string(error.description()));
    }
}

}  // namespace bounded_toml
