#include "platform/file_replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace torvik::tool::platform {

namespace {

[[noreturn]] void fail(int code, const std::string& path) {
    throw std::system_error(code, std::generic_category(), path);
}

class Descriptor {
  public:
    Descriptor(const std::string& path, int flags, mode_t mode = 0)
        : descriptor_(open(path.c_str(), flags | O_CLOEXEC, mode)) {}
    ~Descriptor() {
        if (opened()) close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool opened() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

/// Where the links lead to, a file that is not there yet included.
std::string withoutLinks(const std::string& path) {
    constexpr int mostLinks = 40;
    std::filesystem::path resolved = path;
    std::error_code ignored;
    for (int i = 0; i < mostLinks; ++i) {
        if (!std::filesystem::is_symlink(resolved, ignored)) return resolved.string();
        const std::filesystem::path next = std::filesystem::read_symlink(resolved);
        resolved = next.is_absolute() ? next : resolved.parent_path() / next;
    }
    fail(ELOOP, path);
}

std::string folderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// An empty file of a name of its own.
std::string makeTemporary(const std::string& target, mode_t mode) {
    for (unsigned number = 0;; ++number) {
        std::string name =
            folderOf(target) + "/.torvik-" + std::to_string(getpid()) + "-" + std::to_string(number) + ".tmp";
        const Descriptor file(name, O_WRONLY | O_CREAT | O_EXCL, mode);
        if (file.opened()) return name;
        if (errno != EEXIST) fail(errno, target);
    }
}

void keepPermissions(const Descriptor& file, const std::string& target) {
    struct stat old {};
    if (stat(target.c_str(), &old) != 0) return;
    // An owner that is not ours to give stays ours.
    [[maybe_unused]] const int ownerKept = fchown(file.get(), old.st_uid, old.st_gid);
    fchmod(file.get(), old.st_mode & 0777U);
}

/// The new name must be on the disk, too; a file system that cannot flush folders need not.
void flushFolder(const std::string& target) {
    const Descriptor folder(folderOf(target), O_RDONLY | O_DIRECTORY);
    if (folder.opened()) fsync(folder.get());
}

}  // namespace

FileReplacement::FileReplacement(const std::string& target) : target_(withoutLinks(target)), name_(target_) {
    struct stat old {};
    const bool exists = stat(target_.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) return;
    if (exists && access(target_.c_str(), W_OK) != 0) fail(errno, target_);
    // Nobody else reads what replaces a file that may be private.
    name_ = makeTemporary(target_, exists ? 0600 : 0666);
}

FileReplacement::~FileReplacement() {
    if (!direct() && !committed_) unlink(name_.c_str());
}

void FileReplacement::commit() {
    if (direct()) return;
    {
        const Descriptor file(name_, O_WRONLY);
        if (!file.opened() || fsync(file.get()) != 0) fail(errno, target_);
        keepPermissions(file, target_);
    }
    if (rename(name_.c_str(), target_.c_str()) != 0) fail(errno, target_);
    committed_ = true;
    flushFolder(target_);
}

}  // namespace torvik::tool::platform
