// What the reading of a calibration file reports to a person.
#include <algorithm>

#include "calib/reading_test.h"

namespace torvik::test {
namespace {

class Report : public ReadingTest {
  protected:
    void SetUp() override { writeMatrix(matrixText(6, 6)); }

    std::uint32_t check(const std::string& text) {
        folder.write("sensor.ini", text);
        calibration = {};
        report.clear();
        return checkCalibrationFile(folder.path("sensor.ini").c_str(), calibration, report);
    }
    std::uint32_t check(const CalibrationText& text) { return check(text.str()); }

    // The one finding about a key, or about a row.
    Finding findingOf(std::string_view name) const {
        const auto found = std::ranges::find(report, name, &Finding::name);
        if (found == report.end()) {
            ADD_FAILURE() << "nothing is reported about " << name;
            return {};
        }
        EXPECT_EQ(std::ranges::count(report, name, &Finding::name), 1) << name;
        return *found;
    }
    void expectProblem(std::string_view name, std::size_t line, std::string_view reason) const {
        const Finding finding = findingOf(name);
        EXPECT_EQ(finding.kind, FindingKind::problem);
        EXPECT_EQ(finding.line, line);
        EXPECT_EQ(finding.reason, reason);
    }
    std::size_t problems() const {
        return static_cast<std::size_t>(std::ranges::count(report, FindingKind::problem, &Finding::kind));
    }

