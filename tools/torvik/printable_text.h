#pragma once

#include <string>
#include <string_view>

namespace torvik::tool {

/// Where the valid UTF-8 character that begins here ends, in bytes from the beginning; 0: none begins here.
std::size_t utf8Length(std::string_view text);

/// Whether the character that begins here controls a terminal: C0, DEL or C1.
bool isControl(std::string_view text);

/// A text that comes from elsewhere (a device, a file, a name) as people can be shown it: control characters and bytes
/// that are not UTF-8 become "\xNN"; the rest stays.
std::string printable(std::string_view text);

/// The same for whole lines: line ends and tabs stay, too.
std::string printableLines(std::string_view text);

}  // namespace torvik::tool
