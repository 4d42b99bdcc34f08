#pragma once

#include <optional>
#include <string>

namespace torvik::tool {

/// Everything that stands in a file; nothing when it cannot be read, as a folder cannot.
std::optional<std::string> readText(const std::string& path);

}  // namespace torvik::tool
