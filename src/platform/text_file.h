// Text files: written with the system's own line ends, read as they are but for Windows's end mark.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/file_stream.h"

namespace torvik::platform {

class TextFile {
  public:
    // Creates or empties the file; on Windows the name is in the process's code page.
    explicit TextFile(const char* name, StopCheck mustEnd = {});

    bool opened() const { return file_.opened(); }
    void write(std::string_view text);

    // Result: 0, or the system's code of the first thing that failed, the opening too.
    std::uint32_t close();

  private:
    void append(std::string_view text);
    void flush();

    OutputStream file_;
    StopCheck mustEnd_;
    std::array<char, 4096> buffer_{};
    std::size_t length_ = 0;
    std::uint32_t error_ = 0;
};

enum class ReadStatus : std::uint8_t { complete, systemError, notRegular, stopped };
struct ReadResult {
    ReadStatus status = ReadStatus::complete;
    std::uint32_t systemCode = 0;  // of a systemError
};

// Reads a regular file, up to `limit` bytes, on Windows only up to a byte 0x1A; never waits for a pipe or a device. On
// Windows the name is in the process's code page. `mustEnd`, which may be empty, is asked at every 64 KiB.
ReadResult readTextFile(const char* name, std::size_t limit, std::string& text, const StopCheck& mustEnd);

}  // namespace torvik::platform
