// Which files are read as calibration and matrix files, and how far.
#include <chrono>
#include <filesystem>
#include <future>

#include "calib/reading_test.h"
#include "support/idle_pipe.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

constexpr bool onWindows = std::filesystem::path::preferred_separator == L'\\';

class FileKinds : public ReadingTest {
  protected:
    void SetUp() override { writeMatrix(matrixText(6, 6)); }

    std::uint32_t readPath(const std::string& path) { return readCalibrationFile(path.c_str(), true, calibration); }
};

TEST_F(FileKinds, Folder_IsRejectedForItsContent) {
    EXPECT_EQ(readPath(folder.path("")), contentError);
    EXPECT_EQ(readPath(std::filesystem::temp_directory_path().parent_path().string()), contentError);
}

TEST_F(FileKinds, MatrixFileThatIsAFolder_IsRejectedForItsContent) {
    std::filesystem::create_directory(folder.path("inner"));
    EXPECT_EQ(read(completeFile(4).set("SensorPara", "Matrix", "inner")), contentError);
    EXPECT_EQ(read(completeFile(4).set("Matrix_B", "MatrixB", "inner")), contentError);
}

TEST_F(FileKinds, Device_IsRejectedForItsContent) {
    for (const std::string& path : deviceFiles())
        EXPECT_EQ(readPath(path), contentError) << path;
}

TEST_F(FileKinds, IdlePipe_IsRejectedWithoutWaiting) {
    IdlePipe pipe;
    auto reading = std::async(std::launch::async, [&] { return readPath(pipe.path()); });
    EXPECT_EQ(reading.wait_for(std::chrono::seconds(5)), std::future_status::ready);
    pipe.release();
    EXPECT_EQ(reading.get(), contentError);
}

TEST_F(FileKinds, OfAReport_AreToldFromMissingFiles) {
    CalibrationReport report;
    EXPECT_EQ(checkCalibrationFile(folder.path("").c_str(), calibration, report), contentError);
    ASSERT_EQ(report.size(), 1U);
    EXPECT_EQ(report.front().reason, "a folder, a pipe or a device, not a file");
}

// As text files end there.
TEST_F(FileKinds, ControlZ_EndsACalibrationFileOnWindows) {
    const std::string text = completeFile(3).str();
    ASSERT_EQ(read(text + "[GeometricalOffset]\nOffsetX=1\nOffsetY=2\x1A\nOffsetZ=3\n"), 0U);
    if (onWindows) {
        EXPECT_THAT(calibration.offsets, ElementsAre(1, 2, 0));
    } else {
        EXPECT_THAT(calibration.offsets, ElementsAre(1, 0, 3));
    }
}

TEST_F(FileKinds, ControlZ_EndsAMatrixFileOnWindows) {
    writeMatrix(
        "1 2\n\x1A"
        "3 4\n");
    EXPECT_EQ(read(completeFile(3, 2, 2)), onWindows ? contentError : 0U);
}

TEST_F(FileKinds, ControlZ_BehindManyLines_EndsACalibrationFileOnWindows) {
    const std::string comments(200'000, '#');
    ASSERT_EQ(read(completeFile(3).str() + comments + "\n\x1A\n[GeometricalOffset]\nOffsetX=1\n"), 0U);
    EXPECT_EQ(calibration.offsets[0], onWindows ? 0.0 : 1.0);
}

TEST_F(FileKinds, MustEnd_EndsTheReadingBeforeAnyFile) {
    folder.write("sensor.ini", completeFile(4).str());
    int asked = 0;
    const auto afterTheFirstFile = filesOnDisk([&asked] { return ++asked > 2; });
    EXPECT_EQ(readCalibrationFile(folder.path("sensor.ini").c_str(), true, calibration, afterTheFirstFile),
              0x30000113U);
    EXPECT_EQ(asked, 3);
}

}  // namespace
}  // namespace torvik::test
