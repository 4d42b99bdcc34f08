#include <cerrno>
#include <fstream>
#include <system_error>

#include "platform/file_replacement.h"

namespace torvik::tool::platform {

void replaceFile(const std::string& target, std::string_view content) {
    FileReplacement replacement(target);
    errno = 0;
    std::ofstream file(replacement.name(), std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file) throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), target);
    replacement.commit();
}

}  // namespace torvik::tool::platform
