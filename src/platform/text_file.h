// A text file that is written with the system's own line ends.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>

namespace torvik::platform {

class TextFile {
  public:
    // Creates or empties the file; on Windows the name is in the process's code page.
    explicit TextFile(const char* name);

    bool opened() const { return file_ != nullptr; }
    void write(std::string_view text);

    // Result: 0, or the system's code of the first thing that failed, the opening too.
    std::uint32_t close();

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Closer> file_;
    std::uint32_t error_ = 0;
};

// The code of the last failed call of the C run-time on a file, never 0.
std::uint32_t fileError();

}  // namespace torvik::platform
