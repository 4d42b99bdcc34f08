#include <cmath>
#include <numbers>

#include "filter/design_steps.h"
#include "filter/filter_options.h"
#include "filter/text_buffer.h"

namespace torvik {

namespace {

using std::numbers::pi;

struct BesselPole {
    double real;
    double imaginary;
};

// For each order n from 1 to 10 the poles with a non-negative imaginary part (for odd n the real one first), scaled so
// that the gain at frequency 1 is -3.01 dB; order n begins at index n * n / 4.
constexpr BesselPole besselPoles[] = {
    {-1.0, 0.0},
    {-1.10160133059, 0.636009824757},
    {-1.32267579991, 0.0},
    {-1.04740916101, 0.999264436281},
    {-1.37006783055, 0.410249717494},
    {-0.99520876435, 1.25710573945},
    {-1.50231627145, 0.0},
    {-1.38087732586, 0.717909587627},
    {-0.957676548563, 1.47112432073},
    {-1.57149040362, 0.320896374221},
    {-1.3818580976, 0.971471890712},
    {-0.930656522947, 1.66186326894},
    {-1.68436817927, 0.0},
    {-1.61203876622, 0.589244506931},
    {-1.3789032168, 1.1915667778},
    {-0.909867780623, 1.83645135304},
    {-1.7574084004, 0.272867575103},
    {-1.63693941813, 0.822795625139},
    {-1.37384121764, 1.38835657588},
    {-0.892869718847, 1.99832584364},
    {-1.85660050123, 0.0},
    {-1.80717053496, 0.512383730575},
    {-1.65239648458, 1.03138956698},
    {-1.36758830979, 1.56773371224},
    {-0.878399276161, 2.14980052431},
    {-1.92761969145, 0.241623471082},
    {-1.84219624443, 0.727257597722},
    {-1.6618102414, 1.22110021857},
    {-1.36069227838, 1.73350574267},
    {-0.865756901707, 2.29260483098},
};

// Keeps candidates of the left half-plane that the pole mask chooses.
class PoleChooser {
  public:
    explicit PoleChooser(Dfilter& filter) : filter_(filter), mask_(filter.poleMask) {}

    void offer(Complex candidate) {
        if (!(candidate.real() < 0)) return;
        if ((mask_ & 1) != 0) filter_.sPoles.add(candidate);
        mask_ >>= 1;
    }

