#include <cerrno>

#include "platform/text_file.h"

namespace torvik::platform {

const char folderSeparator = '/';

std::uint32_t fileError() {
    return errno != 0 ? static_cast<std::uint32_t>(errno) : EIO;
}

}  // namespace torvik::platform
