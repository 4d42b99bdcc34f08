// What is written to the simulated amplifier is read back.
#include <cmath>

#include "params/params_bench.h"

namespace torvik::test {
namespace {

class RoundTrip : public ParamsBench {
  protected:
    template <class Function>
    void expectSuccess(Function call) {
        EXPECT_EQ(run(call), 0) << takeLastError(device).text;
    }
};

TEST_F(RoundTrip, OfTheSerialNumber) {
    std::uint32_t serial = 0;
    expectSuccess([] { return TORVIKsetSerialNo(device, 0x01020304); });
    expectSuccess([&] { return TORVIKgetSerialNo(device, &serial); });
    EXPECT_EQ(serial, 0x01020304U);
}

TEST_F(RoundTrip, OfANegativeZeroSignalOfOneChannel) {
    std::uint32_t zero = 0;
    expectSuccess([] { return TORVIKwriteZero(device, 2, -5); });
    expectSuccess([&] { return TORVIKreadZero(device, 2, &zero); });
    EXPECT_EQ(zero, 0xFFFFFFFBU);
    expectSuccess([&] { return TORVIKreadZero(device, 3, &zero); });
    EXPECT_EQ(zero, 0U);
}

TEST_F(RoundTrip, OfTheUserScaleOfAllChannelsInSinglePrecision) {
    double scale = 0;
    expectSuccess([] { return TORVIKwriteUserScale(device, 0, 0.1); });
    expectSuccess([&] { return TORVIKreadUserScale(device, 6, &scale); });
    EXPECT_EQ(scale, static_cast<double>(0.1F));
}

TEST_F(RoundTrip, OfTheUserOffset) {
    double offset = 0;
    expectSuccess([] { return TORVIKwriteUserOffset(device, 1, -2.5); });
    expectSuccess([&] { return TORVIKreadUserOffset(device, 1, &offset); });
    EXPECT_EQ(offset, -2.5);
}

TEST_F(RoundTrip, OfTheOutputsTypesComesBackExchanged) {
    std::uint8_t typeA = 0;
    std::uint8_t typeB = 0;
    expectSuccess([] { return TORVIKsetAoutType(device, 1, 2, 3); });
    expectSuccess([&] { return TORVIKgetAoutType(device, 1, &typeA, &typeB); });
    EXPECT_EQ(typeA, 3);
    EXPECT_EQ(typeB, 2);
}

TEST_F(RoundTrip, OfAUnitOfTheTable) {
    std::array<char, 10> text{};
    std::uint32_t unitNo = 0;
    expectSuccess([] { return TORVIKsetUnitText(device, 2, 0, "kNm"); });
    expectSuccess([&] { return TORVIKgetUnitNo(device, 2, &unitNo); });
    EXPECT_EQ(unitNo, 24U);
    expectSuccess([&] { return TORVIKgetUnitText(device, 2, 0, text.data()); });
    EXPECT_STREQ(text.data(), "kNm");
}

TEST_F(RoundTrip, OfBothUserTexts) {
    std::array<char, 10> text{};
    expectSuccess([] { return TORVIKsetUnitText(device, 1, 0, "Lbs"); });
    expectSuccess([] { return TORVIKsetUnitText(device, 2, 2, "abcdefgh"); });
    expectSuccess([&] { return TORVIKgetUnitText(device, 1, 0, text.data()); });
    EXPECT_STREQ(text.data(), "Lbs");
    expectSuccess([&] { return TORVIKgetUnitText(device, 2, 0, text.data()); });
    EXPECT_STREQ(text.data(), "abcdefg");
    expectFree();
}

TEST_F(RoundTrip, OfTheDataRateThroughTheRestart) {
    double frequency = 0;
    expectSuccess([] { return TORVIKsetFrequency(device, 50); });
    expectSuccess([&] { return TORVIKgetFrequency(device, &frequency); });
    EXPECT_EQ(frequency, 50);
    EXPECT_TRUE(record().transmitting);
}

TEST_F(RoundTrip, OfTheTransmitMapping) {
    std::uint32_t value = 0;
    expectSuccess([] { return TORVIKsetTXMapping(device, 0, 2); });
    expectSuccess([&] { return TORVIKgetTXMapping(device, 0, &value); });
    EXPECT_EQ(value, 2U);
    virtualSendSets(amplifier, 3);
    settle();
    std::int32_t count = 0;
    EXPECT_EQ(TORVIKreceived(device, 0, &count), 0);
    EXPECT_EQ(count, 3);
}

TEST_F(RoundTrip, OfTheInputSensitivity) {
    double sensitivity = 0;
    expectSuccess([] { return TORVIKwriteInputSensitivity(device, 1, 0, 3.0); });
    EXPECT_GT(run([&] { return TORVIKreadInputSensitivity(device, 1, &sensitivity); }), 0);
    EXPECT_NEAR(sensitivity, 3.0, 1e-6);
}

TEST_F(RoundTrip, OfTheMaximumDeliversAFiniteValueAndZero) {
    virtualSendSets(amplifier, 3);
    settle();
    double value = HUGE_VAL;
    double second = 77;
    expectSuccess([&] { return TORVIKreadMaxMinVal(device, 1, &value, &second); });
    EXPECT_TRUE(std::isfinite(value));
    EXPECT_EQ(second, 0.0);
    expectFree();
}

}  // namespace
}  // namespace torvik::test
