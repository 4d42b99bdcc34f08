#include <array>

#include "error_meanings.h"

namespace torvik::tool {

namespace {

constexpr std::string_view notByDevices =
    "design a Bessel or Butterworth filter: no function of the library designs another one";

constexpr auto textlessRows = std::to_array<TextlessMeaning>({
    {0x30, false, "arguments of a command refused",
     "a command was refused before it was sent: the device number is above 39 or there are too many parameters",
     "use a device number of 1..39"},
    {0x30000201, false, "no filter designed", "there is no valid filter design to be told or simulated",
     "design a filter first; the last design may have failed"},
    {0x30000202, false, "filter options or arguments refused",
     "the options of a design contradict each other, its order is out of range, or a response file was asked for with "
     "too few points or frequencies above the sampling frequency",
     "ask for 20 points of a step or more, and for frequencies up to half the sampling frequency"},
    {0x30000203, false, "filter design not converged", "the poles of a resonator could not be placed", notByDevices},
    {0x30000204, false, "ripple refused", "the ripple of a Chebyshev filter is not below 0 dB", notByDevices},
    {0x30000205, false, "ripple without result", "the ripple of a Chebyshev filter gives no usable poles",
     notByDevices},
    {0x30000206, false, "too many zeros", "extra zeros would be more than the filter has room for", notByDevices},
    {0x30000207, false, "coefficient not real",
     "the poles and zeros do not multiply out to real coefficients: the cut-off frequencies make no filter, or lie so "
     "low that the arithmetic cannot tell",
     "give cut-off frequencies above 0 and below half the sampling frequency, the lower one first"},
    {0x30000208, false, "coefficients too large",
     "the sum of the coefficients' magnitudes is 64 or more, which devices cannot hold: a cut-off frequency is too "
     "low, "
     "or above half the sampling frequency",
     "choose cut-off frequencies higher than this, but below half the sampling frequency"},
    {0x30000209, false, "gain too large",
     "the gain that the coefficients are divided by is above 3200: the cut-off frequency is too low for the sampling "
     "frequency",
     "choose a higher cut-off frequency or a lower sampling frequency"},
    {0x20000000, true, "calibration file not readable",
     "the calibration file, or the matrix file beside it, could not be read: the low 16 bits are the system's own "
     "error code (2: there is no such file)",
     "check the path and the right to read the file"},
    {0x31000000, true, "response file not writable",
     "the file of a filter's response could not be written: the low bits are the system's own error code (2: there is "
     "no such folder, 13 on Linux and 5 on Windows: no right to write there)",
     "check the path, the right to write there, and the disk for free space"},
});

}  // namespace

std::span<const TextlessMeaning> textlessMeanings() {
    return textlessRows;
}

}  // namespace torvik::tool
