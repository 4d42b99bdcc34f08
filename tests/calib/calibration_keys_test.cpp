// What the keys of a calibration file mean, version by version.
#include "calib/reading_test.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

class AnyVersion : public ReadingTest, public testing::WithParamInterface<int> {
  protected:
    void SetUp() override { writeMatrix(matrixText(6, 6)); }
    static CalibrationText file() { return completeFile(GetParam()); }
    static bool isOld() { return GetParam() < 3; }
};

TEST_P(AnyVersion, IsReadWhole) {
    EXPECT_EQ(read(file()), 0U);
    EXPECT_EQ(calibration.version, GetParam() < 2 ? 0 : GetParam());
    EXPECT_STREQ(calibration.serialText.data(), "SN-00012345");
    EXPECT_EQ(calibration.outScale, 4.5);
    EXPECT_EQ(calibration.inScale, 1.25);
    EXPECT_EQ(calibration.size.inputs, 6U);
    EXPECT_EQ(calibration.size.outputs, 6U);
    EXPECT_THAT(calibration.maxima, ElementsAre(10, 20, 30, 40, 50, 60));
    EXPECT_EQ(calibration.matrix.front(), 1.1);
    EXPECT_EQ(calibration.matrix[7], 2.2);
    EXPECT_EQ(calibration.matrix.back(), 6.6);
    EXPECT_EQ(calibration.formatWord(), 0);
}

TEST_P(AnyVersion, HasZeroSignalsAndOffsetsOnlyWhereNamed) {
    EXPECT_EQ(read(file()), 0U);
    EXPECT_THAT(calibration.zeroSignals, ElementsAre(0, 0, 0, 0, 0, 0));
    EXPECT_THAT(calibration.offsets, ElementsAre(0, 0, 0));
}

TEST_P(AnyVersion, NamesZeroSignalsByInput) {
    EXPECT_EQ(read(file().set("SensorPara", "ZeroSignal0", "-0,5").set("SensorPara", "ZeroSignal5", "0.25")), 0U);
    EXPECT_THAT(calibration.zeroSignals, ElementsAre(-0.5, 0, 0, 0, 0, 0.25));
}

TEST_P(AnyVersion, MakesOffsetsThatAreNotPositiveZero) {
    EXPECT_EQ(read(file().set("GeometricalOffset", "OffsetX", "1.5").set("GeometricalOffset", "OffsetY", "-2.5")), 0U);
    EXPECT_THAT(calibration.offsets, ElementsAre(1.5, 0, 0));
}

TEST_P(AnyVersion, TakesOffsetsFromTheirOwnSectionOnly) {
    EXPECT_EQ(read(file().set("SensorPara", "OffsetX", "1.5")), 0U);
    EXPECT_THAT(calibration.offsets, ElementsAre(0, 0, 0));
}

TEST_P(AnyVersion, NeedsAMatrixOfFiveCharacters) {
    folder.write("abcd", matrixText(6, 6));
    folder.write("abcde", matrixText(6, 6));
    EXPECT_EQ(read(file().remove("SensorPara", "Matrix")), contentError);
    EXPECT_EQ(read(file().set("SensorPara", "Matrix", "abcd")), contentError);
    EXPECT_EQ(read(file().set("SensorPara", "Matrix", "\"matrix.txt")), contentError);
    EXPECT_EQ(read(file().set("SensorPara", "Matrix", "abcde")), 0U);
}

TEST_P(AnyVersion, NeedsNoSerialNumber) {
    EXPECT_EQ(read(file().remove("SensorPara", "sn")), 0U);
    EXPECT_STREQ(calibration.serialText.data(), "");
}

TEST_P(AnyVersion, TakesASerialNumberOfTwoToFifteenCharacters) {
    EXPECT_EQ(read(file().set("SensorPara", "sn", "7")), 0U);
    EXPECT_STREQ(calibration.serialText.data(), "");
    EXPECT_EQ(read(file().set("SensorPara", "sn", "12")), 0U);
    EXPECT_STREQ(calibration.serialText.data(), "12");
    EXPECT_EQ(read(file().set("SensorPara", "sn", "abcdefghijklmnop")), 0U);
    EXPECT_STREQ(calibration.serialText.data(), "abcdefghijklmno");
}

