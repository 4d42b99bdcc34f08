// Writing whole calibrations.
#include <limits>

#include "calib/calibration_bench.h"

namespace torvik::test {
namespace {

using testing::IsEmpty;

// Arguments that are all right; a test changes what it is about.
struct Arguments {
    std::string serialText = "12345";
    std::vector<double> scales = {4.5, 1.25};
    std::vector<double> matrix = counting(256);
    std::vector<double> offsets = {0.5, -1.5, 2.5};
    std::vector<double> maxima = counting(16, 100);
    std::vector<double> zeroSignals = counting(256, 0.25);
    std::uint32_t slot = 3;
    std::int32_t format = 0;

    std::int32_t standard() {
        return TORVIKwriteFTSensorCalArray(device, slot, serialText.data(), scales[0], scales[1], matrix.data(),
                                           offsets.data(), maxima.data());
    }
    std::int32_t any() {
        return TORVIKwriteFTsensorCalArrayA(device, slot, serialText.data(), scales.data(), matrix.data(),
                                            offsets.data(), maxima.data(), zeroSignals.data(), format);
    }

    Frames& mainArrays(Frames& frames, std::size_t elements, std::size_t outputs) const {
        return frames.element(1, 0, scales[0])
            .element(5, 0, scales[1])
            .array(2, std::span(matrix).first(elements))
            .array(3, offsets)
            .array(4, std::span(maxima).first(outputs));
    }
    Frames standardFrames() const {
        Frames frames;
        return mainArrays(frames, 36, 6).serial(12345);
    }
    Frames framesOf(std::size_t inputs, std::size_t outputs) const {
        Frames frames;
        frames.element(7, 0, format);
        return mainArrays(frames, inputs * outputs, outputs)
            .array(6, std::span(zeroSignals).first(inputs))
            .serial(12345)
            .store(slot & 0xFF);
    }
};

class WriteStandard : public CalibrationBench {
  protected:
    void expectRefused(std::uint32_t expected = code::parameterExceedance) {
        EXPECT_EQ(arguments.standard(), -1);
        EXPECT_EQ(takeCode(), expected);
        EXPECT_THAT(takeSent(), IsEmpty());
    }
    void expectSerial(std::string text, std::uint32_t number) {
        arguments.serialText = std::move(text);
        EXPECT_EQ(arguments.standard(), 0);
        Frames expected;
        expected.serial(number);
        EXPECT_EQ(takeSent().back(), expected.all().back());
    }

