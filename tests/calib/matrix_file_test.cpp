// The matrix files that a calibration file names.
#include "calib/reading_test.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

// ENOENT on Linux and ERROR_FILE_NOT_FOUND on Windows are the same number.
constexpr std::uint32_t noSuchFile = 0x20000002;

class MatrixFile : public ReadingTest {
  protected:
    std::uint32_t readSmall(std::string_view matrix) {
        writeMatrix(matrix);
        return read(completeFile(3, 2, 2));
    }
    std::vector<double> firstFour() const { return {calibration.matrix.begin(), calibration.matrix.begin() + 4}; }
};

class EverySize : public MatrixFile, public testing::WithParamInterface<std::tuple<int, int>> {};

TEST_P(EverySize, StandsRowAfterRow) {
    const auto [inputs, outputs] = GetParam();
    writeMatrix(matrixText(inputs, outputs));
    ASSERT_EQ(read(completeFile(4, inputs, outputs)), 0U);
    ASSERT_EQ(calibration.size.inputs, static_cast<std::size_t>(inputs));
    ASSERT_EQ(calibration.size.outputs, static_cast<std::size_t>(outputs));
    std::array<double, 36> expected{};
    for (int row = 0; row < outputs; ++row) {
        for (int column = 0; column < inputs; ++column)
            expected[static_cast<std::size_t>(row * inputs + column)] = (10 * (row + 1) + column + 1) / 10.0;
    }
    EXPECT_EQ(calibration.matrix, expected);
}

TEST_P(EverySize, IsToldByTheFormatWord) {
    const auto [inputs, outputs] = GetParam();
    writeMatrix(matrixText(inputs, outputs));
    ASSERT_EQ(read(completeFile(4, inputs, outputs)), 0U);
    const int word = inputs == 6 && outputs == 6 ? 0 : (outputs - 1) * 0x1000 + (inputs - 1) * 0x10000 + 2;
    EXPECT_EQ(calibration.formatWord(), word);
}

TEST_P(EverySize, NeedsALineForEveryOutput) {
    const auto [inputs, outputs] = GetParam();
    writeMatrix(matrixText(inputs, outputs - 1));
    EXPECT_EQ(read(completeFile(3, inputs, outputs)), contentError);
}

INSTANTIATE_TEST_SUITE_P(Sensor, EverySize, testing::Combine(testing::Range(2, 7), testing::Range(1, 7)));

