#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "core/wire.h"
#include "support/seed.h"

namespace torvik {
namespace {

// What the processor makes of it in its usual rounding.
std::uint32_t hardwareBits(double value) {
    const volatile double source = value;
    return std::bit_cast<std::uint32_t>(static_cast<float>(source));
}

std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

bool isNan(std::uint64_t bits) {
    return (bits & 0x7FFFFFFFFFFFFFFF) > 0x7FF0000000000000;
}

void expectAgreement(std::uint64_t bits) {
    if (isNan(bits)) return;
    const auto value = std::bit_cast<double>(bits);
    EXPECT_EQ(narrowToFloat(value), hardwareBits(value)) << std::hexfloat << value;
}

// Both signs of a double and its neighbours.
void expectAgreementAround(double value) {
    for (const double neighbour : {value, std::nextafter(value, 0.0), std::nextafter(value, HUGE_VAL)}) {
        expectAgreement(bitsOf(neighbour));
        expectAgreement(bitsOf(-neighbour));
    }
}

TEST(NarrowToFloat, AgreesWithTheProcessorAtEveryFloatsMidpoints) {
    // Ties go to the even float; the doubles next to them do not.
    for (std::uint32_t exponent = 0; exponent < 0xFF; ++exponent) {
        for (const std::uint32_t mantissa : {0U, 1U, 2U, 3U, 0x3FFFFFU, 0x400000U, 0x7FFFFEU, 0x7FFFFFU}) {
            const std::uint32_t bits = exponent << 23 | mantissa;
            const double lower = widenFloat(bits);
            // The successor of the largest float would be 2^128.
            const double upper = bits == 0x7F7FFFFF ? 0x1p128 : widenFloat(bits + 1);
            expectAgreementAround(lower);
            expectAgreementAround(lower + (upper - lower) / 2);
        }
    }
}

TEST(NarrowToFloat, AgreesWithTheProcessorAtTheEdgesOfEveryExponent) {
    for (std::uint64_t signAndExponent = 0; signAndExponent < 0x1000; ++signAndExponent) {
        for (const std::uint64_t mantissa :
             {0x0ULL, 0x1ULL, 0xFFFFFFFULL, 0x10000000ULL, 0x10000001ULL, 0x1FFFFFFFULL, 0x20000000ULL, 0x30000000ULL,
              0x8000000000000ULL, 0xFFFFFEFFFFFFFULL, 0xFFFFFF0000000ULL, 0xFFFFFFFFFFFFFULL})
            expectAgreement(signAndExponent << 52 | mantissa);
    }
}

TEST(NarrowToFloat, AgreesWithTheProcessorForArbitraryBits) {
    std::mt19937_64 random(test::seed());
    for (int i = 0; i < 2'000'000; ++i) {
        const std::uint64_t bits = random();
        if (isNan(bits)) continue;
        const auto value = std::bit_cast<double>(bits);
        ASSERT_EQ(narrowToFloat(value), hardwareBits(value)) << std::hexfloat << value << "; " << test::replay();
    }
}

TEST(NarrowToFloat, AgreesWithTheProcessorForArbitraryBitsWithinTheRangeOfFloats) {
    std::mt19937_64 random(~test::seed());
    // From below half the smallest denormal to above the largest float.
    std::uniform_int_distribution<std::uint64_t> exponents(1023 - 152, 1023 + 128);
    for (int i = 0; i < 2'000'000; ++i) {
        const std::uint64_t bits = (random() & 0x800FFFFFFFFFFFFF) | exponents(random) << 52;
        const auto value = std::bit_cast<double>(bits);
        ASSERT_EQ(narrowToFloat(value), hardwareBits(value)) << std::hexfloat << value << "; " << test::replay();
    }
}

TEST(NarrowToFloat, KeepsEveryFloat) {
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += 2039) {
        const auto pattern = static_cast<std::uint32_t>(bits);
        if ((pattern & 0x7FFFFFFF) > 0x7F800000) continue;
        ASSERT_EQ(narrowToFloat(widenFloat(pattern)), pattern) << std::hex << pattern;
    }
}

TEST(NarrowToFloat, RoundsTiesToTheEvenFloat) {
    EXPECT_EQ(narrowToFloat(1.0 + 0x1p-24), 0x3F800000U);
    EXPECT_EQ(narrowToFloat(1.0 + 0x3p-24), 0x3F800002U);
}

TEST(NarrowToFloat, RoundsDenormalsAndWhatIsSmaller) {
    EXPECT_EQ(narrowToFloat(0x1p-149), 1U);
    EXPECT_EQ(narrowToFloat(0x1p-150), 0U);
    EXPECT_EQ(narrowToFloat(std::nextafter(0x1p-150, 1.0)), 1U);
    EXPECT_EQ(narrowToFloat(-0x3p-150), 0x80000002U);
    EXPECT_EQ(narrowToFloat(-std::numeric_limits<double>::denorm_min()), 0x80000000U);
    EXPECT_EQ(narrowToFloat(-0.0), 0x80000000U);
}

TEST(NarrowToFloat, BecomesInfinityWhereTheLargestFloatEnds) {
    constexpr double end = 0x1.FFFFFFp127;  // half a step above the largest float
    EXPECT_EQ(narrowToFloat(std::nextafter(end, 0.0)), 0x7F7FFFFFU);
    EXPECT_EQ(narrowToFloat(end), 0x7F800000U);
    EXPECT_EQ(narrowToFloat(-1e300), 0xFF800000U);
    EXPECT_EQ(narrowToFloat(HUGE_VAL), 0x7F800000U);
}

TEST(NarrowToFloat, KeepsTheSignAndTheUpperPayloadOfANan) {
    for (const std::uint64_t bits : {0x7FF8000000000000ULL, 0xFFF8000000000000ULL, 0x7FF8000020000000ULL,
                                     0xFFFA2468A0000000ULL, 0x7FF800001FFFFFFFULL}) {
        const auto value = std::bit_cast<double>(bits);
        EXPECT_EQ(narrowToFloat(value), hardwareBits(value)) << std::hex << bits;
    }
}

TEST(NarrowToFloat, MakesASignallingNanQuiet) {
    EXPECT_EQ(narrowToFloat(std::bit_cast<double>(0x7FF0000000000001ULL)), 0x7FC00000U);
    EXPECT_EQ(narrowToFloat(std::bit_cast<double>(0xFFF0000020000000ULL)), 0xFFC00001U);
}

}  // namespace
}  // namespace torvik
