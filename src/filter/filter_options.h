// The option flags of a filter design, named after the command-line switches that its messages speak of.
#pragma once

#include <cstdint>

namespace torvik::option {

inline constexpr std::uint32_t bessel = 0x1;                 // -Be
inline constexpr std::uint32_t butterworth = 0x2;            // -Bu
inline constexpr std::uint32_t chebyshev = 0x4;              // -Ch, with a ripple
inline constexpr std::uint32_t resonator = 0x8;              // -Re, with a Q factor
inline constexpr std::uint32_t proportionalIntegral = 0x10;  // -Pi
inline constexpr std::uint32_t lowPass = 0x20;               // -Lp
inline constexpr std::uint32_t highPass = 0x40;              // -Hp
inline constexpr std::uint32_t bandPass = 0x80;              // -Bp
inline constexpr std::uint32_t bandStop = 0x100;             // -Bs
inline constexpr std::uint32_t allPass = 0x200;              // -Ap, resonator only
inline constexpr std::uint32_t cutoffs = 0x400;              // -a
inline constexpr std::uint32_t order = 0x1000;               // -o
inline constexpr std::uint32_t poleMask = 0x2000;            // -p
inline constexpr std::uint32_t noPrewarp = 0x4000;           // -w
inline constexpr std::uint32_t matchedZ = 0x8000;            // -z
inline constexpr std::uint32_t extraZeros = 0x10000;         // -Z

inline constexpr std::uint32_t prototypes = bessel | butterworth | chebyshev | resonator | proportionalIntegral;
inline constexpr std::uint32_t plainKinds = lowPass | highPass | bandPass | bandStop;
inline constexpr std::uint32_t bandKinds = bandPass | bandStop;

}  // namespace torvik::option
