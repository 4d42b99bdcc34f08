// Designing a filter for a device's sampling frequency and loading it.
#include <numeric>

#include "filter/export_bench.h"
#include "filter/filter_bench.h"
#include "platform/faults.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::SizeIs;

constexpr std::uint32_t besselCharacteristic = 1;
constexpr std::uint32_t butterworthCharacteristic = 2;
constexpr std::uint32_t designOnly = 9;

struct Arguments {
    std::uint32_t filterNo = 3;
    std::uint32_t mode = 0;
    std::uint32_t kind = 0;
    std::uint32_t characteristic = butterworthCharacteristic;
    std::uint32_t orderBits = 4;
    double f1 = 100;
    double f2 = 200;
};

class CalculatedFilter : public FilterExports {
  protected:
    void SetUp() override {
        FilterExports::SetUp();
        scriptLoading();
    }
    void TearDown() override {
        platform::setFaultHook(nullptr);
        FilterExports::TearDown();
    }

    static void scriptLoading(const Answer& frequency = samplingFrequency()) {
        std::vector<Answer> answers = {frequency, accepts(0x4C), accepts(0x4E), accepts(0x4E), accepts(0x0A)};
        answers.insert(answers.end(), 31, accepts(0x50));
        script(std::span<const Answer>(answers));
    }

    std::int32_t calculate(const Arguments& with) {
        return run([with] {
            return TORVIKcalcSetDfilterParams(device, with.filterNo, with.mode, with.kind, with.characteristic,
                                              with.orderBits, with.f1, with.f2);
        });
    }

    // Refused after the sampling frequency has been read, and before anything else is sent.
    void expectRefusedAfterTheFrequency(const Arguments& with, std::uint32_t expected) {
        scriptLoading();
        expectFailure(calculate(with), expected);
        EXPECT_THAT(takeSent(), ElementsAre("80 8A"));
    }

    static std::vector<std::string> coefficientFrames(std::size_t xCount, std::size_t yCount,
                                                      std::string (*format)(double)) {
        std::vector<std::string> frames;
        const auto append = [&](std::size_t index, double coefficient) {
            std::array<char, 16> start{};
            std::snprintf(start.data(), start.size(), "86 50 03 %02X ", static_cast<unsigned>(index));
            frames.push_back(start.data() + format(coefficient));
        };
        for (std::size_t i = 0; i < xCount; ++i)
            append(i, designer()->xCoefficients[i]);
        for (std::size_t i = 0; i < yCount; ++i)
            append(0x10 + i, designer()->yCoefficients[i]);
        return frames;
    }
};

std::string hexOfSignAndMagnitude(double value) {
    const auto magnitude = static_cast<std::uint32_t>(std::abs(value) * 16777216.0 + 0.5);
    return hexOf(magnitude | (value < 0 ? 0x80000000 : 0));
}

