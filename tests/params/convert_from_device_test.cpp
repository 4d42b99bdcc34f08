#include "params/convert_from_device.h"

#include <gmock/gmock.h>

#include <array>
#include <bit>
#include <string>
#include <vector>

namespace torvik {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr std::uint8_t before = 0xEE;
constexpr std::array<std::uint8_t, 12> source{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x11, 0x22, 0x33, 0x44};

struct Conversion {
    const char* name;
    std::uint32_t kind;
    std::int32_t length;
    std::vector<std::uint8_t> destination;  // what is written; the bytes behind stay as they were
};

class ConvertFromDevice : public testing::TestWithParam<Conversion> {};

TEST_P(ConvertFromDevice, WritesTheseBytes) {
    std::vector<std::uint8_t> bytes(16, before);
    EXPECT_EQ(convertFromDevice(GetParam().kind, bytes.data(), source.data(), GetParam().length), 1U);
    std::vector<std::uint8_t> expected = GetParam().destination;
    expected.resize(bytes.size(), before);
    EXPECT_THAT(bytes, ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ConvertFromDevice,
    testing::Values(
        Conversion{"Kind0Length1", 0, 1, {0x12}}, Conversion{"Kind0Length9", 0, 9, {0x12}},
        Conversion{"Kind1Length1", 1, 1, {0x12, 0}}, Conversion{"Kind1Length2", 1, 2, {0x12, 0x34}},
        Conversion{"Kind2Length1", 2, 1, {0x12, 0}}, Conversion{"Kind2Length2", 2, 2, {0x34, 0x12}},
        Conversion{"Kind3Length1", 3, 1, {0x12, 0, 0, 0}}, Conversion{"Kind3Length3", 3, 3, {0x12, 0x34, 0x56, 0}},
        Conversion{"Kind3Length4", 3, 4, {0x12, 0x34, 0x56, 0x78}}, Conversion{"Kind4Length1", 4, 1, {0x12, 0, 0, 0}},
        Conversion{"Kind4Length2", 4, 2, {0x34, 0x12, 0, 0}}, Conversion{"Kind4Length3", 4, 3, {0x56, 0x34, 0x12, 0}},
        Conversion{"Kind4Length4", 4, 4, {0x78, 0x56, 0x34, 0x12}}, Conversion{"Kind5Length1", 5, 1, {0x12, 0, 0, 0}},
        Conversion{"Kind5Length2", 5, 2, {0x34, 0x12, 0, 0}},
        Conversion{"Kind5Length4", 5, 4, {0x78, 0x56, 0x34, 0x12}}, Conversion{"Kind6Length1", 6, 1, {0x12}},
        Conversion{"Kind6Length5", 6, 5, {0x9A, 0x78, 0x56, 0x34, 0x12}},
        Conversion{"Kind6Length12", 6, 12, {0x44, 0x33, 0x22, 0x11, 0xF0, 0xDE, 0xBC, 0x9A, 0x78, 0x56, 0x34, 0x12}},
        Conversion{"Kind7Length1", 7, 1, {0, 0, 0, 0x12}}, Conversion{"Kind7Length2", 7, 2, {0, 0, 0x34, 0x12}},
        Conversion{"Kind7Length3", 7, 3, {0, 0x56, 0x34, 0x12}},
        Conversion{"Kind7Length4", 7, 4, {0x78, 0x56, 0x34, 0x12}}, Conversion{"Kind9Length1", 9, 1, {0x12}},
        Conversion{"Kind9Length12", 9, 12, {source.begin(), source.end()}},
        Conversion{"Kind10WithoutAZero", 10, 5, {0x12, 0x34, 0x56, 0x78, 0x9A}},
        Conversion{"Kind11DoesNothing", 11, 4, {}}, Conversion{"Kind255DoesNothing", 255, 4, {}},
        Conversion{"LargestKindDoesNothing", 0xFFFFFFFF, 4, {}}),
    [](const auto& instance) { return instance.param.name; });

std::uint32_t number(std::uint32_t kind, std::int32_t length) {
    std::uint32_t value = 0xEEEEEEEE;
    EXPECT_EQ(convertFromDevice(kind, &value, source.data(), length), 1U);
    return value;
}

TEST(ConvertFromDeviceNumbers, AreRightAlignedForKind4AndLeftAlignedForKind7) {
    EXPECT_EQ(number(4, 2), 0x1234U);
    EXPECT_EQ(number(7, 2), 0x12340000U);
}

double widened(std::vector<std::uint8_t> bytes) {
    double value = 77;
    EXPECT_EQ(convertFromDevice(8, &value, bytes.data(), static_cast<std::int32_t>(bytes.size())), 1U);
    return value;
}

TEST(ConvertFromDeviceFloats, AreWidenedFromTheHighestByteDown) {
    EXPECT_EQ(widened({0x40, 0x20, 0x00, 0x00}), 2.5);
    EXPECT_EQ(widened({0xC0, 0x20, 0x00}), -2.5);
    EXPECT_EQ(widened({0x40, 0x20}), 2.5);
    EXPECT_EQ(widened({0x40}), 2.0);
    EXPECT_EQ(widened({0x00, 0x00, 0x00, 0x01}), 0x1p-149);
}

TEST(ConvertFromDeviceText, EndsBehindItsFirstZero) {
    std::string text = "~~~~~~";
    const std::array<std::uint8_t, 5> bytes{'a', 'b', 0, 'c', 'd'};
    EXPECT_EQ(convertFromDevice(10, text.data(), bytes.data(), 5), 1U);
    EXPECT_EQ(text, std::string("ab\0~~~", 6));
}

struct Refused {
    const char* name;
    std::uint32_t kind;
    std::int32_t length;
};

class RefusedConversion : public testing::TestWithParam<Refused> {};

TEST_P(RefusedConversion, WritesNothing) {
    std::array<std::uint8_t, 16> bytes{};
    EXPECT_EQ(convertFromDevice(GetParam().kind, bytes.data(), source.data(), GetParam().length), 0U);
    EXPECT_THAT(bytes, testing::Each(0));
}

INSTANTIATE_TEST_SUITE_P(Kinds, RefusedConversion,
                         testing::Values(Refused{"Kind0Length0", 0, 0}, Refused{"Kind0LengthMinus1", 0, -1},
                                         Refused{"Kind1Length0", 1, 0}, Refused{"Kind1Length3", 1, 3},
                                         Refused{"Kind2Length3", 2, 3}, Refused{"Kind3Length5", 3, 5},
                                         Refused{"Kind4Length5", 4, 5}, Refused{"Kind5Length5", 5, 5},
                                         Refused{"Kind6Length0", 6, 0}, Refused{"Kind7Length5", 7, 5},
                                         Refused{"Kind8Length5", 8, 5}, Refused{"Kind9LengthMinus1", 9, -1},
                                         Refused{"Kind10Length0", 10, 0}, Refused{"Kind11Length0", 11, 0}),
                         [](const auto& instance) { return instance.param.name; });

TEST(ConvertFromDevicePointers, MustNotBeNull) {
    std::array<std::uint8_t, 16> bytes{};
    for (std::uint32_t kind = 0; kind <= 11; ++kind) {
        EXPECT_EQ(convertFromDevice(kind, nullptr, source.data(), 1), 0U) << kind;
        EXPECT_EQ(convertFromDevice(kind, bytes.data(), nullptr, 1), 0U) << kind;
    }
    EXPECT_THAT(bytes, testing::Each(0));
}

}  // namespace
}  // namespace torvik
