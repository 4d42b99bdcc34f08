// Random numbers that are the same on every system.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace torvik::proof {

class RandomNumbers {
  public:
    explicit RandomNumbers(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = (state_ ^ (state_ >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    std::uint32_t word() { return static_cast<std::uint32_t>(bits() >> 32U); }

    // 0 up to, but not including, `limit`.
    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(bits() % limit); }

    // 0 up to, but not including, 1.
    double fraction() { return static_cast<double>(bits() >> 11U) * 0x1p-53; }

    double between(double low, double high) { return low + (high - low) * fraction(); }

    // Of any magnitude that settings have.
    double usual() {
        const double mantissa = between(-1, 1);
        return std::ldexp(mantissa, static_cast<int>(below(60)) - 30);
    }

    // Any number at all, and no number as well; mostly usual ones.
    double any() {
        const std::uint32_t choice = below(8);
        if (choice == 0) return std::bit_cast<double>(bits());
        // What single precision can only just hold, or not.
        if (choice == 1) {
            const double mantissa = between(-2, 2);
            return std::ldexp(mantissa, below(2) == 0 ? 127 : -149);
        }
        if (choice == 2) return static_cast<double>(static_cast<std::int32_t>(word()));
        return usual();
    }

  private:
    std::uint64_t state_;
};

}  // namespace torvik::proof
