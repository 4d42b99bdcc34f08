#pragma once

#include <string>
#include <string_view>

namespace torvik::tool::platform {

/// A file that replaces another one only when it is complete: it is written under a temporary name in the same folder,
/// flushed to the disk, and renamed. The old file stays as it was until then, and for good unless `commit` is called.
/// A symbolic link stays, and the file that it leads to is replaced; the permissions of that file are kept. What exists
/// and is no regular file, as a pipe or /dev/null, is written directly.
class FileReplacement {
  public:
    /// Throws std::system_error when the target cannot be written.
    explicit FileReplacement(const std::string& target);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// The file to be written: it is there and empty unless it is the target itself.
    const std::string& name() const { return name_; }

    /// Takes the target's place. Throws std::system_error; the target is unchanged then.
    void commit();

  private:
    bool direct() const { return name_ == target_; }

    std::string target_;  ///< where links lead to
    std::string name_;
    bool committed_ = false;
};

/// Writes a whole file so. Throws std::system_error.
void replaceFile(const std::string& target, std::string_view content);

}  // namespace torvik::tool::platform
