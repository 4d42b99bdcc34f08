// Reading whole calibrations.
#include <algorithm>

#include "calib/calibration_bench.h"

namespace torvik::test {
namespace {

using testing::Each;
using testing::ElementsAreArray;

constexpr double none = -77.25;

// The caller's memory, larger than what is delivered.
struct Buffers {
    std::string serialText = std::string(9, '~');
    std::vector<double> scales = std::vector<double>(2, none);
    std::vector<double> matrix = std::vector<double>(257, none);
    std::vector<double> offsets = std::vector<double>(4, none);
    std::vector<double> maxima = std::vector<double>(17, none);
    std::vector<double> zeroSignals = std::vector<double>(257, none);
    std::uint32_t format = 0xDEADBEEF;

    std::int32_t standard(std::uint32_t slot) {
        return TORVIKreadFTSensorCalArray(device, slot, serialText.data(), &scales[0], &scales[1], matrix.data(),
                                          offsets.data(), maxima.data());
    }
    std::int32_t any(std::uint32_t slot) {
        return TORVIKreadFTsensorCalArrayA(device, slot, serialText.data(), scales.data(), matrix.data(),
                                           offsets.data(), maxima.data(), zeroSignals.data(), &format);
    }
};

void expectNumbers(const std::vector<double>& buffer, std::size_t count, double first) {
    const std::span delivered(buffer);
    EXPECT_THAT(delivered.first(count), ElementsAreArray(counting(count, first)));
    EXPECT_THAT(delivered.subspan(count), Each(none));
}

class ReadStandard : public CalibrationBench {
  protected:
    static Frames frames() {
        Frames expected;
        return expected.raw("81 7D 05").read(0, 1).read(1, 1).read(5, 1).read(2, 36).read(3, 3).read(4, 6);
    }
    static void holdsAll() {
        holdsWord(12345);
        holds({4.5, 1.25});
        holds(counting(36));
        holds(counting(3, 100));
        holds(counting(6, 200));
    }

