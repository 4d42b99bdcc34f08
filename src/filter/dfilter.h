// A device's digital filter: its design and the buffers of the response simulation. Pure: no device, no lock.
#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>

#include "core/filter_object.h"

namespace torvik {

inline constexpr std::size_t maxPoleZero = 30;
inline constexpr std::size_t maxFirCoefficients = 26;
inline constexpr std::size_t samplesPerRun = 1000;

using Complex = std::complex<double>;

// Poles or zeros.
struct Roots {
    std::array<Complex, maxPoleZero> values{};
    std::size_t count = 0;

    void add(Complex root) { values[count++] = root; }
};

// The codes that a design leaves.
namespace filter_error {
inline constexpr std::uint32_t none = 0;
inline constexpr std::uint32_t noDesign = 0x30000201;
inline constexpr std::uint32_t wrongArguments = 0x30000202;
inline constexpr std::uint32_t notConverged = 0x30000203;
inline constexpr std::uint32_t wrongRipple = 0x30000204;
inline constexpr std::uint32_t chebyshevBug = 0x30000205;
inline constexpr std::uint32_t tooManyZeros = 0x30000206;
inline constexpr std::uint32_t complexCoefficient = 0x30000207;
inline constexpr std::uint32_t coefficientsTooLarge = 0x30000208;
inline constexpr std::uint32_t gainTooLarge = 0x30000209;
}  // namespace filter_error

class Dfilter final : public FilterObject {
  public:
    // After a successful design: what is loaded into a device.
    std::array<double, maxPoleZero + 1> xCoefficients{};
    std::array<double, maxPoleZero + 1> yCoefficients{};
    // Read by the simulation; nothing in the library writes them.
    std::array<double, maxFirCoefficients> firCoefficients{};
    double gain = 0;  // magnitude at the reference frequency
    std::array<char, 256> message{};
    bool firValid = false;
    bool iirValid = false;
    std::uint32_t errorCode = filter_error::noDesign;
    double firCutoff = 0;  // printed in headings only
    Roots sPoles;
    Roots sZeros;
    Roots zPoles;
    Roots zZeros;
    bool floatSimulation = false;
    std::int32_t order = 0;
    // Cut-offs and extra zeros as fractions of the sampling frequency.
    double alpha1 = 0;
    double alpha2 = 0;
    double alphaZ = 0;
    Complex dcGain;
    Complex centreGain;
    Complex hfGain;
    std::uint32_t options = 0;
    double warpedAlpha1 = 0;
    double warpedAlpha2 = 0;
    double chebyshevRipple = 0;  // dB
    double qFactor = 0;
    std::uint32_t poleMask = 0;
    // Before the division by the gain; rawY[number of poles] is -1.
    std::array<double, maxPoleZero + 1> rawX{};
    std::array<double, maxPoleZero + 1> rawY{};
    double stepLevelBefore = 0;  // full scale is 1
    double stepLevelAfter = 0;
    bool optionsOk = false;
    // The first half is the input, the second the output.
    std::array<float, 2 * samplesPerRun> floatSamples{};
    std::array<std::int32_t, 2 * samplesPerRun> fixedSamples{};
};

}  // namespace torvik