TEST_P(AnyVersion, NeedsPositiveMaxima) {
    const char* const last = isOld() ? "NmzMax" : "MzMax";
    EXPECT_EQ(read(file().set("SensorPara", last, "0")), contentError);
    EXPECT_EQ(read(file().set("SensorPara", last, "-5")), contentError);
    EXPECT_EQ(read(file().set("SensorPara", last, "five")), contentError);
    EXPECT_EQ(read(file().set("SensorPara", last, "1e309")), contentError);
    EXPECT_EQ(read(file().set("SensorPara", last, "1e-300")), 0U);
}

TEST_P(AnyVersion, NeedsEveryMaximumOfItsOwnKeys) {
    const auto keys = isOld() ? std::to_array({"NxMax", "NyMax", "NzMax", "NmXMax", "NmyMax", "NmzMax"})
                              : std::to_array({"FxMax", "FyMax", "FzMax", "MxMax", "MyMax", "MzMax"});
    for (const char* const key : keys)
        EXPECT_EQ(read(file().remove("SensorPara", key)), contentError) << key;
}

TEST_P(AnyVersion, NeedsScaleFactorsUnlessItIsTheFirst) {
    for (const char* const key : {"OutScaleFactor", "InScaleFactor"}) {
        const std::uint32_t expected = GetParam() < 2 ? 0 : contentError;
        EXPECT_EQ(read(file().remove("SensorPara", key)), expected) << key;
        EXPECT_EQ(read(file().set("SensorPara", key, "0")), expected) << key;
        EXPECT_EQ(read(file().set("SensorPara", key, "-1")), expected) << key;
        EXPECT_EQ(read(file().set("SensorPara", key, "one")), expected) << key;
    }
}

TEST_P(AnyVersion, IgnoresUnitsBelowVersion3) {
    EXPECT_EQ(read(file().set("SensorPara", "forceUnit", "N")), 0U);
    EXPECT_EQ(calibration.units.outputs[0].has_value(), !isOld());
}

TEST_P(AnyVersion, HasAModelNameFromVersion4On) {
    EXPECT_EQ(read(file().set("SensorPara", "SensorModel", "SIX-50N")), 0U);
    EXPECT_EQ(calibration.model, GetParam() >= 4 ? std::optional<std::string>("SIX-50N") : std::nullopt);
}

TEST_P(AnyVersion, IsReadTheSameWithCarriageReturns) {
    EXPECT_EQ(read(file()), 0U);
    const CalibrationFile plain = calibration;
    std::string text = file().str();
    for (std::size_t place = 0; (place = text.find('\n', place)) != std::string::npos; place += 2)
        text.insert(place, "\r");
    EXPECT_EQ(read(text), 0U);
    EXPECT_EQ(calibration.serialText, plain.serialText);
    EXPECT_EQ(calibration.matrix, plain.matrix);
    EXPECT_EQ(calibration.maxima, plain.maxima);
    EXPECT_EQ(calibration.model, plain.model);
}

INSTANTIATE_TEST_SUITE_P(Version, AnyVersion, testing::Values(0, 1, 2, 3, 4, 5), testing::PrintToStringParamName());

class CalibrationKeys : public ReadingTest {
  protected:
    void SetUp() override { writeMatrix(matrixText(6, 6)); }
};

TEST_F(CalibrationKeys, OfTheFirstVersionHaveUsualScaleFactors) {
    CalibrationText file = completeFile(0);
    EXPECT_EQ(read(file.remove("SensorPara", "OutScaleFactor").remove("SensorPara", "InScaleFactor")), 0U);
    EXPECT_EQ(calibration.outScale, 5.0);
    EXPECT_EQ(calibration.inScale, 2.0);
}

TEST_F(CalibrationKeys, MakeAnUnreadableVersionTheFirst) {
    for (const char* const version : {"1", "0", "-4", "+4", "four", "4.0", ""}) {
        EXPECT_EQ(read(completeFile(0).set("ThisFile", "Version", version)), 0U) << version;
        EXPECT_EQ(calibration.version, 0) << version;
    }
}

TEST_F(CalibrationKeys, MakeAHugeVersionALateOne) {
    EXPECT_EQ(read(completeFile(4).set("ThisFile", "Version", "9999999999")), 0U);
    EXPECT_TRUE(calibration.model);
}

