#include "core/wire.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <vector>

namespace torvik {
namespace {

constexpr std::uint32_t positiveInfinity = 0x7F800000;
constexpr std::uint32_t quietBitOfFloat = 0x00400000;

std::uint64_t widenedBits(std::uint32_t bits) {
    return std::bit_cast<std::uint64_t>(widenFloat(bits));
}

std::uint64_t hardwareBits(std::uint32_t bits) {
    return std::bit_cast<std::uint64_t>(static_cast<double>(std::bit_cast<float>(bits)));
}

bool isNan(std::uint32_t bits) {
    return (bits & 0x7FFFFFFF) > positiveInfinity;
}

// All exponents and signs, with the mantissas at which conversions go wrong.
std::vector<std::uint32_t> edgePatterns() {
    std::vector<std::uint32_t> patterns;
    for (std::uint32_t signAndExponent = 0; signAndExponent < 0x200; ++signAndExponent) {
        for (const std::uint32_t mantissa : {0U, 1U, 2U, 3U, 0x3FFFFFU, 0x400000U, 0x400001U, 0x555555U, 0x7FFFFFU})
            patterns.push_back(signAndExponent << 23 | mantissa);
    }
    return patterns;
}

TEST(WidenFloat, AgreesWithTheProcessorAtTheEdgesOfEveryExponent) {
    for (const std::uint32_t bits : edgePatterns()) {
        if (isNan(bits)) continue;
        EXPECT_EQ(widenedBits(bits), hardwareBits(bits)) << std::hex << bits;
    }
}

TEST(WidenFloat, AgreesWithTheProcessorAllOverTheRange) {
    constexpr std::uint32_t step = 4093;  // prime: all low bits take part
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += step) {
        const auto pattern = static_cast<std::uint32_t>(bits);
        if (isNan(pattern)) continue;
        ASSERT_EQ(widenedBits(pattern), hardwareBits(pattern)) << std::hex << pattern;
    }
}

TEST(WidenFloat, AgreesWithTheProcessorForDenormals) {
    for (std::uint32_t mantissa = 1; mantissa < 0x00800000; mantissa += 997) {
        ASSERT_EQ(widenedBits(mantissa), hardwareBits(mantissa)) << std::hex << mantissa;
        ASSERT_EQ(widenedBits(mantissa | 0x80000000), hardwareBits(mantissa | 0x80000000)) << std::hex << mantissa;
    }
}

TEST(WidenFloat, KeepsTheSignOfZero) {
    EXPECT_EQ(widenedBits(0x80000000), 0x8000000000000000U);
    EXPECT_EQ(widenedBits(0x00000000), 0U);
}

TEST(WidenFloat, KeepsInfinities) {
    EXPECT_EQ(widenFloat(positiveInfinity), HUGE_VAL);
    EXPECT_EQ(widenFloat(positiveInfinity | 0x80000000), -HUGE_VAL);
}

TEST(WidenFloat, KeepsTheSignAndPayloadOfAQuietNan) {
    EXPECT_EQ(widenedBits(0x7FC00001), 0x7FF8000020000000U);
    EXPECT_EQ(widenedBits(0xFFC12345), 0xFFF82468A0000000U);
}

TEST(WidenFloat, MakesASignallingNanQuiet) {
    EXPECT_EQ(widenedBits(0x7F800001), 0x7FF8000020000000U);
    EXPECT_EQ(widenedBits(0xFFBFFFFF), 0xFFFFFFFFE0000000U);
    for (const std::uint32_t bits : edgePatterns()) {
        if (!isNan(bits)) continue;
        EXPECT_EQ(widenedBits(bits), widenedBits(bits | quietBitOfFloat)) << std::hex << bits;
    }
}

TEST(BigEndian, TakesTheFirstByteAsTheHighest) {
    constexpr std::array<std::uint8_t, 4> bytes{0x81, 0x23, 0x45, 0x67};
    EXPECT_EQ(readBigEndian16(std::span(bytes).first<2>()), 0x8123);
    EXPECT_EQ(readBigEndian32(bytes), 0x81234567U);
}

TEST(Parameters, AreEmptyAtFirst) {
    EXPECT_TRUE(Parameters().bytes().empty());
}

TEST(Parameters, KeepTheOrderInWhichTheyAreGiven) {
    const Parameters parameters = Parameters().u8(3).u8(0xFF).u8(0);
    const std::vector<std::uint8_t> bytes(parameters.bytes().begin(), parameters.bytes().end());
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{3, 0xFF, 0}));
}

TEST(Parameters, TakeSixBytes) {
    const Parameters parameters = Parameters().u8(1).u8(2).u8(3).u8(4).u8(5).u8(6);
    ASSERT_EQ(parameters.bytes().size(), Parameters::limit);
    EXPECT_EQ(parameters.bytes().back(), 6);
}

TEST(Parameters, PutTheHighestByteFirst) {
    Parameters parameters;
    parameters.u16(0x8123).u32(0x456789AB);
    const std::vector<std::uint8_t> bytes(parameters.bytes().begin(), parameters.bytes().end());
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0x81, 0x23, 0x45, 0x67, 0x89, 0xAB}));
}

TEST(AnswerView, SeesStatusAndData) {
    const AnswerView answer({0x45, 0x07, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC});
    EXPECT_EQ(answer.status(), 0x07);
    EXPECT_EQ(answer.u16(), 0x1234);
    EXPECT_EQ(answer.u32(), 0x12345678U);
    EXPECT_EQ(answer.byte(3), 0x34);
    EXPECT_EQ(answer.data().front(), 0x12);
    EXPECT_EQ(answer.data().back(), 0xBC);
}

TEST(AnswerView, TakesAStatusFrom0x40OnAsARefusal) {
    EXPECT_FALSE(AnswerView({0x40, 0x3F}).refused());
    EXPECT_TRUE(AnswerView({0x40, 0x40}).refused());
    EXPECT_TRUE(AnswerView({0x40, 0xFF}).refused());
}

TEST(AnswerView, OutlivesTheBytesItWasMadeFrom) {
    std::array<std::uint8_t, 8> bytes{0x40, 0x01};
    const AnswerView answer(bytes);
    bytes.fill(0xFF);
    EXPECT_EQ(answer.status(), 0x01);
}

}  // namespace
}  // namespace torvik
