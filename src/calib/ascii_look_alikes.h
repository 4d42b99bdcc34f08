// Windows-1252 in plain ASCII.
#pragma once

#include <string>
#include <string_view>

namespace torvik {

// Replaces every byte from 0x80 on by a character that looks like it, or drops it where none does.
std::string replacedByLookAlikes(std::string_view text);

}  // namespace torvik
