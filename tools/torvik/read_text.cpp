#include "read_text.h"

#include <fstream>
#include <iterator>

namespace torvik::tool {

std::optional<std::string> readText(const std::string& path) try {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::string text(std::istreambuf_iterator<char>(file), {});
    if (file.bad()) return std::nullopt;
    return text;
} catch (const std::ios_base::failure&) {
    return std::nullopt;
}

}  // namespace torvik::tool
