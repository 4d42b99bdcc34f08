#pragma once

#include <toml++/toml.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

// TOML from outside, read within limits: toml++ puts every part of a dotted key and every value inside a value on the
// stack, and so needs a text whose depth is known to be small.
namespace bounded_toml {

inline constexpr std::size_t kMostBytes = 1'048'576;
inline constexpr std::size_t kMostParts = 16;     // of a dotted key, and of a table's name
inline constexpr std::size_t kMostNested = 16;    // arrays and inline tables inside one another
inline constexpr std::size_t kLongestPart = 128;  // bytes of a key, or of one part of a dotted key

// What is wrong with a text, and where: line and column count from 1; line 0 is the file as a whole.
class Error : public std::runtime_error {
  public:
    Error(const toml::source_position& place, const std::string& reason);

    // "name:line:column: reason" or "name: reason", without control characters: the name and the reason quote what
    // others wrote.
    [[nodiscard]] std::string message(std::string_view name) const;

  private:
    toml::source_position place_;
};

// The text of a file, which is opened and read once. Throws Error, std::bad_alloc.
[[nodiscard]] std::string readFile(const std::string& path);

// Throws Error, std::bad_alloc.
[[nodiscard]] toml::table parse(std::string_view text);

}  // namespace bounded_toml
