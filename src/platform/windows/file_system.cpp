#include "platform/text_file.h"
#include "windows_api.h"

namespace torvik::platform {

const char folderSeparator = '\\';

std::uint32_t fileError() {
    const DWORD error = GetLastError();
    return error != 0 ? error : ERROR_WRITE_FAULT;
}

}  // namespace torvik::platform