  private:
    Dfilter& filter_;
    std::uint32_t mask_;
};

void placeBesselPoles(Dfilter& filter) {
    PoleChooser chooser(filter);
    const auto order = static_cast<std::size_t>(filter.order);
    std::size_t index = order * order / 4;
    if (order % 2 != 0) {
        chooser.offer({besselPoles[index].real, besselPoles[index].imaginary});
        ++index;
    }
    for (std::size_t pair = 0; pair < order / 2; ++pair, ++index) {
        const Complex pole(besselPoles[index].real, besselPoles[index].imaginary);
        chooser.offer(pole);
        chooser.offer(std::conj(pole));
    }
}

void placeButterworthPoles(Dfilter& filter) {
    PoleChooser chooser(filter);
    for (std::int32_t i = 0; i < 2 * filter.order; ++i) {
        const double theta = (filter.order % 2 != 0 ? i : i + 0.5) * pi / filter.order;
        chooser.offer(onUnitCircle(theta));
    }
}

// Moves the Butterworth poles from the circle onto an ellipse.
void stretchToChebyshev(Dfilter& filter) {
    TextBuffer message(std::span(filter.message).first(filter.message.size() - 1));
    if (!(filter.chebyshevRipple < 0)) {
        fail(filter, filter_error::wrongRipple);
        message.text("mkfilter: Chebyshev ripple is ").general(filter.chebyshevRipple).text(" dB; must be < 0.0");
        return;
    }
    const double rippleRatio = std::pow(10.0, -filter.chebyshevRipple / 10.0);
    const double epsilon = std::sqrt(rippleRatio - 1.0);
    const double y = std::asinh(1.0 / epsilon) / filter.order;
    if (!(y > 0)) {
        fail(filter, filter_error::chebyshevBug);
        message.text("mkfilter: bug: Chebyshev y=").general(y).text("; must be > 0.0\n");
        return;
    }
    for (std::size_t i = 0; i < filter.sPoles.count; ++i) {
        Complex& pole = filter.sPoles.values[i];
        pole = {pole.real() * std::sinh(y), pole.imag() * std::cosh(y)};
    }
}

void transformToHighPass(Dfilter& filter, double w1) {
    for (std::size_t i = 0; i < filter.sPoles.count; ++i) {
        filter.sPoles.values[i] = w1 / filter.sPoles.values[i];
        filter.sZeros.add(0.0);
    }
}

// Each pole becomes two, around the centre frequency. `stop`: the gap and not the band.
void transformToBand(Dfilter& filter, double w1, double w2, bool stop) {
    const double centre = std::sqrt(w1 * w2);
    const double width = w2 - w1;
    const std::size_t count = filter.sPoles.count;
    for (std::size_t i = 0; i < count; ++i) {
        const Complex pole = filter.sPoles.values[i];
        const Complex half = stop ? 0.5 * width / pole : 0.5 * pole * width;
        const Complex ratio = centre / half;
        const Complex root = std::sqrt(1.0 - ratio * ratio);
        filter.sPoles.values[i] = half * (1.0 + root);
        filter.sPoles.values[count + i] = half * (1.0 - root);
    }
    filter.sPoles.count = 2 * count;
    for (std::size_t i = 0; i < count; ++i)
        filter.sZeros.add(stop ? Complex(0.0, centre) : Complex());
    for (std::size_t i = 0; stop && i < count; ++i)
        filter.sZeros.add(Complex(0.0, -centre));
}

}  // namespace

Complex onUnitCircle(double angle) {
    return {std::cos(angle), std::sin(angle)};
}

void prewarp(Dfilter& filter) {
    const bool unwarped = (filter.options & (option::noPrewarp | option::matchedZ)) != 0;
    filter.warpedAlpha1 = unwarped ? filter.alpha1 : std::tan(pi * filter.alpha1) / pi;
    filter.warpedAlpha2 = unwarped ? filter.alpha2 : std::tan(pi * filter.alpha2) / pi;
}

void placePrototypePoles(Dfilter& filter) {
    if ((filter.options & option::bessel) != 0) placeBesselPoles(filter);
    if ((filter.options & (option::butterworth | option::chebyshev)) != 0) placeButterworthPoles(filter);
    if ((filter.options & option::chebyshev) != 0) stretchToChebyshev(filter);
}

void transformPrototype(Dfilter& filter) {
    const double w1 = 2.0 * pi * filter.warpedAlpha1;
    const double w2 = 2.0 * pi * filter.warpedAlpha2;
    switch (filter.options & option::plainKinds) {
        case option::lowPass:
            for (std::size_t i = 0; i < filter.sPoles.count; ++i)
                filter.sPoles.values[i] *= w1;
            break;
        case option::highPass:
            transformToHighPass(filter, w1);
            break;
        default:
            transformToBand(filter, w1, w2, (filter.options & option::bandStop) != 0);
            break;
    }
}

void mapToZPlane(Dfilter& filter) {
    const bool matched = (filter.options & option::matchedZ) != 0;
    const auto map = [matched](Complex p) {
        return matched ? std::exp(p.real()) * onUnitCircle(p.imag()) : (2.0 + p) / (2.0 - p);
    };
    for (std::size_t i = 0; i < filter.sPoles.count; ++i)
        filter.zPoles.add(map(filter.sPoles.values[i]));
    for (std::size_t i = 0; i < filter.sZeros.count; ++i)
        filter.zZeros.add(map(filter.sZeros.values[i]));
    while (!matched && filter.zZeros.count < filter.zPoles.count)
        filter.zZeros.add(-1.0);
}

}  // namespace torvik
