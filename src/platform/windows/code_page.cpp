#include "platform/code_page.h"

#include "windows_api.h"

namespace torvik::platform {

std::optional<std::string> convertFromWindows1252(std::string_view text, std::uint32_t codePage) {
    constexpr UINT windows1252 = 1252;
    if (text.empty()) return std::string();
    const int length = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');  // one unit for each byte
    if (MultiByteToWideChar(windows1252, 0, text.data(), length, wide.data(), length) != length) return std::nullopt;
    const int needed = WideCharToMultiByte(codePage, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    if (needed <= 0) return std::nullopt;
    std::string result(static_cast<std::size_t>(needed), '\0');
    if (WideCharToMultiByte(codePage, 0, wide.data(), length, result.data(), needed, nullptr, nullptr) != needed)
        return std::nullopt;
    return result;
}

}  // namespace torvik::platform
