// The exports of the digital filters against the virtual adapter.
#pragma once

#include <array>
#include <bit>
#include <cstdio>
#include <string>
#include <vector>

#include "filter/dfilter.h"
#include "params/params_bench.h"

namespace torvik::test {

namespace code {
inline constexpr std::uint32_t frequencyOutOfRange = 0x30000064;
}

inline constexpr double unchangedDouble = untouched<double>();

inline std::string hexOf(std::uint32_t word) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%02X %02X %02X %02X", word >> 24, word >> 16 & 0xFF, word >> 8 & 0xFF,
                  word & 0xFF);
    return text.data();
}

inline std::string hexOfFloat(double value) {
    return hexOf(std::bit_cast<std::uint32_t>(static_cast<float>(value)));
}

// An answer with four data bytes.
inline Answer acceptsWord(std::uint8_t command, std::uint32_t word) {
    const auto byte = [word](int place) { return static_cast<std::uint8_t>(word >> (8 * place)); };
    return accepts(command, {byte(3), byte(2), byte(1), byte(0)});
}

inline Answer acceptsFloat(std::uint8_t command, float value) {
    return acceptsWord(command, std::bit_cast<std::uint32_t>(value));
}

class FilterExports : public ParamsBench {
  protected:
    static constexpr double fs = 1000;

    static Answer samplingFrequency(float value = 1000) { return acceptsFloat(0x8A, value); }

    void expectNothingSentAndNoTimePassed() {
        EXPECT_THAT(takeSent(), testing::IsEmpty());
        EXPECT_EQ(clock.elapsed(), std::chrono::milliseconds(0));
    }

    void expectFailure(std::int32_t result, std::uint32_t expected) {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(takeCode(), expected);
    }

    static const Dfilter* designer() { return static_cast<const Dfilter*>(record().filterObject.get()); }
};

}  // namespace torvik::test
