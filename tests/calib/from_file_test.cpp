// Loading a calibration file, frame by frame.
#include "calib/from_file_bench.h"

namespace torvik::test {
namespace {

using testing::Bool;
using testing::Combine;
using testing::IsEmpty;
using testing::Range;
using testing::Values;

class FromFile : public FromFileBench {
  protected:
    void expectLoaded(const FileShape& shape, std::uint32_t firmware, bool streaming = false) {
        use(firmware, streaming);
        folder.write("matrix.txt", matrixText(shape.inputs, shape.outputs));
        EXPECT_EQ(load(fileOf(shape)), 0);
        expectSent(framesOf(shape, firmware, streaming));
        EXPECT_EQ(takeCode(), code::none);
        EXPECT_EQ(record().transmitting, streaming);
    }
};

using Contents = std::tuple<int, bool, bool, UnitKeys, std::uint32_t, bool>;
class EveryContent : public FromFile, public testing::WithParamInterface<Contents> {};

TEST_P(EveryContent, SendsExactlyItsFrames) {
    const auto [version, matrixB, date, units, firmware, streaming] = GetParam();
    const FileShape shape{.version = version, .matrixB = matrixB, .date = date, .units = units};
    expectLoaded(shape, firmware, streaming);
    expectFree();
}

INSTANTIATE_TEST_SUITE_P(FromFile, EveryContent,
                         Combine(Range(0, 5), Bool(), Bool(),
                                 Values(UnitKeys::none, UnitKeys::byOutput, UnitKeys::byKind),
                                 Values(oldFirmware, firmwareWithFormatWord, newFirmware), Bool()));

class EverySensor : public FromFile, public testing::WithParamInterface<std::tuple<int, int, int>> {
  protected:
    static FileShape shape() {
        const auto [version, inputs, outputs] = GetParam();
        return {.version = version, .inputs = inputs, .outputs = outputs, .date = true, .units = UnitKeys::byKind};
    }
};

TEST_P(EverySensor, SendsTheElementsThatItHas) {
    expectLoaded(shape(), newFirmware);
}

// A device without format word takes them for 6 x 6.
TEST_P(EverySensor, SendsAllElementsToOldFirmware) {
    expectLoaded(shape(), oldFirmware);
}

INSTANTIATE_TEST_SUITE_P(FromFile, EverySensor, Combine(Values(3, 4), Range(2, 7), Range(1, 7)));

TEST_F(FromFile, TakesAnEmptyModelNameForTheDevicesOne) {
    folder.write("matrix.txt", matrixText(6, 6));
    EXPECT_EQ(load(fileOf({}).remove("SensorPara", "SensorModel")), 0);
    Frames expected;
    expected.element(7, 0, 0).model("");
    expectSent(arrays(expected, {}, newFirmware));
}

TEST_F(FromFile, StoresIntoTheLowByteOfTheSlot) {
    folder.write("matrix.txt", matrixText(6, 6));
    folder.write("sensor.ini", fileOf({}).str());
    EXPECT_EQ(TORVIKwriteFTSensorCalFromFile(device, 0x1FE, folder.path("sensor.ini").c_str()), 0);
    EXPECT_EQ(takeSent().back(), "81 7F FE");
}

TEST_F(FromFile, SendsADateAsYearMonthAndDay) {
    folder.write("matrix.txt", matrixText(6, 6));
    EXPECT_EQ(load(fileOf({.date = true}).set("SensorPara", "calibrationDate", "2025.11.21")), 0);
    expectSent(framesOf({.date = true}, newFirmware));
}

TEST_F(FromFile, PassesOverADateThatIsNone) {
    folder.write("matrix.txt", matrixText(6, 6));
    EXPECT_EQ(load(fileOf({.date = true}).set("SensorPara", "calibrationDate", "31.13.2025")), 0);
    expectSent(framesOf({}, newFirmware));
    EXPECT_EQ(takeCode(), code::none);
}

class FromFileRefused : public FromFileBench {
  protected:
    void SetUp() override {
        FromFileBench::SetUp();
        use(newFirmware, true);
        folder.write("matrix.txt", matrixText(6, 6));
    }
    void expectRefused(const CalibrationText& text, std::uint32_t expected = contentError) {
        EXPECT_EQ(load(text), -1);
        EXPECT_EQ(takeCode(), expected);
        EXPECT_THAT(takeSent(), IsEmpty());
        EXPECT_TRUE(record().transmitting);
    }
    static constexpr FileShape full{.matrixB = true};
};

TEST_F(FromFileRefused, WithoutAPath) {
    EXPECT_EQ(TORVIKwriteFTSensorCalFromFile(device, 2, nullptr), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(FromFileRefused, WithoutOneOfItsFiles) {
    EXPECT_EQ(TORVIKwriteFTSensorCalFromFile(device, 2, folder.path("absent.ini").c_str()), -1);
    EXPECT_EQ(takeCode(), 0x20000002U);
    expectRefused(fileOf(full).set("SensorPara", "Matrix", "absent.txt"), 0x20000002);
    expectRefused(fileOf(full).set("Matrix_B", "MatrixB", "absent.txt"), 0x20000002);
}

TEST_F(FromFileRefused, WithoutAValueThatIsNeeded) {
    for (const char* const key :
         {"Matrix", "OutScaleFactor", "InScaleFactor", "FxMax", "FyMax", "FzMax", "MxMax", "MyMax", "MzMax"})
        expectRefused(fileOf(full).remove("SensorPara", key));
    for (const char* const key : {"FacB1_0", "FacB1_5", "FacB2_0", "FacB2_5"})
        expectRefused(fileOf(full).remove("Matrix_B", key));
}

TEST_F(FromFileRefused, WithValuesThatBreakARule) {
    expectRefused(fileOf(full).set("SensorPara", "MzMax", "-60"));
    expectRefused(fileOf(full).set("SensorPara", "OutScaleFactor", "-1"));
    expectRefused(fileOf(full).set("SensorPara", "NumberOfInputs", "7"));
    expectRefused(fileOf(full).set("SensorPara", "NumberOfOutputs", "7"));
}

TEST_F(FromFileRefused, WithMatricesThatEndTooEarly) {
    folder.write("short.txt", matrixText(6, 5));
    expectRefused(fileOf(full).set("SensorPara", "Matrix", "short.txt"));
    expectRefused(fileOf(full).set("Matrix_B", "MatrixB", "short.txt"));
}

TEST_F(FromFileRefused, WithASerialNumberOfMoreThanEightDigits) {
    for (const char* const serial : {"123456789", "SN 4294967297"})
        expectRefused(fileOf(full).set("SensorPara", "sn", serial), code::parameterExceedance);
}

TEST_F(FromFileRefused, WithAScaleFactorThatNoFloatHolds) {
    expectRefused(fileOf(full).set("SensorPara", "OutScaleFactor", "1e-39"), code::parameterExceedance);
    expectRefused(fileOf(full).set("SensorPara", "InScaleFactor", "1e-39"), code::parameterExceedance);
}

class FromFileFailing : public FromFileBench {
  protected:
    static constexpr FileShape full{.matrixB = true, .date = true, .units = UnitKeys::byKind};

    // The first frames of the loading with a running stream, and the start of the stream if it was paused.
    void expectEnds(std::size_t sent, bool paused) {
        Frames expected = framesOf(full, newFirmware, true).cut(sent);
        if (paused) expected.startStream();
        expectSent(expected);
        EXPECT_TRUE(record().transmitting);
    }
    void SetUp() override {
        FromFileBench::SetUp();
        use(newFirmware, true);
        folder.write("matrix.txt", matrixText(6, 6));
    }
};

// Of its elements, counted from 0, with the frames in between: 1 stop, 49 of the extension, 4 of the name, 1 start, 3
// of the date, 6 units, 1 stop, then the arrays.
struct Failure {
    std::uint32_t element;
    std::size_t frames;
    bool paused;
};
class FailingElement : public FromFileFailing, public testing::WithParamInterface<Failure> {};

TEST_P(FailingElement, EndsTheLoadingWithItsCode) {
    refuseAfter(GetParam().element, 0x48);
    EXPECT_EQ(load(fileOf(full)), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    expectEnds(GetParam().frames, GetParam().paused);
    expectFree();
}

INSTANTIATE_TEST_SUITE_P(FromFile, FailingElement,
                         Values(Failure{0, 2, true},      // format word
                                Failure{1, 3, true},      // matrix B
                                Failure{48, 50, true},    // last factor
                                Failure{49, 56, false},   // year
                                Failure{51, 58, false},   // day
                                Failure{52, 59, false},   // first unit
                                Failure{57, 64, false},   // last unit
                                Failure{58, 66, true},    // format word again
                                Failure{60, 68, true},    // input scale
                                Failure{96, 104, true},   // last matrix element
                                Failure{111, 119, true},  // last zero signal
                                Failure{112, 120, true}   // serial number
                                ));

TEST_F(FromFileFailing, EndsWithARefusedModelName) {
    refuseAfter(3, 0x1C);
    EXPECT_EQ(load(fileOf(full)), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    expectEnds(54, true);
}

TEST_F(FromFileFailing, EndsWithARefusedStoring) {
    refuseAfter(0, 0x7F);
    EXPECT_EQ(load(fileOf(full)), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    expectEnds(122, false);
}

TEST_F(FromFileFailing, EndsWithAFactorAboveFive) {
    EXPECT_EQ(load(fileOf(full).set("Matrix_B", "FacB2_0", "6")), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    expectEnds(1 + 37 + 1, true);
}

TEST_F(FromFileFailing, EndsWithAHugeFactor) {
    EXPECT_EQ(load(fileOf(full).set("Matrix_B", "FacB1_0", "4294967296")), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    expectEnds(1 + 37, true);
}

TEST_F(FromFileFailing, EndsWithAFailedWrite) {
    failWriteAfter(70);
    EXPECT_EQ(load(fileOf(full)), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    expectEnds(70, true);
    expectFree();
}

TEST_F(FromFileFailing, EndsWithAMissingAnswer) {
    virtualClearAnswerRules();
    answerWith(0x1C, {0});
    answerWith(0x48, {0}, 60);
    drop(0x48);
    EXPECT_EQ(run([this] { return load(fileOf(full)); }), -1);
    expectEnds(68, true);
    expectFree();
}

}  // namespace
}  // namespace torvik::test
