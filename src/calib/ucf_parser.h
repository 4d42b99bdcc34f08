// Reader of calibration files: sections in brackets, and lines with key and value in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvik {

inline constexpr std::size_t longestLine = 127;
inline constexpr std::size_t lineLimit = 200'000;  // of a calibration file; lines behind are not read

// The lines of a text as the reading format "%127[^\n]\n" delivers them: at most 127 characters, white space behind a
// line is skipped, and the rest of a longer line is the next one. Line ends may be LF or CR LF. Takes linear time.
class LineReader {
  public:
    explicit LineReader(std::string_view text) : rest_(text) {}

    // The next line up to its first zero byte. `nullopt`: the text has ended.
    std::optional<std::string_view> next();

    // About the line that next() returned last: its number by line feeds, from 1, and whether the next line is its
    // rest.
    std::size_t lineNumber() const { return lineNumber_; }
    bool isCut() const { return isCut_; }

  private:
    void skipWhiteSpace();

    std::string_view rest_;
    std::size_t lineNumber_ = 1;
    std::size_t nextNumber_ = 1;
    bool isCut_ = false;
};

// Whether a line is to be skipped.
bool isComment(std::string_view line);

// Every look-up starts at the beginning of the text and gives up after `lineLimit` lines. Section names and keys are
// compared exactly; of a section that stands twice, the first counts.
class UCFparser {
  public:
    static constexpr std::uint32_t windows1252 = 1252;
    static constexpr std::uint32_t plainAscii = 1;

    // Strings are converted from Windows-1252 into the code page; 1: bytes above 0x7F are replaced by look-alikes.
    explicit UCFparser(std::string text, std::uint32_t codePage = windows1252);
    UCFparser(const UCFparser&) = delete;
    UCFparser& operator=(const UCFparser&) = delete;
    virtual ~UCFparser() = default;

    // -1: missing or no whole number.
    std::int32_t integer(std::string_view section, std::string_view key) const;
    // -1e10: missing or no number.
    double real(std::string_view section, std::string_view key) const;
    // Nothing: missing, or its quotes do not end, or it cannot be converted.
    std::optional<std::string> string(std::string_view section, std::string_view key) const;

    // The line in which the key stands that counts, from 1; 0: nowhere.
    std::size_t lineOf(std::string_view section, std::string_view key) const;

  private:
    struct Line {
        std::string_view text;
        std::size_t number = 0;
    };

    // The line of the key from its value on.
    std::optional<Line> find(std::string_view section, std::string_view key) const;

    std::string text_;
    std::vector<Line> lines_;  // without comments
    std::uint32_t codePage_;
};

}  // namespace torvik