TEST_F(MatrixFile, HasNumbersBetweenBlanksOrTabs) {
    EXPECT_EQ(readSmall("1 2\n  3\t \t4  \n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1, 2, 3, 4));
}

TEST_F(MatrixFile, TakesDecimalCommas) {
    EXPECT_EQ(readSmall("1,5 -2,5\n,5 1,5e1\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1.5, -2.5, 0.5, 15));
}

TEST_F(MatrixFile, TakesDecimalCommasInTheFirst100Characters) {
    const std::string filler(96, ' ');
    EXPECT_EQ(readSmall("1 2\n" + ("3 " + filler.substr(1) + "4,5\n")), 0U);  // the comma is character 99
    EXPECT_THAT(firstFour(), ElementsAre(1, 2, 3, 4.5));
    EXPECT_EQ(readSmall("1 2\n" + ("3 " + filler + " 4,5\n")), 0U);  // character 101
    EXPECT_THAT(firstFour(), ElementsAre(1, 2, 3, 4));
}

TEST_F(MatrixFile, HasNoCommasBetweenNumbers) {
    EXPECT_EQ(readSmall("1,2\n3, 4\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1.2, 0, 3, 4));
}

TEST_F(MatrixFile, TakesAllExponentLetters) {
    EXPECT_EQ(readSmall("1D1 2d1\n3E1 4e1\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(10, 20, 30, 40));
}

TEST_F(MatrixFile, FillsShortRowsWithZeros) {
    EXPECT_EQ(readSmall("1\n3\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1, 0, 3, 0));
}

TEST_F(MatrixFile, EndsARowAtWhatIsNoNumber) {
    EXPECT_EQ(readSmall("1 x 2\nx 3 4\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1, 0, 0, 0));
}

TEST_F(MatrixFile, IgnoresWhatFollowsItsRowsAndColumns) {
    EXPECT_EQ(readSmall("1 2 9 9\n3 4 ; kN\n9 9\nend"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1, 2, 3, 4));
}

TEST_F(MatrixFile, CountsEveryLineAsARow) {
    EXPECT_EQ(readSmall("# matrix\n1 2\n3 4\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(0, 0, 1, 2));
}

TEST_F(MatrixFile, PassesOverBlankLines) {
    EXPECT_EQ(readSmall("\n1 2\n\n \t\n3 4\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1, 2, 3, 4));
}

TEST_F(MatrixFile, ContinuesALongLineInTheNextRow) {
    EXPECT_EQ(readSmall("1 2" + std::string(124, ' ') + "3 4\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1, 2, 3, 4));
}

TEST_F(MatrixFile, MayHaveCarriageReturnsAndNoLastLineEnd) {
    EXPECT_EQ(readSmall("1 2\r\n3 4"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1, 2, 3, 4));
}

TEST_F(MatrixFile, IsTooShortWhenEmpty) {
    EXPECT_EQ(readSmall(""), contentError);
    EXPECT_EQ(readSmall("\n\n\n"), contentError);
    EXPECT_EQ(readSmall("1 2\n\n"), contentError);
}

TEST_F(MatrixFile, RefusesNumbersThatNoDoubleHolds) {
    EXPECT_EQ(readSmall("1 2\n3 1e309\n"), contentError);
    EXPECT_EQ(readSmall("1 2\n3 -1e309\n"), contentError);
    EXPECT_EQ(readSmall("1 2\n3 4 1e309\n"), 0U);
}

TEST_F(MatrixFile, MakesTooSmallNumbersZero) {
    EXPECT_EQ(readSmall("1e-400 2\n3 4\n"), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(0, 2, 3, 4));
}

TEST_F(MatrixFile, StandsInTheFolderOfTheCalibrationFile) {
    EXPECT_EQ(readSmall(matrixText(2, 2)), 0U);
    EXPECT_THAT(firstFour(), ElementsAre(1.1, 1.2, 2.1, 2.2));
}

TEST_F(MatrixFile, IsSoughtUnderItsNameAloneForAPathWithoutAFolder) {
    std::vector<std::string> sought;
    const auto files = [&](const std::string& path, std::string& text) {
        sought.push_back(path);
        text = path == "sensor.ini" ? completeFile(3, 2, 2).str() : matrixText(2, 2);
        return 0U;
    };
    EXPECT_EQ(readCalibrationFile("sensor.ini", true, calibration, files), 0U);
    EXPECT_THAT(sought, ElementsAre("sensor.ini", "matrix.txt"));
}

TEST_F(MatrixFile, ThatIsMissingGivesTheSystemsCode) {
    EXPECT_EQ(read(completeFile(3, 2, 2)), noSuchFile);
}

TEST_F(MatrixFile, IsNotSoughtForAMissingCalibrationFile) {
    writeMatrix(matrixText(6, 6));
    EXPECT_EQ(readCalibrationFile(folder.path("absent.ini").c_str(), true, calibration), noSuchFile);
}

TEST_F(MatrixFile, IsNotSoughtWhenAValueBreaksARule) {
    EXPECT_EQ(read(completeFile(3, 2, 2).remove("SensorPara", "FyMax")), contentError);
}

class MatrixBFile : public ReadingTest {
  protected:
    void SetUp() override {
        writeMatrix(matrixText(6, 6));
        folder.write("second.txt", matrixText(6, 6));
    }

    static CalibrationText file(int version = 4) {
        CalibrationText text = completeFile(version);
        text.set("Matrix_B", "MatrixB", "second.txt");
        for (int i = 0; i < 6; ++i) {
            text.set("Matrix_B", "FacB1_" + std::to_string(i), std::to_string(i));
            text.set("Matrix_B", "FacB2_" + std::to_string(i), std::to_string(5 - i));
        }
        return text;
    }
};

TEST_F(MatrixBFile, IsReadWithItsFactors) {
    ASSERT_EQ(read(file()), 0U);
    ASSERT_TRUE(calibration.matrixB);
    EXPECT_EQ(calibration.matrixB->elements[0], 1.1);
    EXPECT_EQ(calibration.matrixB->elements[35], 6.6);
    EXPECT_THAT(calibration.matrixB->firstFactors, ElementsAre(0U, 1U, 2U, 3U, 4U, 5U));
    EXPECT_THAT(calibration.matrixB->secondFactors, ElementsAre(5U, 4U, 3U, 2U, 1U, 0U));
    EXPECT_EQ(calibration.formatWord(), 1);
}

TEST_F(MatrixBFile, HasSixBySixNumbersWhateverTheSensor) {
    ASSERT_EQ(read(file().set("SensorPara", "NumberOfOutputs", "3")), 0U);
    EXPECT_EQ(calibration.matrixB->elements[35], 6.6);
    EXPECT_EQ(calibration.formatWord(), 0x52002);
    folder.write("second.txt", matrixText(6, 3));
    EXPECT_EQ(read(file().set("SensorPara", "NumberOfOutputs", "3")), contentError);
}

TEST_F(MatrixBFile, IsReadFromVersion4On) {
    EXPECT_EQ(read(file(3)), 0U);
    EXPECT_FALSE(calibration.matrixB);
    EXPECT_EQ(calibration.formatWord(), 0);
}

TEST_F(MatrixBFile, IsNoneWhenItsNameIsShort) {
    EXPECT_EQ(read(file().set("Matrix_B", "MatrixB", "abcd")), 0U);
    EXPECT_FALSE(calibration.matrixB);
    EXPECT_EQ(read(file().remove("Matrix_B", "MatrixB")), 0U);
    EXPECT_FALSE(calibration.matrixB);
}

TEST_F(MatrixBFile, NeedsEveryFactor) {
    for (const char* const prefix : {"FacB1_", "FacB2_"}) {
        for (int i = 0; i < 6; ++i) {
            const std::string key = prefix + std::to_string(i);
            EXPECT_EQ(read(file().remove("Matrix_B", key)), contentError) << key;
            EXPECT_EQ(read(file().set("Matrix_B", key, "-1")), contentError) << key;
            EXPECT_EQ(read(file().set("Matrix_B", key, "1.0")), contentError) << key;
        }
    }
}

TEST_F(MatrixBFile, KeepsFactorsThatOnlyADeviceRefuses) {
    EXPECT_EQ(read(file().set("Matrix_B", "FacB1_0", "6")), 0U);
    EXPECT_EQ(calibration.matrixB->firstFactors[0], 6U);
}

TEST_F(MatrixBFile, ThatIsMissingGivesTheSystemsCode) {
    EXPECT_EQ(read(file().set("Matrix_B", "MatrixB", "absent.txt")), noSuchFile);
}

TEST_F(MatrixBFile, ThatIsTooShortIsRefused) {
    folder.write("second.txt", matrixText(6, 5));
    EXPECT_EQ(read(file()), contentError);
}

TEST_F(MatrixBFile, RefusesNumbersThatNoDoubleHolds) {
    folder.write("second.txt", matrixText(6, 5) + "1 2 3 4 5 1e309\n");
    EXPECT_EQ(read(file()), contentError);
}

}  // namespace
}  // namespace torvik::test
