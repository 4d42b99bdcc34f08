#include "number_option.h"

#include <fmt/format.h>

#include "number_text.h"

namespace torvik::tool {

CLI::Option* addNumberOption(CLI::App& app, const std::string& name, std::uint32_t& number, NumberRange range,
                             const std::string& description) {
    const auto take = [&number, range, name](const std::string& text) {
        const auto parsed = parseNumber(text);
        if (!parsed || *parsed < range.smallest || *parsed > range.largest) {
            throw CLI::ValidationError(name, fmt::format("'{}' is not a whole number of {}..{} (decimal, or 0x and "
                                                         "hexadecimal)",
                                                         text, range.smallest, range.largest));
        }
        number = *parsed;
    };
    return app.add_option_function<std::string>(name, take, description)->type_name("NUMBER");
}

}  // namespace torvik::tool
