// Look-ups in a text of sections and keys: those that calibration files have, and one that the first line names as
// "section=key".
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "calib/number_syntax.h"
#include "calib/ucf_parser.h"

namespace {

using torvik::UCFparser;

void require(bool holds, const char* rule) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}

void checkLines(std::string_view text) {
    constexpr std::size_t longest = 127;
    torvik::LineReader lines(text);
    std::size_t count = 0;
    while (const auto line = lines.next()) {
        require(++count <= text.size(), "every line takes something of the text");
        require(line->size() <= longest, "lines have 127 characters at most");
        require(line->find_first_of(std::string_view("\n\0", 2)) == std::string_view::npos, "lines have no end inside");
    }
}

void checkNumbers(std::string_view text) {
    require(torvik::parseInteger(text) >= torvik::noInteger, "whole numbers are not negative");
    require(std::isfinite(torvik::parseReal(text)), "numbers are finite");
    if (const auto number = torvik::parseLeadingReal(text)) {
        require(std::isfinite(number->value), "leading numbers are finite");
        require(number->rest.size() < text.size(), "leading numbers have characters");
    }
}

void checkKey(const std::string& text, std::string_view section, std::string_view key) {
    for (const std::uint32_t codePage : {1252U, 1U, 437U, 65001U}) {
        const UCFparser parser(text, codePage);
        const auto value = parser.string(section, key);
        if (!value) continue;
        require(value->size() < 256, "strings are shorter than 256 bytes");
        require(value->find_first_of("\r\n") == std::string::npos, "strings have no line ends");
        const auto isAscii = [](char character) { return static_cast<unsigned char>(character) < 0x80; };
        if (codePage == UCFparser::plainAscii) require(std::ranges::all_of(*value, isAscii), "look-alikes are ASCII");
    }
    const UCFparser parser(text);
    require(parser.integer(section, key) >= torvik::noInteger, "whole numbers are not negative");
    require(std::isfinite(parser.real(section, key)), "numbers are finite");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkLines(text);
    checkNumbers(text);
    const std::string_view first = std::string_view(text).substr(0, text.find('\n'));
    const std::size_t equals = std::min(first.find('='), first.size());
    checkKey(text, first.substr(0, equals), first.substr(std::min(equals + 1, first.size())));
    checkKey(text, "SensorPara", "sn");
    checkKey(text, "SensorPara", "OutScaleFactor");
    checkKey(text, "ThisFile", "Version");
    checkKey(text, "Matrix_B", "FacB1_0");
    return 0;
}
