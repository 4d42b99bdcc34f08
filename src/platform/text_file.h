// Text files: written with the system's own line ends, read as they are.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace torvik::platform {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

class TextFile {
  public:
    // Creates or empties the file; on Windows the name is in the process's code page.
    explicit TextFile(const char* name);

    bool opened() const { return file_ != nullptr; }
    void write(std::string_view text);

    // Result: 0, or the system's code of the first thing that failed, the opening too.
    std::uint32_t close();

  private:
    File file_;
    std::uint32_t error_ = 0;
};

// What stands between the folder and the name of a file.
extern const char folderSeparator;

// Reads a file as it is, up to `limit` bytes; on Windows the name is in the process's code page.
// Result: 0 with the text, or the system's code of what failed.
std::uint32_t readFile(const char* name, std::size_t limit, std::string& text);

// The code of the last failed call of the C run-time on a file, never 0.
std::uint32_t fileError();

}  // namespace torvik::platform
