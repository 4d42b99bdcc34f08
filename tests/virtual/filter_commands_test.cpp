#include <cmath>
#include <initializer_list>

#include "filter_bytes.hpp"

namespace virtual_test {
namespace {

using FilterCommands = QuickAmplifier;

TEST_F(FilterCommands, TypeIsReadBackFromItsBank) {
    EXPECT_EQ(ask({0x4C, 3, 0x24}), kAcknowledged);
    EXPECT_EQ(ask({0x4C, 3, 0x83}), kAcknowledged);
    EXPECT_EQ(ask({0x4B, 3, 0}), told({0x24}));
    EXPECT_EQ(ask({0x4B, 3, kFir}), told({0x83}));
    EXPECT_EQ(ask({0x4B, 2, 0}), told({0x00}));
    EXPECT_EQ(ask({0x4B, 2, kFir}), told({0x80}));
}

TEST_F(FilterCommands, KindsAboveTheBandStopAreRefused) {
    EXPECT_EQ(ask({0x4C, 1, 0x34}), kAcknowledged);
    EXPECT_EQ(ask({0x4C, 1, 0x44}), refusal(kWrongData));
    EXPECT_EQ(ask({0x4C, 1, 0xF4}), refusal(kWrongData));
}

TEST_F(FilterCommands, FiltersAreNumberedFromOneToEight) {
    EXPECT_EQ(ask({0x4B, 0, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x4B, 9, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x4B, 1, 1}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x4C, 9, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x4D, 0, 0}), refusal(kWrongIndex));
    EXPECT_EQ(askWithFloat({0x4E, 9, 0}, 0.1F), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x4F, 9, 0}), refusal(kWrongIndex));
    EXPECT_EQ(askWithFloat({0x50, 9, 0}, 1), refusal(kWrongIndex));
}

TEST_F(FilterCommands, NumberZeroWritesToAllFiltersOfABank) {
    EXPECT_EQ(ask({0x4C, 0, 0x92}), kAcknowledged);
    EXPECT_EQ(ask({0x4B, 1, kFir}), told({0x92}));
    EXPECT_EQ(ask({0x4B, 8, kFir}), told({0x92}));
    EXPECT_EQ(ask({0x4B, 8, 0}), told({0x00}));
}

TEST_F(FilterCommands, CutoffsAreReadBack) {
    EXPECT_EQ(askWithFloat({0x4E, 2, 0}, 0.125F), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x4E, 2, 1}, 0.25F), kAcknowledged);
    EXPECT_EQ(ask({0x4D, 2, 0}), toldFloat(0.125F));
    EXPECT_EQ(ask({0x4D, 2, 1}), toldFloat(0.25F));
    EXPECT_EQ(ask({0x4D, 2, 2}), refusal(kWrongIndex));
    EXPECT_EQ(askWithFloat({0x4E, 2, 2}, 0.1F), refusal(kWrongIndex));
}

TEST_F(FilterCommands, CutoffGoesToTheBankOfTheTypeThatWasWrittenBefore) {
    EXPECT_EQ(ask({0x4C, 2, 0x83}), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x4E, 2, 0}, 0.125F), kAcknowledged);
    EXPECT_EQ(ask({0x4D, 2, kFir}), toldFloat(0.125F));
    EXPECT_EQ(ask({0x4D, 2, 0}), toldFloat(0));
}

TEST_F(FilterCommands, FloatCoefficientIsReadAsSignAndMagnitude) {
    EXPECT_EQ(askWithFloat({0x50, 1, 2}, 1.75F), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x50, 1, kOutput | 3}, -0.5F), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x50, 1, kFir | 2}, 1e6F), kAcknowledged);
    EXPECT_EQ(ask({0x4F, 1, 2}), toldNumber(kOne * 7 / 4));
    EXPECT_EQ(ask({0x4F, 1, kOutput | 3}), toldNumber(kNegative | kOne / 2));
    EXPECT_EQ(ask({0x4F, 1, kFir | 2}), toldNumber(0x7FFFFFFF)) << "the largest there is";
}

