#include "platform/code_page.h"

#include <iconv.h>

#include <cstdint>
#include <cstring>
#include <memory>

namespace torvik::platform {

namespace {

bool isOpen(iconv_t conversion) {
    std::intptr_t number = 0;
    std::memcpy(&number, &conversion, sizeof number);
    return number != -1;
}

struct CloseConversion {
    using pointer = iconv_t;
    void operator()(iconv_t conversion) const {
        if (isOpen(conversion)) iconv_close(conversion);
    }
};
using Conversion = std::unique_ptr<void, CloseConversion>;

std::string nameOf(std::uint32_t codePage) {
    constexpr std::uint32_t utf8 = 65001;
    return codePage == utf8 ? "UTF-8" : "CP" + std::to_string(codePage);
}

}  // namespace

std::optional<std::string> convertFromWindows1252(std::string_view text, std::uint32_t codePage) {
    const Conversion conversion(iconv_open(nameOf(codePage).c_str(), "CP1252"));
    if (!isOpen(conversion.get())) return std::nullopt;
    constexpr std::size_t longestCharacter = 8;
    std::string source(text);
    std::string result(source.size() * longestCharacter, '\0');
    char* from = source.data();
    char* to = result.data();
    std::size_t fromLeft = source.size();
    std::size_t toLeft = result.size();
    if (iconv(conversion.get(), &from, &fromLeft, &to, &toLeft) == static_cast<std::size_t>(-1)) return std::nullopt;
    result.resize(result.size() - toLeft);
    return result;
}

}  // namespace torvik::platform
