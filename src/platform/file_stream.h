// Files as streams of bytes. Opening never waits for the other end of a pipe.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace torvik::platform {

// Asked now and then while something lasts; true ends it.
using StopCheck = std::function<bool()>;

// A descriptor (Linux) or a handle (Windows).
using FileHandle = std::intptr_t;
inline constexpr FileHandle noFile = -1;

// On Windows names are in the process's code page. Errors are the system's codes, 0: none.
class InputStream {
  public:
    explicit InputStream(const char* name);
    ~InputStream();
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;

    // Of the opening. A folder is not regular, and no error.
    std::uint32_t error() const { return error_; }
    bool isRegular() const { return regular_; }

    // `got`: 0 at the end of the file.
    std::uint32_t read(std::span<char> buffer, std::size_t& got) const;

  private:
    std::uint32_t error_ = 0;
    FileHandle handle_ = noFile;
    bool regular_ = false;
};

class OutputStream {
  public:
    // Creates or empties the file. A pipe that nobody reads is an error.
    explicit OutputStream(const char* name);
    ~OutputStream() { close(); }
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    // Of the opening.
    std::uint32_t error() const { return error_; }
    bool opened() const { return handle_ != noFile; }

    // Writes the first bytes; `written`: how many. Waits a moment when a pipe or a device takes none, which is an error
    // only when `mustEnd` (which may be empty) is true.
    std::uint32_t write(std::string_view bytes, const StopCheck& mustEnd, std::size_t& written);

    std::uint32_t close();

  private:
    std::uint32_t error_ = 0;
    FileHandle handle_ = noFile;
    [[maybe_unused]] std::uint64_t written_ = 0;  // Windows: where the next write belongs
};

// What stands between the folder and the name of a file.
extern const char folderSeparator;

// The system's text mode: what ends a line, and whether a byte 0x1A ends the text.
extern const std::string_view lineEnd;
extern const bool controlZEndsText;

}  // namespace torvik::platform
