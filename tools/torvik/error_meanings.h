#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/error_table.h"

namespace torvik::tool {

/// What an error code means in plain words. A code with several texts stands here as often, in the texts' order.
struct ErrorMeaning {
    std::uint32_t code;
    std::string_view meaning;
    std::string_view advice;
};

std::span<const ErrorMeaning> libraryMeanings();
std::span<const ErrorMeaning> deviceMeanings();
std::span<const ErrorMeaning> adapterMeanings();

/// The meaning of a code that the library tells, but has no text for.
struct TextlessMeaning {
    std::uint32_t code;
    bool isMark;  ///< the code stands in the high bits, the system's own error code in the low 16
    std::string_view text;
    std::string_view meaning;
    std::string_view advice;
};

std::span<const TextlessMeaning> textlessMeanings();

/// One of the meanings of a code: who tells it, with which text, and what to do about it.
struct Explanation {
    ErrorKind kind;
    std::uint32_t code;  ///< the code explained, or the one bit of it that this is about
    std::string text;
    std::string meaning;
    std::string advice;
};

/// All meanings of a code; none when it is unknown. A combination of adapter status bits gives one for each bit.
std::vector<Explanation> explain(std::uint32_t code);

/// The text of a code as TORVIKgetLastErrorText gives it.
std::string errorText(std::uint32_t code);

/// Who tells an error: "library", "device" or "CAN adapter".
std::string_view kindName(ErrorKind kind);

/// The adapter's own codes (no library, cannot be opened, receive event or thread not made), as told by an activation.
bool concernsAdapter(std::uint32_t code);

}  // namespace torvik::tool
