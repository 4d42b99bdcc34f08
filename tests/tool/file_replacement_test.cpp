// Files that are replaced only when they are complete.
#include "platform/file_replacement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>
#include <vector>

namespace torvik::tool::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FileReplaced : public testing::Test {
  protected:
    void SetUp() override {
        folder_ =
            std::filesystem::temp_directory_path() / ("torvik-replaced-" + std::to_string(std::random_device()()));
        std::filesystem::create_directory(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string path(const char* name) const { return (folder_ / name).string(); }

    static void write(const std::string& name, std::string_view text) { std::ofstream(name, std::ios::binary) << text; }
    static std::string read(const std::string& name) {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            found.push_back(entry.path().filename().string());
        return found;
    }

  private:
    std::filesystem::path folder_;
};

TEST_F(FileReplaced, UntilItIsCommitted_KeepsTheOldContents) {
    write(path("file"), "old");
    FileReplacement replacement(path("file"));
    write(replacement.name(), "new");
    EXPECT_EQ(read(path("file")), "old");
    replacement.commit();
    EXPECT_EQ(read(path("file")), "new");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplaced, WithoutACommit_LeavesNothingBehind) {
    { const FileReplacement replacement(path("file")); }
    EXPECT_THAT(names(), IsEmpty());
    write(path("file"), "old");
    {
        const FileReplacement replacement(path("file"));
        write(replacement.name(), "new");
    }
    EXPECT_EQ(read(path("file")), "old");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplaced, ThatIsNew_IsThereOnlyWhenComplete) {
    FileReplacement replacement(path("file"));
    EXPECT_FALSE(std::filesystem::exists(path("file")));
    replacement.commit();
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplaced, ByTwoAtATime_IsTheOneThatCameLast) {
    FileReplacement first(path("file"));
    FileReplacement second(path("file"));
    write(first.name(), "first");
    write(second.name(), "second");
    second.commit();
    first.commit();
    EXPECT_EQ(read(path("file")), "first");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplaced, InAFolderThatIsNotThere_IsAnError) {
    EXPECT_THROW(replaceFile(path("none/file"), "new"), std::system_error);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(FileReplaced, ThatIsAFolder_IsAnError) {
    std::filesystem::create_directory(path("file"));
    EXPECT_THROW(replaceFile(path("file"), "new"), std::system_error);
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplaced, WithoutAFolderInItsName_IsInTheWorkingFolder) {
    const std::string name = "torvik-replaced-" + std::to_string(std::random_device()());
    replaceFile(name, "new");
    EXPECT_EQ(read(name), "new");
    EXPECT_TRUE(std::filesystem::remove(name));
}

}  // namespace
}  // namespace torvik::tool::platform