TEST_F(CalculatedFilter, IsLoadedAndStored) {
    EXPECT_EQ(calculate({}), 0);
    std::vector<std::string> expected = {"80 8A", "82 4C 03 04", "86 4E 03 00 " + hexOfFloat(0.1)};
    std::ranges::copy(coefficientFrames(5, 4, hexOfFloat), std::back_inserter(expected));
    expected.push_back("81 0A 00");
    EXPECT_THAT(takeSent(), ElementsAreArray(expected));
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(CalculatedFilter, IsLoadedWithBothCutoffsForBands) {
    EXPECT_EQ(calculate({.kind = 3, .characteristic = besselCharacteristic}), 0);
    std::vector<std::string> expected = {"80 8A", "82 4C 03 34", "86 4E 03 00 " + hexOfFloat(0.1),
                                         "86 4E 03 01 " + hexOfFloat(0.2)};
    std::ranges::copy(coefficientFrames(5, 4, hexOfFloat), std::back_inserter(expected));
    expected.push_back("81 0A 00");
    EXPECT_THAT(takeSent(), ElementsAreArray(expected));
}

TEST_F(CalculatedFilter, IsLoadedAsSignAndMagnitudeInProtocolKind32) {
    activateAs({.protocolFlag = TORVIK_FLAG_PROTOCOL_KIND_32});
    scriptLoading();
    EXPECT_EQ(calculate({.kind = 1}), 0);
    std::vector<std::string> expected = {"80 8A", "82 4C 03 14", "86 4E 03 00 " + hexOfFloat(0.1)};
    std::ranges::copy(coefficientFrames(5, 4, hexOfSignAndMagnitude), std::back_inserter(expected));
    expected.push_back("81 0A 00");
    EXPECT_THAT(takeSent(), ElementsAreArray(expected));
}

TEST_F(CalculatedFilter, TakesItsTypeAndNumberOfCoefficientsFromTheOrderBits) {
    EXPECT_EQ(calculate({.kind = 2, .orderBits = 1}), 0);
    const auto sent = takeSent();
    ASSERT_THAT(sent, SizeIs(8));
    EXPECT_EQ(sent[1], "82 4C 03 21");
    EXPECT_EQ(sent[6], "86 50 03 10 " + hexOfFloat(designer()->yCoefficients[0]));
}

TEST_F(CalculatedFilter, SendsZerosForCoefficientsBeyondTheDesign) {
    EXPECT_EQ(calculate({.orderBits = 5}), 0);
    const auto sent = takeSent();
    ASSERT_THAT(sent, SizeIs(15));
    EXPECT_EQ(sent[8], "86 50 03 05 00 00 00 00");
    EXPECT_EQ(sent[13], "86 50 03 14 00 00 00 00");
}

struct OptionWord {
    std::uint32_t kind;
    std::uint32_t characteristic;
    std::uint32_t word;
};

TEST_F(CalculatedFilter, IsOfTheKindAndCharacteristicAskedFor) {
    for (const auto& [kind, characteristic, word] :
         {OptionWord{0, 1, 0x1421}, OptionWord{0, 2, 0x1422}, OptionWord{1, 1, 0x1441}, OptionWord{1, 2, 0x1442},
          OptionWord{2, 1, 0x1481}, OptionWord{2, 2, 0x1482}, OptionWord{3, 1, 0x1501}, OptionWord{3, 2, 0x1502}}) {
        scriptLoading();
        EXPECT_EQ(calculate({.filterNo = designOnly, .kind = kind, .characteristic = characteristic}), 0);
        ASSERT_NE(designer(), nullptr);
        EXPECT_EQ(designer()->options, word);
        EXPECT_EQ(designer()->order, 4);
        EXPECT_TRUE(designer()->iirValid);
    }
}

TEST_F(CalculatedFilter, StaysWithTheLibraryForNumbersAboveEight) {
    for (const std::uint32_t filterNo : {designOnly, 0xFFFFFFFFU}) {
        scriptLoading();
        EXPECT_EQ(calculate({.filterNo = filterNo}), 0);
        EXPECT_THAT(takeSent(), ElementsAre("80 8A"));
    }
}

TEST_F(CalculatedFilter, IsReadBackWithANegativeNumber) {
    ASSERT_EQ(calculate({.filterNo = designOnly}), 0);
    takeSent();
    std::array<double, 5> x{};
    std::array<double, 4> y{};
    for (const std::int32_t number : {-1, -9, -2147483647 - 1}) {
        EXPECT_EQ(TORVIKgetDfilterCoeff(device, number, 0, x.data(), y.data()), 0);
        EXPECT_THAT(x, ElementsAreArray(designer()->xCoefficients.begin(), 5));
        EXPECT_THAT(y, ElementsAreArray(designer()->yCoefficients.begin(), 4));
        EXPECT_LT(y[0], 0.0);
    }
    expectNothingSentAndNoTimePassed();
}

TEST_F(CalculatedFilter, IsReadBackWithFourInputCoefficientsAsAFirFilter) {
    ASSERT_EQ(calculate({.filterNo = designOnly}), 0);
    std::array<double, 5> x = {0, 0, 0, 0, untouched<double>()};
    EXPECT_EQ(TORVIKgetDfilterCoeff(device, -1, 0x80, x.data(), nullptr), 0);
    EXPECT_EQ(x[3], designer()->xCoefficients[3]);
    EXPECT_EQ(x[4], untouched<double>());
}

TEST_F(CalculatedFilter, IsNotThereBeforeTheFirstDesign) {
    double x[5] = {};
    double y[4] = {};
    expectFailure(TORVIKgetDfilterCoeff(device, -1, 0, x, y), filter_error::noDesign);
    expectNothingSentAndNoTimePassed();
}

TEST_F(CalculatedFilter, NullPointerWithoutADesign_ReportsTheDesign) {
    double x[5] = {};
    expectFailure(TORVIKgetDfilterCoeff(device, -1, 0, nullptr, nullptr), filter_error::noDesign);
    expectFailure(TORVIKgetDfilterCoeff(device, -1, 0, x, nullptr), filter_error::noDesign);
    expectFailure(TORVIKgetDfilterCoeff(device, -1, 0x80, nullptr, nullptr), filter_error::noDesign);
}

TEST_F(CalculatedFilter, NullPointerWithADesign_IsRejected) {
    ASSERT_EQ(calculate({.filterNo = designOnly}), 0);
    double x[5] = {};
    expectFailure(TORVIKgetDfilterCoeff(device, -1, 0, nullptr, x), code::parameterExceedance);
    expectFailure(TORVIKgetDfilterCoeff(device, -1, 0, x, nullptr), code::parameterExceedance);
}

TEST_F(CalculatedFilter, IsLoadedIntoFilterZeroToo) {
    EXPECT_EQ(calculate({.filterNo = 0}), 0);
    EXPECT_EQ(takeSent()[1], "82 4C 00 04");
}

TEST_F(CalculatedFilter, IsRefusedInModesWithBitZero) {
    for (const std::uint32_t mode : {1U, 3U, 0xFFFFFFFFU}) {
        expectFailure(calculate({.mode = mode}), code::firmwareUnsupported);
        expectNothingSentAndNoTimePassed();
    }
    EXPECT_EQ(calculate({.mode = 0xFFFFFFFE}), 0);
}

TEST_F(CalculatedFilter, IsRefusedForOtherKinds) {
    for (const std::uint32_t kind : {4U, 0x10000000U, 0xFFFFFFFFU})
        expectRefusedAfterTheFrequency({.kind = kind}, code::parameterExceedance);
}

TEST_F(CalculatedFilter, IsRefusedForOtherCharacteristics) {
    for (const std::uint32_t characteristic : {0U, 3U, 0xFFFFFFFFU})
        expectRefusedAfterTheFrequency({.characteristic = characteristic}, code::parameterExceedance);
}

TEST_F(CalculatedFilter, IsRefusedAboveHalfTheSamplingFrequency) {
    for (const double wrong : {500.001, HUGE_VAL}) {
        for (const std::uint32_t kind : {0U, 1U, 2U, 3U})
            expectRefusedAfterTheFrequency({.kind = kind, .f1 = wrong}, code::parameterExceedance);
    }
}

TEST_F(CalculatedFilter, IsRefusedForAnUpperCutoffAboveHalfTheSamplingFrequency) {
    for (const double wrong : {500.001, HUGE_VAL}) {
        for (const std::uint32_t kind : {2U, 3U})
            expectRefusedAfterTheFrequency({.kind = kind, .f2 = wrong}, code::parameterExceedance);
    }
}

TEST_F(CalculatedFilter, CutoffNan_IsRejectedByTheDesigner) {
    for (const std::uint32_t characteristic : {besselCharacteristic, butterworthCharacteristic}) {
        for (const std::uint32_t kind : {0U, 1U, 2U, 3U})
            expectRefusedAfterTheFrequency({.kind = kind, .characteristic = characteristic, .f1 = NAN},
                                           filter_error::complexCoefficient);
        for (const std::uint32_t kind : {2U, 3U})
            expectRefusedAfterTheFrequency({.kind = kind, .characteristic = characteristic, .f2 = NAN},
                                           filter_error::complexCoefficient);
    }
}

TEST_F(CalculatedFilter, CutoffNanWithAnotherWrongArgument_IsRejectedForThatArgument) {
    expectRefusedAfterTheFrequency({.kind = 4, .f1 = NAN}, code::parameterExceedance);
    expectRefusedAfterTheFrequency({.characteristic = 3, .f1 = NAN}, code::parameterExceedance);
    expectRefusedAfterTheFrequency({.kind = 3, .f1 = NAN, .f2 = 501}, code::parameterExceedance);
}

TEST_F(CalculatedFilter, BandStopUpToHalfTheSamplingFrequency_AtZero_HasGainOne) {
    for (const std::uint32_t characteristic : {besselCharacteristic, butterworthCharacteristic}) {
        scriptLoading();
        ASSERT_EQ(calculate({.filterNo = designOnly, .kind = 3, .characteristic = characteristic, .f2 = 500}), 0);
        std::array<double, 5> x{};
        std::array<double, 4> y{};
        ASSERT_EQ(TORVIKgetDfilterCoeff(device, -1, 0, x.data(), y.data()), 0);
        const double top = std::accumulate(x.begin(), x.end(), 0.0);
        EXPECT_NEAR(top / (1.0 - std::accumulate(y.begin(), y.end(), 0.0)), 1.0, 1e-12);
    }
}

TEST_F(CalculatedFilter, HasNoUpperCutoffWithoutABand) {
    EXPECT_EQ(calculate({.filterNo = designOnly, .f2 = NAN}), 0);
}

TEST_F(CalculatedFilter, IsDesignedForHalfTheSamplingFrequencyItself) {
    EXPECT_EQ(calculate({.filterNo = designOnly, .f1 = 500}), 0);
}

TEST_F(CalculatedFilter, NeedsTheSamplingFrequency) {
    script({Answer{0x8A, {0x42}}});
    expectFailure(calculate({}), code::frequencyOutOfRange);
    virtualClearAnswerRules();
    silence(0x8A);
    expectFailure(calculate({}), code::frequencyOutOfRange);
    EXPECT_THAT(takeSent(), ElementsAre("80 8A", "80 8A"));
    expectFree();
}

TEST_F(CalculatedFilter, NeedsASamplingFrequencyAboveZero) {
    for (const float wrong : {0.0F, -1000.0F, static_cast<float>(NAN)}) {
        scriptLoading(samplingFrequency(wrong));
        expectFailure(calculate({}), code::frequencyOutOfRange);
        EXPECT_THAT(takeSent(), ElementsAre("80 8A"));
    }
}

TEST_F(CalculatedFilter, IsRefusedWithTheCodeOfItsDesign) {
    expectRefusedAfterTheFrequency({.f1 = 1}, filter_error::gainTooLarge);
    expectRefusedAfterTheFrequency({.kind = 3, .f1 = 0}, filter_error::coefficientsTooLarge);
    expectRefusedAfterTheFrequency({.f1 = -HUGE_VAL}, filter_error::complexCoefficient);
}

TEST_F(CalculatedFilter, IsForgottenWhenTheNextDesignFails) {
    ASSERT_EQ(calculate({.filterNo = designOnly}), 0);
    scriptLoading();
    expectFailure(calculate({.filterNo = designOnly, .f1 = 1}), filter_error::gainTooLarge);
    double x[5] = {};
    double y[4] = {};
    expectFailure(TORVIKgetDfilterCoeff(device, -1, 0, x, y), filter_error::noDesign);
}

TEST_F(CalculatedFilter, IsRefusedWithoutMemory) {
    platform::setFaultHook(
        [](platform::FaultPoint point) { return point == platform::FaultPoint::allocation ? std::uint32_t{12} : 0; });
    expectRefusedAfterTheFrequency({}, code::internalCallFailed);
    EXPECT_EQ(designer(), nullptr);
}

TEST_F(CalculatedFilter, FailsWhereTheLoadingFails) {
    script({samplingFrequency(), accepts(0x4C), Answer{0x4E, {0x47}}});
    expectFailure(calculate({}), 0x47);
    EXPECT_THAT(takeSent(), SizeIs(3));
}

TEST_F(CalculatedFilter, SharesOneDesignerPerDevice) {
    EXPECT_EQ(designer(), nullptr);
    ASSERT_EQ(calculate({.filterNo = designOnly}), 0);
    const Dfilter* const first = designer();
    scriptLoading();
    ASSERT_EQ(calculate({.filterNo = designOnly, .kind = 1}), 0);
    EXPECT_EQ(designer(), first);
}

TEST_F(CalculatedFilter, IsReleasedWithItsDevice) {
    ASSERT_EQ(calculate({.filterNo = designOnly}), 0);
    TORVIKrelease(device);
    EXPECT_EQ(designer(), nullptr);
    TORVIKrelease(device);
}

TEST_F(CalculatedFilter, IsReleasedWithTheLibrary) {
    ASSERT_EQ(calculate({.filterNo = designOnly}), 0);
    TORVIKrelease(0);
    EXPECT_EQ(designer(), nullptr);
}

}  // namespace
}  // namespace torvik::test
