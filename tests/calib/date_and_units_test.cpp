// The calibration date and the unit texts of a calibration file.
#include "calib/reading_test.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::Eq;
using Text = std::optional<std::string>;

class Date : public ReadingTest {
  protected:
    void SetUp() override { writeMatrix(matrixText(6, 6)); }

    // Year, month and day; empty: the file has no date.
    std::vector<int> dateOf(std::string_view text, int version = 3) {
        EXPECT_EQ(read(completeFile(version).set("SensorPara", "calibrationDate", text)), 0U);
        if (!calibration.date) return {};
        return {calibration.date->year, calibration.date->month, calibration.date->day};
    }
};

TEST_F(Date, IsDayMonthAndYear) {
    EXPECT_THAT(dateOf("21.11.2025"), ElementsAre(2025, 11, 21));
    EXPECT_THAT(dateOf("01.02.1999"), ElementsAre(1999, 2, 1));
    EXPECT_THAT(dateOf("\"3. 4. 2020\""), ElementsAre(2020, 4, 3));
}

TEST_F(Date, IsYearMonthAndDayWhenTheFirstNumberIsAbove31) {
    EXPECT_THAT(dateOf("2025.11.21"), ElementsAre(2025, 11, 21));
    EXPECT_THAT(dateOf("32.1.2"), ElementsAre(32, 1, 2));
    EXPECT_THAT(dateOf("31.1.2"), ElementsAre(2, 1, 31));
}

TEST_F(Date, IsKeptWithinItsBounds) {
    EXPECT_THAT(dateOf("1.1.1"), ElementsAre(1, 1, 1));
    EXPECT_THAT(dateOf("31.12.9999"), ElementsAre(9999, 12, 31));
}

TEST_F(Date, OutsideItsBoundsIsNone) {
    for (const char* const text : {"0.1.2025", "1.0.2025", "1.13.2025", "1.1.0", "2025.1.0", "2025.1.32", "2025.13.1"})
        EXPECT_THAT(dateOf(text), testing::IsEmpty()) << text;
}

TEST_F(Date, IsThreeWholeNumbers) {
    for (const char* const text : {"", "21", "21.11", "21.11.", ".11.2025", "21..2025", "21.11.2025.1", "21-11-2025",
                                   "21.Nov.2025", "-1.1.2025"})
        EXPECT_THAT(dateOf(text), testing::IsEmpty()) << text;
}

TEST_F(Date, StandsInFilesOfEveryVersion) {
    for (const int version : {0, 2, 3, 4})
        EXPECT_THAT(dateOf("1.2.2003", version), ElementsAre(2003, 2, 1)) << version;
}

TEST_F(Date, MayBeMissing) {
    EXPECT_EQ(read(completeFile(4)), 0U);
    EXPECT_FALSE(calibration.date);
}

class Units : public ReadingTest {
  protected:
    static CalibrationText file(int outputs = 6) { return completeFile(3, 6, outputs); }
    void SetUp() override { writeMatrix(matrixText(6, 6)); }
};

TEST_F(Units, AreNamedByOutput) {
    CalibrationText text = file();
    text.set("SensorPara", "Unit_0", "N").set("SensorPara", "Unit_1", "kN").set("SensorPara", "Unit_5", "Nm");
    EXPECT_EQ(read(text), 0U);
    EXPECT_TRUE(calibration.units.byOutput);
    EXPECT_THAT(calibration.units.outputs, ElementsAre(Eq(Text("N")), Eq(Text("kN")), Eq(std::nullopt),
                                                       Eq(std::nullopt), Eq(std::nullopt), Eq(Text("Nm"))));
}

TEST_F(Units, ByOutputLeaveTheOthersOut) {
    CalibrationText text = file();
    text.set("SensorPara", "Unit_0", "N").set("SensorPara", "forceUnit", "kN").set("SensorPara", "torqueUnit", "kNm");
    EXPECT_EQ(read(text), 0U);
    EXPECT_EQ(calibration.units.outputs[0], "N");
    EXPECT_EQ(calibration.units.outputs[1], std::nullopt);
    EXPECT_EQ(calibration.units.outputs[3], std::nullopt);
}

TEST_F(Units, OfForcesAndTorquesCountWithoutUnit_0) {
    CalibrationText text = file();
    text.set("SensorPara", "Unit_1", "t").set("SensorPara", "forceUnit", "kN").set("SensorPara", "torqueUnit", "Nm");
    EXPECT_EQ(read(text), 0U);
    EXPECT_FALSE(calibration.units.byOutput);
    EXPECT_THAT(calibration.units.outputs, ElementsAre("kN", "kN", "kN", "Nm", "Nm", "Nm"));
}

TEST_F(Units, OfForcesAloneLeaveTheTorquesAsTheyAre) {
    EXPECT_EQ(read(file().set("SensorPara", "forceUnit", "kN")), 0U);
    EXPECT_EQ(calibration.units.outputs[2], "kN");
    EXPECT_EQ(calibration.units.outputs[3], std::nullopt);
}

TEST_F(Units, OfTorquesAloneLeaveTheForcesAsTheyAre) {
    EXPECT_EQ(read(file().set("SensorPara", "torqueUnit", "Nm")), 0U);
    EXPECT_EQ(calibration.units.outputs[2], std::nullopt);
    EXPECT_EQ(calibration.units.outputs[3], "Nm");
}

TEST_F(Units, AreThoseOfTheOutputsThatThereAre) {
    CalibrationText text = file(2);
    text.set("SensorPara", "Unit_0", "N").set("SensorPara", "Unit_1", "N").set("SensorPara", "Unit_2", "N");
    EXPECT_EQ(read(text), 0U);
    EXPECT_EQ(calibration.units.outputs[1], "N");
    EXPECT_EQ(calibration.units.outputs[2], std::nullopt);
}

TEST_F(Units, MayBeMissing) {
    EXPECT_EQ(read(file()), 0U);
    EXPECT_THAT(calibration.units.outputs, testing::Each(Eq(std::nullopt)));
}

}  // namespace
}  // namespace torvik::test
