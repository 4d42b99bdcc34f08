// A named pipe of which nobody reads or writes the other end: a call that waits for it waits for ever.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace torvik::test {

class IdlePipe {
  public:
    // In the temporary folder on Linux, among the system's pipes on Windows.
    IdlePipe();
    ~IdlePipe();
    IdlePipe(const IdlePipe&) = delete;
    IdlePipe& operator=(const IdlePipe&) = delete;

    const std::string& path() const { return path_; }

    // Somebody has opened it for reading, but reads nothing; less than 10,000 bytes fit in. (On Windows, its server
    // has.)
    void openReader();

    // Ends the waiting of those who opened it.
    void release();

  private:
    std::string path_;
    std::intptr_t handle_ = -1;
};

// Names of devices that open but are no files.
std::vector<std::string> deviceFiles();

}  // namespace torvik::test