    CalibrationReport report;
};

TEST_F(Report, TellsWhatIsReadWithItsLine) {
    EXPECT_EQ(check("; first line\n\n[SensorPara]\r\nsn=SN-7\n\nMatrix=matrix.txt\nNxMax=1,5\n"), contentError);
    const Finding maximum = findingOf("NxMax");
    EXPECT_EQ(maximum.kind, FindingKind::value);
    EXPECT_EQ(maximum.line, 7U);
    EXPECT_EQ(maximum.section, "SensorPara");
    EXPECT_EQ(maximum.text, "1.5");
    EXPECT_EQ(maximum.file, folder.path("sensor.ini"));
    EXPECT_EQ(findingOf("sn").line, 4U);
}

TEST_F(Report, TellsWhatIsTakenForMissingKeys) {
    EXPECT_EQ(check(completeFile(0).remove("SensorPara", "OutScaleFactor")), 0U);
    const Finding scale = findingOf("OutScaleFactor");
    EXPECT_EQ(scale.kind, FindingKind::byDefault);
    EXPECT_EQ(scale.line, 0U);
    EXPECT_EQ(scale.text, "5");
    EXPECT_EQ(scale.reason, "missing");
    EXPECT_EQ(findingOf("ZeroSignal3").kind, FindingKind::byDefault);
}

TEST_F(Report, TellsWhatIsNotTakenAsItStands) {
    EXPECT_EQ(check(completeFile(2)
                        .set("GeometricalOffset", "OffsetX", "-2")
                        .set("SensorPara", "calibrationDate", "31.13.2025")),
              0U);
    EXPECT_EQ(findingOf("OffsetX").kind, FindingKind::passedOver);
    EXPECT_EQ(findingOf("OffsetX").text, "0");
    EXPECT_EQ(findingOf("calibrationDate").reason, "no date");
}

TEST_F(Report, TellsADateWithAllItsDigits) {
    EXPECT_EQ(check(completeFile(2).set("SensorPara", "calibrationDate", "7.3.2024")), 0U);
    EXPECT_EQ(findingOf("calibrationDate").text, "2024-03-07");
}

TEST_F(Report, GoesOnBehindAProblem) {
    EXPECT_EQ(check("[ThisFile]\nVersion=2\n[SensorPara]\nOutScaleFactor=-1\nNxMax=1\nNyMax=abc\nNzMax=0\nNmXMax=1\n"),
              contentError);
    expectProblem("OutScaleFactor", 4, "it has to be above 0");
    expectProblem("InScaleFactor", 0, "missing");
    expectProblem("NyMax", 6, "no number");
    expectProblem("NzMax", 7, "it has to be above 0");
    expectProblem("Matrix", 0, "missing");
    EXPECT_EQ(problems(), 7U);
}

TEST_F(Report, NamesTheRowsOfTheMatrixFile) {
    writeMatrix("1 2 3 4 5 6\n\n1 2 3\n1 2 3 4 5 1e999\n1 2 3 4 5 6\n");
    EXPECT_EQ(check(completeFile(2)), contentError);
    EXPECT_EQ(findingOf("row 0").text, "1 2 3 4 5 6");
    EXPECT_EQ(findingOf("row 0").file, folder.path("matrix.txt"));
    EXPECT_EQ(findingOf("row 1").kind, FindingKind::passedOver);
    EXPECT_EQ(findingOf("row 1").line, 3U);
    expectProblem("row 2", 4, "a number is too large");
    expectProblem("row 4", 0, "the file has too few rows");
}

TEST_F(Report, TellsFilesThatAreNotThereWithTheSystemsCode) {
    constexpr std::uint32_t notThere = 0x20000002;
    EXPECT_EQ(check(completeFile(2).set("SensorPara", "Matrix", "other.txt")), notThere);
    EXPECT_EQ(problems(), 1U);
    EXPECT_EQ(checkCalibrationFile(folder.path("nowhere.ini").c_str(), calibration, report), notThere);
}

TEST_F(Report, TellsWhatWouldEndALoadingOnlyAfterTheReading) {
    constexpr std::uint32_t parameterExceedance = 0x30000100;
    const auto reading = [](std::string_view key, std::string_view value) {
        return completeFile(4).set("SensorPara", key, value);
    };
    EXPECT_EQ(check(reading("sn", "123456789")), parameterExceedance);
    EXPECT_EQ(check(reading("InScaleFactor", "1e-40")), parameterExceedance);
    EXPECT_EQ(check(reading("Unit_0", "elevenchars")), parameterExceedance);
    EXPECT_EQ(check(reading("Unit_0", "one").set("SensorPara", "Unit_1", "two").set("SensorPara", "Unit_2", "three")),
              contentError);
    EXPECT_EQ(check(reading("Unit_0", "one").set("SensorPara", "Unit_1", "two").set("SensorPara", "Unit_2", "one")),
              0U);
    EXPECT_EQ(read(reading("sn", "123456789")), 0U) << "the reading itself does not refuse it";
}

// The report must not be milder than the reading.
TEST_F(Report, KnowsEveryRefusalOfTheReading) {
    const std::string whole = completeFile(4).set("Matrix_B", "MatrixB", "matrix.txt").str();
    std::size_t refused = 0;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string text = whole.substr(0, length);
        const std::uint32_t code = read(text);
        const std::uint32_t told = check(text);
        if (code == 0) continue;
        ++refused;
        EXPECT_NE(told, 0U) << text;
        EXPECT_NE(std::ranges::find(report, code, &Finding::code), report.end()) << text;
    }
    EXPECT_GT(refused, 100U);
}

TEST_F(Report, ReadsTheSameValuesAsTheReading) {
    const auto text = completeFile(4).set("GeometricalOffset", "OffsetY", "2.5").set("SensorPara", "forceUnit", "kN");
    ASSERT_EQ(read(text), 0U);
    const CalibrationFile plain = calibration;
    ASSERT_EQ(check(text), 0U);
    EXPECT_EQ(calibration.matrix, plain.matrix);
    EXPECT_EQ(calibration.maxima, plain.maxima);
    EXPECT_EQ(calibration.offsets, plain.offsets);
    EXPECT_EQ(calibration.units.outputs, plain.units.outputs);
    EXPECT_EQ(calibration.model, plain.model);
}

}  // namespace
}  // namespace torvik::test