TEST_F(FilterCommands, FixedPointCoefficientIsReadBackBitByBit) {
    configure("protocol = 32\n");
    for (const std::uint32_t word : {0U, 1U, kOne, 0x7FFFFFFFU, kNegative, kNegative | 1U, 0xFFFFFFFFU}) {
        EXPECT_EQ(askWithNumber({0x50, 8, kOutput}, word), kAcknowledged);
        EXPECT_EQ(ask({0x4F, 8, kOutput}), toldNumber(word));
    }
}

TEST_F(FilterCommands, CoefficientThatIsNoNumberIsRefused) {
    EXPECT_EQ(askWithFloat({0x50, 1, 0}, std::nanf("")), refusal(kWrongData));
    EXPECT_EQ(askWithFloat({0x50, 1, 0}, -HUGE_VALF), refusal(kWrongData));
    EXPECT_EQ(ask({0x4F, 1, 0}), toldNumber(kOne));
}

TEST_F(FilterCommands, CoefficientsThatDoNotExistAreRefused) {
    EXPECT_EQ(ask({0x4F, 1, 0x0F}), toldNumber(0));
    EXPECT_EQ(ask({0x4F, 1, 0x1E}), toldNumber(0));
    for (const std::uint8_t index : std::initializer_list<std::uint8_t>{0x1F, 0x20, 0x40, 0x90, 0xA0}) {
        EXPECT_EQ(ask({0x4F, 1, index}), refusal(kWrongIndex)) << int{index};
        EXPECT_EQ(askWithFloat({0x50, 1, index}, 1), refusal(kWrongIndex)) << int{index};
    }
}

TEST_F(FilterCommands, MaskIsReadBack) {
    EXPECT_EQ(ask({0x51}), toldNumber(0));
    EXPECT_EQ(askWithNumber({0x52}, 0xA503), kAcknowledged);
    EXPECT_EQ(ask({0x51}), toldNumber(0xA503));
    EXPECT_EQ(askWithNumber({0x52}, 0x10000), refusal(kWrongData));
    EXPECT_EQ(ask({0x51}), toldNumber(0xA503));
}

TEST_F(FilterCommands, FiltersArePartOfTheStoredSettings) {
    EXPECT_EQ(ask({0x4C, 1, 1}), kAcknowledged);
    EXPECT_EQ(askWithFloat({0x50, 1, kOutput}, 0.5F), kAcknowledged);
    EXPECT_EQ(askWithNumber({0x52}, 1), kAcknowledged);
    EXPECT_EQ(ask({0x0A, 3}), kAcknowledged);
    restart();
    EXPECT_EQ(ask({0x51}), toldNumber(0));
    EXPECT_EQ(ask({0x4B, 1, 0}), told({0}));
    EXPECT_EQ(ask({0x09, 3}), kAcknowledged);
    EXPECT_EQ(ask({0x51}), toldNumber(1));
    EXPECT_EQ(ask({0x4F, 1, kOutput}), toldNumber(kOne / 2));
}

TEST_F(FilterCommands, StoringTheFiltersStoresNothingElse) {
    EXPECT_EQ(ask({0x4C, 1, 0x12}), kAcknowledged);
    EXPECT_EQ(ask({0x10, 1, 9}), kAcknowledged) << "a unit number";
    EXPECT_EQ(ask({0x7E, 0, 8}), kAcknowledged);
    restart();
    EXPECT_EQ(ask({0x4B, 1, 0}), told({0x12}));
    EXPECT_EQ(ask({0x0F, 1}), told({0}));
    EXPECT_EQ(ask({0x7E, 9, 0}), refusal(kWrongIndex));
    EXPECT_EQ(ask({0x7E, 0, 9}), refusal(kWrongIndex));
}

}  // namespace
}  // namespace virtual_test