    Buffers buffers;
};

TEST_F(ReadStandard, DeliversEveryArray) {
    holdsAll();
    EXPECT_EQ(buffers.standard(5), 0);
    expectSent(frames());
    EXPECT_STREQ(buffers.serialText.c_str(), "00012345");
    EXPECT_THAT(buffers.scales, testing::ElementsAre(4.5, 1.25));
    expectNumbers(buffers.matrix, 36, 1);
    expectNumbers(buffers.offsets, 3, 100);
    expectNumbers(buffers.maxima, 6, 200);
    expectFree();
}

TEST_F(ReadStandard, SelectsTheSlotAloneWhenNothingIsWanted) {
    EXPECT_EQ(TORVIKreadFTSensorCalArray(device, 0x85, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.raw("81 7D 05"));
}

TEST_F(ReadStandard, ReadsWhatIsWanted) {
    holds({7});
    double inScale = 0;
    EXPECT_EQ(TORVIKreadFTSensorCalArray(device, 1, nullptr, nullptr, &inScale, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(inScale, 7);
    Frames expected;
    expectSent(expected.raw("81 7D 01").read(5, 1));
}

TEST_F(ReadStandard, SelectsNoSlotOnOldFirmware) {
    use(firmwareWithSlotSelection - 1);
    EXPECT_EQ(TORVIKreadFTSensorCalArray(device, 5, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    expectSent(Frames());
    use(firmwareWithSlotSelection);
    EXPECT_EQ(TORVIKreadFTSensorCalArray(device, 5, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.raw("81 7D 05"));
}

TEST_F(ReadStandard, RefusesALargeSlotWhenTheSerialNumberIsWanted) {
    EXPECT_EQ(buffers.standard(256), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    expectSent(Frames());
    EXPECT_EQ(TORVIKreadFTSensorCalArray(device, 0x105, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.raw("81 7D 05"));
}

TEST_F(ReadStandard, EndsWithTheFirstElementThatIsRefused) {
    holdsWord(1);
    holds(counting(10));
    answerWith(0x47, {0x52}, 1);
    EXPECT_EQ(buffers.standard(5), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    expectSent(frames().cut(13));
    expectFree();
}

TEST_F(ReadStandard, EndsWithAnElementThatIsNotAnswered) {
    holdsWord(1);
    holds(counting(2));
    drop(0x47);
    EXPECT_EQ(run([this] { return buffers.standard(5); }), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    expectSent(frames().cut(5));
    expectFree();
}

TEST_F(ReadStandard, EndsWithASerialNumberThatIsNone) {
    holdsWord(100000000);
    EXPECT_EQ(buffers.standard(5), -1);
    EXPECT_EQ(takeCode(), code::notStored);
    expectSent(frames().cut(2));
}

class ReadAny : public CalibrationBench {
  protected:
    static Frames framesOf(unsigned inputs, unsigned outputs) {
        Frames expected;
        return expected.raw("81 7D 05")
            .read(0, 1)
            .read(7, 1)
            .read(5, 1)
            .read(1, 1)
            .read(2, inputs * outputs)
            .read(3, 3)
            .read(4, outputs)
            .read(6, inputs);
    }

    void expectSize(std::uint32_t format, unsigned inputs, unsigned outputs) {
        buffers = {};
        holdsWord(12345);
        holds({static_cast<double>(format), 1.25, 4.5});
        holds(counting(std::size_t{inputs} * outputs));
        holds(counting(3, 300));
        holds(counting(outputs, 400));
        holds(counting(inputs, 500));
        EXPECT_EQ(buffers.any(5), 0);
        expectSent(framesOf(inputs, outputs));
        EXPECT_EQ(buffers.format, format);
        EXPECT_THAT(buffers.scales, testing::ElementsAre(4.5, 1.25));
        expectNumbers(buffers.matrix, std::size_t{inputs} * outputs, 1);
        expectNumbers(buffers.offsets, 3, 300);
        expectNumbers(buffers.maxima, outputs, 400);
        expectNumbers(buffers.zeroSignals, inputs, 500);
    }

    // The device tells this format word.
    void expectWrongAnswer(double format) {
        holdsWord(1);
        holds({format});
        EXPECT_EQ(buffers.any(5), -1);
        EXPECT_EQ(takeCode(), wrongAnswer) << format;
        expectSent(framesOf(6, 6).cut(3));
    }

    Buffers buffers;
};

TEST_F(ReadAny, DeliversEveryArray) {
    expectSize(0, 6, 6);
    expectFree();
}

TEST_F(ReadAny, TakesTheSizeFromTheFormatWord) {
    expectSize(0x00052002, 6, 3);
    expectSize(0x00021002, 3, 2);
    expectSize(0x00000002, 1, 1);
    expectSize(0x000FF002, 16, 16);
}

TEST_F(ReadAny, KeepsSixBySixForOtherTypes) {
    expectSize(1, 6, 6);
    expectSize(0x00021003, 6, 6);
}

TEST_F(ReadAny, TruncatesTheFormatWord) {
    holdsWord(1);
    holds({1.75});
    holds(counting(60));
    EXPECT_EQ(buffers.any(5), 0);
    EXPECT_EQ(buffers.format, 1U);
}

TEST_F(ReadAny, RefusesSizesThatNoElementIndexReaches) {
    for (const double format : {double{0x0010F002}, double{0x00FF1002}, double{0x01000002}})
        expectWrongAnswer(format);
}

TEST_F(ReadAny, RefusesAFormatWordThatIsNoNumber) {
    expectWrongAnswer(1e10);
    expectWrongAnswer(-1e10);
    holdsWord(1);
    holdsWord(0x7FC00000);
    EXPECT_EQ(buffers.any(5), -1);
    EXPECT_EQ(takeCode(), wrongAnswer);
}

TEST_F(ReadAny, OfOldFirmwareHasNoFormatWordAndNoZeroSignals) {
    use(oldFirmware);
    holdsWord(12345);
    holds({1.25, 4.5});
    holds(counting(36));
    holds(counting(3, 300));
    holds(counting(6, 400));
    EXPECT_EQ(buffers.any(5), 0);
    Frames expected;
    expectSent(expected.raw("81 7D 05").read(0, 1).read(5, 1).read(1, 1).read(2, 36).read(3, 3).read(4, 6));
    EXPECT_EQ(buffers.format, 0U);
    EXPECT_THAT(buffers.zeroSignals, Each(none));
}

TEST_F(ReadAny, ReadsTheInputScaleInAnyCase) {
    holds({0x00021002, 1.25});
    std::uint32_t format = 0;
    EXPECT_EQ(TORVIKreadFTsensorCalArrayA(device, 5, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &format), 0);
    EXPECT_EQ(format, 0x00021002U);
    Frames expected;
    expectSent(expected.raw("81 7D 05").read(7, 1).read(5, 1));
}

TEST_F(ReadAny, ReadsTheFormatWordThoughItIsNotWanted) {
    holds({0x00021002, 1.25});
    holds(counting(2, 400));
    EXPECT_EQ(TORVIKreadFTsensorCalArrayA(device, 5, nullptr, nullptr, nullptr, nullptr, buffers.maxima.data(), nullptr,
                                          nullptr),
              0);
    expectNumbers(buffers.maxima, 2, 400);
}

TEST_F(ReadAny, SelectsTheSlotWithoutItsHighestBit) {
    holds({0, 1});
    EXPECT_EQ(TORVIKreadFTsensorCalArrayA(device, 0xFF, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              0);
    EXPECT_EQ(takeSent().front(), "81 7D 7F");
}

TEST_F(ReadAny, RefusesALargeSlotWhenTheSerialNumberIsWanted) {
    EXPECT_EQ(buffers.any(256), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    expectSent(Frames());
}

TEST_F(ReadAny, EndsWithTheFirstElementThatIsRefused) {
    for (const std::size_t good : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{3}, std::size_t{39},
                                   std::size_t{42}, std::size_t{48}}) {
        use(newFirmware);
        if (good > 0) holdsWord(0);
        holds(std::vector<double>(std::max(good, std::size_t{1}) - 1));
        answerWith(0x47, {0x52}, 1);
        EXPECT_EQ(buffers.any(5), -1);
        EXPECT_EQ(takeCode(), 0x52U);
        expectSent(framesOf(6, 6).cut(good + 2));
    }
}

TEST_F(ReadAny, EndsWithARefusedSlot) {
    refuseAfter(0, 0x7D);
    EXPECT_EQ(buffers.any(5), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    expectSent(framesOf(6, 6).cut(1));
}

}  // namespace
}  // namespace torvik::test
