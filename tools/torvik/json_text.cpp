#include "json_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "parameters/value.h"
#include "printable_text.h"

namespace torvik::tool {

/// Exact for every text of a device; in place of bytes that are no UTF-8 stands the character for such.
std::string quotedJson(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length == 0) {
            quoted += "\\ufffd";
        } else if (isControl(text)) {
            fmt::format_to(std::back_inserter(quoted), "\\u{:04x}", static_cast<unsigned char>(text[length - 1]));
        } else {
            if (text.front() == '"' || text.front() == '\\') quoted += '\\';
            quoted += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return quoted + "\"";
}

std::string singleJson(double number) {
    const std::string text = valueText(ValueKind::single, Value(number));
    return std::isfinite(number) ? text : quotedJson(text);
}

}  // namespace torvik::tool
