#include "read_bounded.hpp"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <array>

namespace bounded_toml {
namespace {

class File {
  public:
    explicit File(const std::string& path)
        : handle_(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~File() {
        if (opened()) CloseHandle(handle_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    [[nodiscard]] bool opened() const { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const { return handle_; }

  private:
    HANDLE handle_;
};

// A folder cannot be opened as a file.
bool isFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

ReadResult readBounded(const std::string& path, std::size_t most, std::chrono::milliseconds /*patience*/,
                       std::string& text) {
    if (isFolder(path)) return ReadResult::folder;
    const File file(path);
    if (!file.opened()) return ReadResult::notOpened;
    // Reading from a pipe or a device would block without a limit.
    if (GetFileType(file.get()) != FILE_TYPE_DISK) return ReadResult::noFile;
    std::array<char, 65'536> portion;
    for (std::size_t taken = 0;;) {
        DWORD got = 0;
        if (ReadFile(file.get(), portion.data(), static_cast<DWORD>(portion.size()), &got, nullptr) == 0)
            return ReadResult::notRead;
        if (got == 0) return ReadResult::complete;
        taken += got;
        if (taken > most) return ReadResult::tooLarge;
        text.append(portion.data(), got);
    }
}

}  // namespace bounded_toml