TEST_F(CalibrationKeys, BelowVersion3TellNoSize) {
    EXPECT_EQ(read(completeFile(2).set("SensorPara", "NumberOfInputs", "9").set("SensorPara", "NumberOfOutputs", "2")),
              0U);
    EXPECT_EQ(calibration.size.inputs, 6U);
    EXPECT_EQ(calibration.size.outputs, 6U);
}

TEST_F(CalibrationKeys, TakeSizesTooSmallForSix) {
    for (const char* const size : {"0", "-3", "x", ""}) {
        EXPECT_EQ(
            read(completeFile(3).set("SensorPara", "NumberOfInputs", size).set("SensorPara", "NumberOfOutputs", size)),
            0U)
            << size;
        EXPECT_EQ(calibration.size.inputs, 6U) << size;
        EXPECT_EQ(calibration.size.outputs, 6U) << size;
    }
    EXPECT_EQ(read(completeFile(3).set("SensorPara", "NumberOfInputs", "1")), 0U);
    EXPECT_EQ(calibration.size.inputs, 6U);
}

TEST_F(CalibrationKeys, RefuseSizesAboveSix) {
    for (const char* const key : {"NumberOfInputs", "NumberOfOutputs"}) {
        for (const char* const size : {"7", "36", "65536", "4294967298", "9999999999"})
            EXPECT_EQ(read(completeFile(3).set("SensorPara", key, size)), contentError) << key << ' ' << size;
    }
}

TEST_F(CalibrationKeys, OfThreeOutputsAreForces) {
    EXPECT_EQ(read(completeFile(3, 6, 3).set("SensorPara", "MxMax", "400").set("SensorPara", "MyMax", "500")), 0U);
    EXPECT_THAT(calibration.maxima, ElementsAre(10, 20, 30, 0, 0, 0));
}

TEST_F(CalibrationKeys, OfThreeOutputsWithoutFxMaxAreOneForceAndTwoTorques) {
    EXPECT_EQ(read(completeFile(3, 6, 3)
                       .remove("SensorPara", "FxMax")
                       .set("SensorPara", "MxMax", "400")
                       .set("SensorPara", "MyMax", "500")),
              0U);
    EXPECT_THAT(calibration.maxima, ElementsAre(30, 400, 500, 0, 0, 0));
}

TEST_F(CalibrationKeys, OfThreeOutputsWithAnFxMaxOfZeroAreRefused) {
    EXPECT_EQ(read(completeFile(3, 6, 3)
                       .set("SensorPara", "FxMax", "0")
                       .set("SensorPara", "MxMax", "400")
                       .set("SensorPara", "MyMax", "500")),
              contentError);
}

TEST_F(CalibrationKeys, OfOtherOutputsNeedFxMax) {
    for (const int outputs : {1, 2, 4, 5, 6})
        EXPECT_EQ(read(completeFile(3, 6, outputs).remove("SensorPara", "FxMax").set("SensorPara", "MxMax", "4")),
                  contentError)
            << outputs;
}

TEST_F(CalibrationKeys, NameZeroSignalsOfTheInputsThatThereAre) {
    EXPECT_EQ(read(completeFile(3, 2, 6).set("SensorPara", "ZeroSignal1", "1").set("SensorPara", "ZeroSignal2", "2")),
              0U);
    EXPECT_THAT(calibration.zeroSignals, ElementsAre(0, 1, 0, 0, 0, 0));
}

TEST_F(CalibrationKeys, StandInTheirSectionsWhateverTheOrder) {
    std::string text = "# a comment\n" + completeFile(4).str();
    text += "[GeometricalOffset]\nOffsetZ=3\n[Other]\nsn=99\n";
    EXPECT_EQ(read(text), 0U);
    EXPECT_THAT(calibration.offsets, ElementsAre(0, 0, 3));
    EXPECT_STREQ(calibration.serialText.data(), "SN-00012345");
}

TEST_F(CalibrationKeys, AreLeftOutForDevicesWithoutFormatWord) {
    EXPECT_EQ(read(completeFile(4).set("Matrix_B", "MatrixB", "missing.txt"), false), 0U);
    EXPECT_FALSE(calibration.model);
    EXPECT_FALSE(calibration.matrixB);
}

TEST_F(CalibrationKeys, MakeAMissingModelNameAnEmptyOne) {
    EXPECT_EQ(read(completeFile(4).remove("SensorPara", "SensorModel")), 0U);
    EXPECT_EQ(calibration.model, "");
}

}  // namespace
}  // namespace torvik::test
