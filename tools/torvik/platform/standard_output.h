#pragma once

#include <string_view>

namespace torvik::tool::platform {

struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

enum class WriteResult {
    complete,
    closed,       ///< the reader has gone
    failed,       ///< disk full and the like
    interrupted,  ///< the reader did not take it and the end was requested
};

/// Standard output, kept for data alone: while the object lives, whatever libraries print there (debug lines) goes to
/// standard error. Bytes go out as they are, without translation of line ends.
class StandardOutput {
  public:
    StandardOutput();
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    WriteResult write(std::string_view bytes);

    /// A terminal on which a table can be redrawn in place.
    bool isTerminal() const;
    bool showsUtf8() const;
    TerminalSize terminalSize() const;

    static bool errorsGoToTerminal();

  private:
    int descriptor_ = -1;
    bool terminal_ = false;
    [[maybe_unused]] unsigned savedCodePage_ = 0;  // Windows
    [[maybe_unused]] unsigned savedMode_ = 0;      // Windows
};

}  // namespace torvik::tool::platform