    Arguments arguments;
};

TEST_F(WriteStandard, SendsEveryElementAndStoresNothing) {
    EXPECT_EQ(arguments.standard(), 0);
    expectSent(arguments.standardFrames());
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(WriteStandard, SendsTheSameToEveryFirmware) {
    for (const std::uint32_t firmware : {0x00020000U, oldFirmware, newFirmware}) {
        use(firmware);
        EXPECT_EQ(arguments.standard(), 0);
        expectSent(arguments.standardFrames());
    }
}

TEST_F(WriteStandard, SendsZerosForMissingOffsets) {
    EXPECT_EQ(TORVIKwriteFTSensorCalArray(device, 0, arguments.serialText.data(), 4.5, 1.25, arguments.matrix.data(),
                                          nullptr, arguments.maxima.data()),
              0);
    arguments.offsets = {0, 0, 0};
    expectSent(arguments.standardFrames());
}

TEST_F(WriteStandard, NeedsSerialTextMatrixAndMaxima) {
    char* const text = arguments.serialText.data();
    double* const matrix = arguments.matrix.data();
    double* const maxima = arguments.maxima.data();
    EXPECT_EQ(TORVIKwriteFTSensorCalArray(device, 0, nullptr, 1, 1, matrix, nullptr, maxima), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteFTSensorCalArray(device, 0, text, 1, 1, nullptr, nullptr, maxima), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteFTSensorCalArray(device, 0, text, 1, 1, matrix, nullptr, nullptr), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(WriteStandard, ChecksTheSlotAndDoesNotUseIt) {
    arguments.slot = 255;
    EXPECT_EQ(arguments.standard(), 0);
    expectSent(arguments.standardFrames());
    arguments.slot = 256;
    expectRefused();
}

TEST_F(WriteStandard, RefusesScaleFactorsNearZero) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double scale : {0.0, -0.0, 1e-39, -1e-39, 1.17549435e-38, -1.17549435e-38, nan}) {
        arguments.scales = {scale, 1};
        expectRefused();
        arguments.scales = {1, scale};
        expectRefused();
    }
}

TEST_F(WriteStandard, TakesScaleFactorsFromTheSmallestNormalFloatOn) {
    constexpr double smallest = 1.1754943508222875e-38;
    for (const double scale : {smallest, -smallest, -1e-30}) {
        arguments.scales = {scale, scale};
        EXPECT_EQ(arguments.standard(), 0) << scale;
    }
}

TEST_F(WriteStandard, TakesTheDigitsOfTheSerialText) {
    expectSerial("SN-00012345", 12345);
    expectSerial("7", 7);
    expectSerial("no. 42b17", 42);
    expectSerial("99999999", 99999999);
    expectSerial("-5", 5);
}

TEST_F(WriteStandard, TakesASerialTextWithoutDigitsForZero) {
    expectSerial("", 0);
    expectSerial("prototype", 0);
}

TEST_F(WriteStandard, PassesOver254CharactersOfTheSerialText) {
    expectSerial(std::string(254, 'x') + "7", 7);
    expectSerial(std::string(255, 'x') + "7", 0);
}

TEST_F(WriteStandard, RefusesSerialNumbersOfMoreThanEightDigits) {
    for (const char* const text :
         {"100000000", "123456789", "4294967297", "18446744073709551617", "99999999999999999999999999"}) {
        arguments.serialText = text;
        expectRefused();
    }
}

TEST_F(WriteStandard, EndsWithTheFirstElementThatIsRefused) {
    const std::size_t count = arguments.standardFrames().size();
    for (const std::size_t good : {std::size_t{0}, std::size_t{1}, std::size_t{20}, std::size_t{40}, count - 1}) {
        refuseAfter(static_cast<std::uint32_t>(good), 0x48);
        EXPECT_EQ(arguments.standard(), -1);
        EXPECT_EQ(takeCode(), 0x52U);
        expectSent(arguments.standardFrames().cut(good + 1));
    }
}

TEST_F(WriteStandard, EndsWithAnElementThatIsNotAnswered) {
    virtualClearAnswerRules();
    answerWith(0x48, {0}, 10);
    drop(0x48);
    EXPECT_EQ(run([this] { return arguments.standard(); }), -1);
    EXPECT_EQ(takeCode(), code::internalCallFailed);
    expectSent(arguments.standardFrames().cut(11));
    expectFree();
}

class WriteAny : public WriteStandard {
  protected:
    void expectRefused(std::uint32_t expected = code::parameterExceedance) {
        EXPECT_EQ(arguments.any(), -1);
        EXPECT_EQ(takeCode(), expected);
        EXPECT_THAT(takeSent(), IsEmpty());
    }
    void expectSize(std::int32_t format, std::size_t inputs, std::size_t outputs) {
        arguments.format = format;
        EXPECT_EQ(arguments.any(), 0) << format;
        expectSent(arguments.framesOf(inputs, outputs));
    }
};

TEST_F(WriteAny, SendsEveryElementAndStores) {
    EXPECT_EQ(arguments.any(), 0);
    expectSent(arguments.framesOf(6, 6));
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(WriteAny, TakesTheSizeFromTheFormatWord) {
    expectSize(0x00052002, 6, 3);
    expectSize(0x00021002, 3, 2);
    expectSize(0x00010002, 2, 1);
    expectSize(0x00000002, 1, 1);
    expectSize(0x00052F02, 6, 3);
    expectSize(0x000FF002, 16, 16);
    expectSize(0x00FF0002, 256, 1);
}

TEST_F(WriteAny, KeepsSixBySixForOtherTypes) {
    expectSize(0x00000001, 6, 6);
    expectSize(0x00021001, 6, 6);
    expectSize(0x00021003, 6, 6);
}

TEST_F(WriteAny, RefusesSizesThatNoElementIndexReaches) {
    for (const std::int32_t format : {0x0010F002, 0x00FF1002, 0x01000002, 0x7FFFF002}) {
        arguments.format = format;
        expectRefused();
    }
}

TEST_F(WriteAny, RefusesANegativeFormatWord) {
    arguments.format = -1;
    expectRefused();
}

TEST_F(WriteAny, StoresIntoTheLowByteOfTheSlot) {
    for (const std::uint32_t slot : {0U, 0x80U, 0xFFU, 0x1FEU}) {
        arguments.slot = slot;
        EXPECT_EQ(arguments.any(), 0);
        expectSent(arguments.framesOf(6, 6));
    }
}

TEST_F(WriteAny, SendsNeitherFormatNorZeroSignalsToOldFirmware) {
    use(oldFirmware);
    EXPECT_EQ(arguments.any(), 0);
    expectSent(arguments.standardFrames().store(3));
    use(firmwareWithFormatWord);
    EXPECT_EQ(arguments.any(), 0);
    expectSent(arguments.framesOf(6, 6));
}

TEST_F(WriteAny, NeedsNewFirmwareForAFormatWord) {
    use(oldFirmware);
    for (const std::int32_t format : {1, 0x00021002, 0x7FFFF002}) {
        arguments.format = format;
        expectRefused(code::firmwareUnsupported);
    }
}

TEST_F(WriteAny, ChecksItsArgumentsBeforeTheFirmware) {
    use(oldFirmware);
    arguments.format = 1;
    arguments.scales[0] = 0;
    expectRefused();
    arguments.scales[0] = 1;
    arguments.serialText = "123456789";
    expectRefused();
}

TEST_F(WriteAny, SendsZerosForMissingOffsetsAndZeroSignals) {
    EXPECT_EQ(TORVIKwriteFTsensorCalArrayA(device, 3, arguments.serialText.data(), arguments.scales.data(),
                                           arguments.matrix.data(), nullptr, arguments.maxima.data(), nullptr, 0),
              0);
    arguments.offsets = {0, 0, 0};
    arguments.zeroSignals = std::vector<double>(6);
    expectSent(arguments.framesOf(6, 6));
}

TEST_F(WriteAny, NeedsSerialTextScalesMatrixAndMaxima) {
    char* const text = arguments.serialText.data();
    double* const numbers = arguments.matrix.data();
    EXPECT_EQ(TORVIKwriteFTsensorCalArrayA(device, 0, nullptr, numbers, numbers, nullptr, numbers, nullptr, 0), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteFTsensorCalArrayA(device, 0, text, nullptr, numbers, nullptr, numbers, nullptr, 0), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteFTsensorCalArrayA(device, 0, text, numbers, nullptr, nullptr, numbers, nullptr, 0), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteFTsensorCalArrayA(device, 0, text, numbers, numbers, nullptr, nullptr, nullptr, 0), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(WriteAny, RefusesScaleFactorsNearZeroAndLongSerialNumbers) {
    arguments.scales = {1e-39, 1};
    expectRefused();
    arguments.scales = {1, 0};
    expectRefused();
    arguments.scales = {1, 1};
    arguments.serialText = "4294967297";
    expectRefused();
}

TEST_F(WriteAny, EndsWithTheFirstElementThatIsRefusedAndStoresNothing) {
    const std::size_t elements = arguments.framesOf(6, 6).size() - 1;
    for (const std::size_t good : {std::size_t{0}, std::size_t{2}, std::size_t{45}, elements - 2, elements - 1}) {
        refuseAfter(static_cast<std::uint32_t>(good), 0x48);
        EXPECT_EQ(arguments.any(), -1);
        EXPECT_EQ(takeCode(), 0x52U);
        expectSent(arguments.framesOf(6, 6).cut(good + 1));
    }
}

TEST_F(WriteAny, GivesTheResultOfTheStoring) {
    refuseAfter(0, 0x7F);
    EXPECT_EQ(arguments.any(), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    expectSent(arguments.framesOf(6, 6));
}

TEST_F(WriteAny, StoresAfterTheStreamRunsAgain) {
    use(newFirmware, true);
    EXPECT_EQ(arguments.any(), 0);
    Frames expected;
    expected.stopStream().element(7, 0, 0);
    arguments.mainArrays(expected, 36, 6).array(6, std::span(arguments.zeroSignals).first(6));
    expectSent(expected.serial(12345).startStream().store(3));
}

}  // namespace
}  // namespace torvik::test
