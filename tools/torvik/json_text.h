#pragma once

#include <string>
#include <string_view>

namespace torvik::tool {

/// A text as JSON has it, quotes included.
std::string quotedJson(std::string_view text);

/// A number that was kept in single precision; one that JSON has no form for is a text.
std::string singleJson(double number);

}  // namespace torvik::tool
