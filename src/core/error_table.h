// The texts of all error codes.
#pragma once

#include <cstdint>
#include <span>

namespace torvik {

enum class ErrorKind : std::uint8_t { library = 1, device = 2, adapter = 3 };

struct ErrorRow {
    ErrorKind kind;
    std::uint32_t code;
    const char* text;
};

// All rows, in the order in which they are searched.
std::span<const ErrorRow> errorRows();

// Writes the text of a code other than 0, cut to the size of `text` and always terminated; `text` must not be empty.
void formatError(std::uint32_t code, std::span<char> text);

}  // namespace torvik
