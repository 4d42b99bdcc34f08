// The transmit mapping: its two packings, and the number of channels that it changes.
#include "params/params_bench.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

struct Packing {
    const char* name;
    std::uint8_t index;
    std::uint8_t high;
    std::uint8_t low;
    std::uint32_t value;
};

class TxMapping : public ParamsBench, public testing::WithParamInterface<Packing> {};

TEST_P(TxMapping, IsUnpackedAsItsIndexSays) {
    script({accepts(0x49, {GetParam().high, GetParam().low, 0xFF})});
    std::uint32_t value = 77;
    EXPECT_EQ(TORVIKgetTXMapping(device, GetParam().index, &value), 0);
    EXPECT_EQ(value, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Params, TxMapping,
                         testing::Values(Packing{"Number", 0, 0x01, 0x23, 0x0123},
                                         Packing{"LargestNumber", 0, 0xFF, 0xFF, 0xFFFF},
                                         Packing{"FirstEntry", 1, 0x01, 0x23, 0x00010203},
                                         Packing{"ThirdEntry", 3, 0x01, 0x23, 0x00010203},
                                         Packing{"LastEntry", 16, 0xFF, 0xFF, 0x00FF0F0F}),
                         [](const auto& instance) { return instance.param.name; });

struct Write {
    const char* name;
    std::uint8_t index;
    std::int32_t value;
    std::string sent;
    std::uint32_t activeChannels;  // afterwards, 3 before
};

class SetTxMapping : public ParamsBench, public testing::WithParamInterface<Write> {
  protected:
    void SetUp() override {
        ParamsBench::SetUp();
        activateAs({.channels = 3});
    }
};

TEST_P(SetTxMapping, TakesTheNumberOfChannelsOver) {
    script({accepts(0x4A)});
    EXPECT_EQ(TORVIKsetTXMapping(device, GetParam().index, GetParam().value), 0);
    EXPECT_THAT(takeSent(), ElementsAre(GetParam().sent));
    EXPECT_EQ(record().activeChannels, GetParam().activeChannels);
}

INSTANTIATE_TEST_SUITE_P(Params, SetTxMapping,
                         testing::Values(Write{"Six", 0, 6, "83 4A 00 00 06", 6},
                                         Write{"Eight", 0, 8, "83 4A 00 00 08", 8},
                                         Write{"ButNotNine", 0, 9, "83 4A 00 00 09", 3},
                                         Write{"OfTheLowByte", 0, 0x105, "83 4A 00 01 05", 5},
                                         Write{"OfALowByteOfZero", 0, 0x100, "83 4A 00 01 00", 0},
                                         Write{"OfAHighHalf", 0, 0x10000, "83 4A 00 00 00", 0},
                                         Write{"ButNotOfEntries", 1, 6, "83 4A 01 00 06", 3}),
                         [](const auto& instance) { return instance.param.name; });

class SetTxMappingRefused : public ParamsBench {};

TEST_F(SetTxMappingRefused, LeavesTheNumberOfChannels) {
    script({Answer{0x4A, {0x52}}});
    EXPECT_EQ(TORVIKsetTXMapping(device, 0, 2), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_EQ(record().activeChannels, 6U);
}

TEST_F(ParamsBench, SetsHaveTheFramesOfTheNewTransmitMapping) {
    script({accepts(0x4A)});
    ASSERT_EQ(TORVIKsetTXMapping(device, 0, 2), 0);
    pushSet(0, int24Type, {1, 2});
    settle();
    std::int32_t count = 0;
    EXPECT_EQ(TORVIKreceived(device, 0, &count), 0);
    EXPECT_EQ(count, 1);
}

}  // namespace
}  // namespace torvik::test
