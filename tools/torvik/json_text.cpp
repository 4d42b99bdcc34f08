#include "json_text.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "parameters/value.h"

namespace torvik::tool {

std::string quotedJson(std::string_view text) {
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
            quoted += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            fmt::format_to(std::back_inserter(quoted), "\\u{:04x}", static_cast<unsigned char>(character));
        } else {
            quoted += character;
        }
    }
    return quoted + "\"";
}

std::string singleJson(double number) {
    const std::string text = valueText(ValueKind::single, Value(number));
    return std::isfinite(number) ? text : quotedJson(text);
}

}  // namespace torvik::tool
