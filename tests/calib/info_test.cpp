// Unit numbers, date, and what the info pair asks for.
#include <limits>

#include "calib/calibration_bench.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WriteInfo : public CalibrationBench {
  protected:
    static std::int32_t writeInfo(double slot, double format) {
        std::array info = {slot, format};
        return TORVIKwriteFTsensorCalArrInfo(device, nullptr, nullptr, info.data());
    }
    std::int32_t writeAll() { return TORVIKwriteFTsensorCalArrInfo(device, units.data(), date.data(), info.data()); }

    static Frames frames(bool paused = false) {
        Frames expected;
        expected.element(7, 0, 335874);
        if (paused) expected.stopStream();
        expected.array(11, {3, 3, 9, 18, 254, 255}).array(12, {2025, 11, 21}).store(4);
        if (paused) expected.startStream();
        return expected;
    }

    std::vector<std::int32_t> units = {3, 3, 9, 18, 254, 255};
    std::vector<std::int32_t> date = {2025, 11, 21};
    std::vector<double> info = {-5, 335874};
};

TEST_F(WriteInfo, SendsFormatUnitsDateAndStores) {
    EXPECT_EQ(writeAll(), 0);
    expectSent(frames());
    EXPECT_EQ(takeCode(), code::none);
}

TEST_F(WriteInfo, SendsNothingForNothing) {
    EXPECT_EQ(TORVIKwriteFTsensorCalArrInfo(device, nullptr, nullptr, nullptr), 0);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(WriteInfo, SendsUnitsAlone) {
    EXPECT_EQ(TORVIKwriteFTsensorCalArrInfo(device, units.data(), nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.array(11, {3, 3, 9, 18, 254, 255}));
}

TEST_F(WriteInfo, SendsDateAlone) {
    EXPECT_EQ(TORVIKwriteFTsensorCalArrInfo(device, nullptr, date.data(), nullptr), 0);
    Frames expected;
    expectSent(expected.array(12, {2025, 11, 21}));
}

TEST_F(WriteInfo, SendsNumbersAsTheyAre) {
    units = {-1, 0, 16777216, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min(), 7};
    EXPECT_EQ(TORVIKwriteFTsensorCalArrInfo(device, units.data(), nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.array(11, {-1, 0, 16777216, 2147483647, -2147483648.0, 7}));
}

TEST_F(WriteInfo, SendsAPositiveFormatWordOnly) {
    EXPECT_EQ(writeInfo(0, 2), 0);
    EXPECT_EQ(writeInfo(0, 0.5), 0);
    EXPECT_EQ(writeInfo(0, 0), 0);
    EXPECT_EQ(writeInfo(0, -1), 0);
    EXPECT_EQ(writeInfo(0, std::numeric_limits<double>::quiet_NaN()), 0);
    Frames expected;
    expectSent(expected.element(7, 0, 2).element(7, 0, 0.5));
}

TEST_F(WriteInfo, StoresIntoTheSlotBelowTheNegatedNumber) {
    EXPECT_EQ(writeInfo(-1, 0), 0);
    EXPECT_EQ(writeInfo(-2.9, 0), 0);
    EXPECT_EQ(writeInfo(-256, 0), 0);
    EXPECT_THAT(takeSent(), ElementsAre("81 7F 00", "81 7F 01", "81 7F FF"));
}

TEST_F(WriteInfo, DoesNotStoreOtherwise) {
    EXPECT_EQ(writeInfo(0, 0), 0);
    EXPECT_EQ(writeInfo(3, 0), 0);
    EXPECT_EQ(writeInfo(-0.9, 0), 0);
    EXPECT_EQ(writeInfo(std::numeric_limits<double>::quiet_NaN(), 0), 0);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(WriteInfo, RefusesASlotThatNoWordHolds) {
    for (const double slot : {-1e10, -std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(writeInfo(slot, 5), -1);
        EXPECT_EQ(takeCode(), code::parameterExceedance);
    }
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(WriteInfo, NeedsNewFirmware) {
    use(oldFirmware);
    EXPECT_EQ(writeAll(), -1);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_THAT(takeSent(), IsEmpty());
    use(firmwareWithFormatWord);
    EXPECT_EQ(writeAll(), 0);
}

TEST_F(WriteInfo, EndsWithTheFirstElementThatIsRefusedAndStoresNothing) {
    for (const std::size_t good : {0U, 1U, 4U, 7U, 9U}) {
        refuseAfter(static_cast<std::uint32_t>(good), 0x48);
        EXPECT_EQ(writeAll(), -1);
        EXPECT_EQ(takeCode(), 0x52U);
        expectSent(frames().cut(good + 1));
    }
}

TEST_F(WriteInfo, GivesTheResultOfTheStoring) {
    refuseAfter(0, 0x7F);
    EXPECT_EQ(writeAll(), -1);
    EXPECT_EQ(takeCode(), 0x52U);
}

TEST_F(WriteInfo, PausesTheStreamForUnits) {
    use(newFirmware, true);
    EXPECT_EQ(writeAll(), 0);
    expectSent(frames(true));
    EXPECT_TRUE(record().transmitting);
}

TEST_F(WriteInfo, StartsTheStreamThatItHasNotPaused) {
    use(newFirmware, true);
    EXPECT_EQ(TORVIKwriteFTsensorCalArrInfo(device, nullptr, date.data(), nullptr), 0);
    EXPECT_EQ(TORVIKwriteFTsensorCalArrInfo(device, nullptr, nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.array(12, {2025, 11, 21}).startStream().startStream());
}

}  // namespace
}  // namespace torvik::test
