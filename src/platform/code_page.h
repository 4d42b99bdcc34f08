// Conversion between the code pages of the system.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvik::platform {

// Nothing: the system does not know the code page, or a character does not exist in it.
std::optional<std::string> convertFromWindows1252(std::string_view text, std::uint32_t codePage);

}  // namespace torvik::platform
