// The folder of this process for the files of its tests: made on first use, removed when the process ends.
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

namespace torvik::test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::random_device random;
        do {
            folder_ = std::filesystem::temp_directory_path() / ("torvik-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(folder_));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return folder_; }

  private:
    std::filesystem::path folder_;
};

// The path of a file in that folder, with the system's own separators.
inline std::string temporaryFile(std::string_view name) {
    static const TemporaryFolder folder;
    return (folder.path() / name).make_preferred().string();
}

}  // namespace torvik::test
