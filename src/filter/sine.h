// The sine for test signals: the compiler turns loops of it into vector instructions, which it cannot do with the C
// library's.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace torvik {

inline constexpr double farthestSineAngle = 1e6;

// Of an angle not farther from 0 than farthestSineAngle, within some units in the last place of the double: by the
// power series of its distance from the nearest multiple of pi.
inline double sine(double angle) {
    constexpr auto series = [] {
        std::array<double, 11> coefficients{};
        double factorial = 1;
        for (std::size_t k = 0; k < coefficients.size(); ++k) {
            coefficients[k] = (k % 2 == 0 ? 1 : -1) / factorial;
            factorial *= static_cast<double>((2 * k + 2) * (2 * k + 3));
        }
        return coefficients;
    }();
    // Adding it rounds to a whole number, the last bit of which is the double's last bit.
    constexpr double rounder = 0x1.8p52;
    constexpr double inversePi = 0x1.45f306dc9c883p-2;
    // Pi in parts so short that their multiples are exact.
    constexpr double part1 = 0x1.921fb544p+1;
    constexpr double part2 = 0x1.0b4611a4p-33;
    constexpr double part3 = 0x1.13198a2e03707p-64;
    const double shifted = angle * inversePi + rounder;
    const double multiple = shifted - rounder;
    const double x = ((angle - multiple * part1) - multiple * part2) - multiple * part3;
    const double square = x * x;
    // Written out and in pairs, so that nothing is left of a loop and steps need not wait for each other.
    const double fourth = square * square;
    const double low = (series[0] + series[1] * square) + (series[2] + series[3] * square) * fourth;
    const double middle = (series[4] + series[5] * square) + (series[6] + series[7] * square) * fourth;
    const double high = (series[8] + series[9] * square) + series[10] * fourth;
    const double eighth = fourth * fourth;
    const double sum = low + (middle + high * eighth) * eighth;
    const std::uint64_t sign = std::bit_cast<std::uint64_t>(shifted) << 63;
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x * sum) ^ sign);
}

}  // namespace torvik
