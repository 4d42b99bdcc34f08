#include "calib/ucf_parser.h"

#include <algorithm>
#include <utility>

#include "calib/ascii_look_alikes.h"
#include "calib/number_syntax.h"
#include "platform/code_page.h"

namespace torvik {

namespace {

constexpr std::size_t headerLimit = 32;
constexpr std::size_t stringLimit = 256;
constexpr std::string_view blanks = " \t";

std::string_view withoutLeading(std::string_view text, std::string_view characters) {
    text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
    return text;
}

bool isHeaderOf(std::string_view line, std::string_view section) {
    return line.size() >= section.size() + 2 && line.front() == '[' && line.substr(1).starts_with(section) &&
           line[section.size() + 1] == ']';
}

// The text behind the equals sign of the key's line. Nothing: another line.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key) {
    if (!line.starts_with(key)) return std::nullopt;
    const std::string_view rest = withoutLeading(line.substr(key.size()), blanks);
    if (rest.empty() || rest.front() != '=') return std::nullopt;
    return rest.substr(1);
}

std::optional<std::string_view> unquoted(std::string_view text) {
    if (text.empty() || text.front() != '"') return text;
    const std::size_t end = text.find('"', 1);
    if (end > stringLimit) return std::nullopt;  // too far away, or nowhere
    return text.substr(1, end - 1);
}

}  // namespace

void LineReader::skipWhiteSpace() {
    std::size_t length = 0;
    for (; length < rest_.size() && isWhiteSpace(rest_[length]); ++length)
        nextNumber_ += rest_[length] == '\n' ? 1 : 0;
    rest_.remove_prefix(length);
}

std::optional<std::string_view> LineReader::next() {
    // A text can begin with blank lines; behind every other line they are skipped anyway.
    if (rest_.starts_with('\n') || rest_.starts_with("\r\n")) skipWhiteSpace();
    if (rest_.empty()) return std::nullopt;
    std::string_view line = rest_.substr(0, longestLine);
    line = line.substr(0, line.find('\n'));
    const bool isFull = line.size() == longestLine;
    rest_.remove_prefix(line.size());
    lineNumber_ = nextNumber_;
    skipWhiteSpace();
    isCut_ = isFull && nextNumber_ == lineNumber_ && !rest_.empty();
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line.substr(0, line.find('\0'));
}

bool isComment(std::string_view line) {
    return line.empty() || std::string_view("\r\n #;").find(line.front()) != std::string_view::npos;
}

UCFparser::UCFparser(std::string text, std::uint32_t codePage) : text_(std::move(text)), codePage_(codePage) {
    LineReader lines(text_);
    for (std::size_t i = 0; i < lineLimit; ++i) {
        const auto line = lines.next();
        if (!line) return;
        if (!isComment(*line)) lines_.push_back({*line, lines.lineNumber()});
    }
}

std::optional<UCFparser::Line> UCFparser::find(std::string_view section, std::string_view key) const {
    if (section.size() + 2 >= headerLimit) return std::nullopt;
    bool inside = false;
    for (const Line& line : lines_) {
        if (line.text.front() == '[') {
            if (inside) return std::nullopt;
            inside = isHeaderOf(line.text, section);
        } else if (inside) {
            if (const auto value = valueOf(line.text, key)) return Line{*value, line.number};
        }
    }
    return std::nullopt;
}

std::size_t UCFparser::lineOf(std::string_view section, std::string_view key) const {
    const auto found = find(section, key);
    return found ? found->number : 0;
}

std::int32_t UCFparser::integer(std::string_view section, std::string_view key) const {
    const auto found = find(section, key);
    return found ? parseInteger(found->text) : noInteger;
}

double UCFparser::real(std::string_view section, std::string_view key) const {
    const auto found = find(section, key);
    return found ? parseReal(found->text) : noReal;
}

std::optional<std::string> UCFparser::string(std::string_view section, std::string_view key) const {
    const auto found = find(section, key);
    if (!found) return std::nullopt;
    const auto text = unquoted(withoutLeading(found->text, blanks));
    if (!text) return std::nullopt;
    std::string words(*text);
    std::erase_if(words, [](char character) { return character == '\r' || character == '\n'; });
    if (codePage_ == windows1252) return words;
    if (codePage_ == plainAscii) return replacedByLookAlikes(words);
    auto converted = platform::convertFromWindows1252(words, codePage_);
    if (converted && converted->size() >= stringLimit) return std::nullopt;
    return converted;
}

}  // namespace torvik
