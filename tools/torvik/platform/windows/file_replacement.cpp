#include "platform/file_replacement.h"

#include <windows.h>

#include <array>
#include <system_error>

namespace torvik::tool::platform {

namespace {

// Names come in the process's code page, as files are opened with them.

constexpr DWORD everySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

[[noreturn]] void fail(DWORD code, const std::string& path) {
    throw std::system_error(static_cast<int>(code), std::system_category(), path);
}

class Handle {
  public:
    Handle(const std::string& path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL)
        : handle_(CreateFileA(path.c_str(), access, everySharing, nullptr, disposition, flags, nullptr)) {}
    ~Handle() {
        if (opened()) CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool opened() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

  private:
    HANDLE handle_;
};

/// Where a link leads to.
std::string withoutLinks(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return path;
    const Handle file(path, 0, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    std::array<char, 32768> name{};
    if (!file.opened() ||
        GetFinalPathNameByHandleA(file.get(), name.data(), static_cast<DWORD>(name.size()), FILE_NAME_NORMALIZED) == 0)
        fail(GetLastError(), path);
    return name.data();
}

/// CON, NUL and the like, in any folder; named pipes.
bool isDevice(const std::string& path) {
    std::array<char, 32768> full{};
    if (GetFullPathNameA(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr) == 0) return false;
    return std::string_view(full.data()).starts_with(R"(\\.\)");
}

bool isRegularOrNew(const std::string& path) {
    if (isDevice(path)) return false;
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return true;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
    const Handle file(path, GENERIC_READ, OPEN_EXISTING);
    return !file.opened() || GetFileType(file.get()) == FILE_TYPE_DISK;
}

std::string makeTemporary(const std::string& target) {
    const std::size_t end = target.find_last_of(R"(\/:)");
    const std::string folder = end == std::string::npos ? std::string() : target.substr(0, end + 1);
    for (unsigned number = 0;; ++number) {
        std::string name =
            folder + ".torvik-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(number) + ".tmp";
        const Handle file(name, GENERIC_WRITE, CREATE_NEW);
        if (file.opened()) return name;
        if (const DWORD code = GetLastError(); code != ERROR_FILE_EXISTS) fail(code, target);
    }
}

void refuseReadOnly(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
        fail(ERROR_ACCESS_DENIED, path);
}

}  // namespace

FileReplacement::FileReplacement(const std::string& target) : target_(withoutLinks(target)), name_(target_) {
    if (!isRegularOrNew(target_)) return;
    refuseReadOnly(target_);
    name_ = makeTemporary(target_);
}

FileReplacement::~FileReplacement() {
    if (!direct() && !committed_) DeleteFileA(name_.c_str());
}

void FileReplacement::commit() {
    if (direct()) return;
    {
        const Handle file(name_, GENERIC_WRITE, OPEN_EXISTING);
        if (!file.opened() || FlushFileBuffers(file.get()) == 0) fail(GetLastError(), target_);
    }
    // The first keeps the permissions of the file that is replaced; there may be none, or none that it can keep.
    if (ReplaceFileA(target_.c_str(), name_.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) == 0 &&
        MoveFileExA(name_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0)
        fail(GetLastError(), target_);
    committed_ = true;
}

}  // namespace torvik::tool::platform
