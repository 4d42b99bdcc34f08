#include <cmath>
#include <numbers>

#include "filter/design_steps.h"
#include "filter/doubled_angle.h"
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

// Each candidate of the Butterworth prototype by order: order n begins at index n * (n - 1). Those above and below the
// real axis are exactly conjugate.
constexpr auto butterworthCandidates = [] {
    std::array<DoubledComplex, static_cast<std::size_t>(highestOrder * (highestOrder + 1))> candidates{};
    std::size_t index = 0;
    for (std::int32_t order = 1; order <= highestOrder; ++order) {
        for (std::int32_t i = 0; i < 2 * order; ++i) {
            const double fromLeft = (order % 2 != 0 ? i : i + 0.5) - order;
            const DoubledComplex opposite = onUnitCircle(Doubled(fromLeft < 0 ? -fromLeft : fromLeft) / order);
            candidates[index++] = fromLeft < 0 ? conjugate(-opposite) : -opposite;
        }
    }
    return candidates;
}();

// The table's numbers have at most twelve decimals, which a double only comes near to.
constexpr Doubled asWritten(double decimals) {
    constexpr double unit = 1e12;
    return Doubled(static_cast<double>(static_cast<std::int64_t>(decimals * unit + (decimals < 0 ? -0.5 : 0.5)))) /
           unit;
}

// Appends the image of each root. What was computed for an equal or a conjugate one is not computed again.
template <class Map>
void appendImages(const DoubledRoots& roots, DoubledRoots& images, Map map) {
    const std::size_t first = images.count;
    for (std::size_t i = 0; i < roots.count; ++i) {
        const DoubledComplex& root = roots.values[i];
        std::size_t j = 0;
        while (j < i && roots.values[j] != root && roots.values[j] != conjugate(root))
            ++j;
        if (j == i) {
            images.add(map(root));
        } else {
            const DoubledComplex& known = images.values[first + j];
            images.add(roots.values[j] == root ? known : conjugate(known));
        }
    }
}

// Keeps candidates of the left half-plane that the pole mask chooses.
class PoleChooser {
  public:
    PoleChooser(const Dfilter& filter, DoubledRoots& poles) : poles_(poles), mask_(filter.poleMask) {}

    void offer(const DoubledComplex& candidate) {
        if (!(candidate.real.high < 0)) return;
        if ((mask_ & 1) != 0) poles_.add(candidate);
        mask_ >>= 1;
    }

  private:
    DoubledRoots& poles_;
    std::uint32_t mask_;
};

void placeBesselPoles(const Dfilter& filter, DoubledRoots& poles) {
    PoleChooser chooser(filter, poles);
    const auto order = static_cast<std::size_t>(filter.order);
    std::size_t index = order * order / 4;
    if (order % 2 != 0) {
        chooser.offer(asWritten(besselPoles[index].real));
        ++index;
    }
    for (std::size_t pair = 0; pair < order / 2; ++pair, ++index) {
        const DoubledComplex pole(asWritten(besselPoles[index].real), asWritten(besselPoles[index].imaginary));
        chooser.offer(pole);
        chooser.offer(conjugate(pole));
    }
}

void placeButterworthPoles(const Dfilter& filter, DoubledRoots& poles) {
    PoleChooser chooser(filter, poles);
    const auto order = static_cast<std::size_t>(filter.order);
    for (const DoubledComplex& candidate : std::span(butterworthCandidates).subspan(order * (order - 1), 2 * order))
        chooser.offer(candidate);
}

// Moves the Butterworth poles from the circle onto an ellipse.
void stretchToChebyshev(Dfilter& filter, DoubledRoots& poles) {
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
    for (DoubledComplex& pole : poles.all())
        pole = {pole.real * std::sinh(y), pole.imaginary * std::cosh(y)};
}

void transformToHighPass(Placement& placement, const Doubled& w1) {
    for (DoubledComplex& pole : placement.sPoles.all()) {
        pole = w1 / pole;
        placement.sZeros.add(0.0);
    }
}

// Each pole becomes two, around the centre frequency. `stop`: the gap and not the band.
void transformToBand(Placement& placement, const Doubled& w1, const Doubled& w2, bool stop) {
    const Doubled centreSquare = w1 * w2;
    const Doubled centre = sqrt(centreSquare);
    const Doubled halfWidth = (w2 - w1) * 0.5;
    DoubledRoots halves;
    DoubledRoots roots;
    appendImages(placement.sPoles, halves,
                 [=](const DoubledComplex& pole) { return stop ? halfWidth / pole : pole * halfWidth; });
    appendImages(halves, roots, [=](const DoubledComplex& half) {
        const DoubledComplex ratio = centre / half;
        return sqrt(1.0 - ratio * ratio);
    });
    const std::size_t count = halves.count;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubledComplex& half = halves.values[i];
        const DoubledComplex first = half * (1.0 + roots.values[i]);
        placement.sPoles.values[i] = first;
        // The difference loses the digits of a pole that is far smaller than the first. Quirk: band passes have it, so
        // that their coefficients and codes stay what they have always been to the last bit.
        placement.sPoles.values[count + i] = stop ? centreSquare / first : half * (1.0 - roots.values[i]);
    }
    placement.sPoles.count = 2 * count;
    for (std::size_t i = 0; i < count; ++i)
        placement.sZeros.add(stop ? DoubledComplex(0.0, centre) : 0.0);
    for (std::size_t i = 0; stop && i < count; ++i)
        placement.sZeros.add({0.0, -centre});
}

// At right angles the tangent of the nearest double counts: a large number, and no infinite one.
Doubled warped(double alpha) {
    const Doubled exact = tangent(alpha);
    return isFinite(exact) ? exact / doubled::pi : std::tan(pi * alpha) / pi;
}

DoubledComplex exponential(Complex p) {
    const double radius = std::exp(p.real());
    return DoubledComplex(Complex(radius * std::cos(p.imag()), radius * std::sin(p.imag())));
}

}  // namespace

void prewarp(const Dfilter& filter, Placement& placement) {
    const bool unwarped = (filter.options & (option::noPrewarp | option::matchedZ)) != 0;
    placement.warpedAlpha1 = unwarped ? filter.alpha1 : warped(filter.alpha1);
    placement.warpedAlpha2 = unwarped ? filter.alpha2 : warped(filter.alpha2);
}

void placePrototypePoles(Dfilter& filter, Placement& placement) {
    if ((filter.options & option::bessel) != 0) placeBesselPoles(filter, placement.sPoles);
    if ((filter.options & (option::butterworth | option::chebyshev)) != 0)
        placeButterworthPoles(filter, placement.sPoles);
    if ((filter.options & option::chebyshev) != 0) stretchToChebyshev(filter, placement.sPoles);
}

void transformPrototype(const Dfilter& filter, Placement& placement) {
    const Doubled w1 = doubled::pi * 2.0 * placement.warpedAlpha1;
    const Doubled w2 = doubled::pi * 2.0 * placement.warpedAlpha2;
    switch (filter.options & option::plainKinds) {
        case option::lowPass:
            for (DoubledComplex& pole : placement.sPoles.all())
                pole = pole * w1;
            break;
        case option::highPass:
            transformToHighPass(placement, w1);
            break;
        default:
            transformToBand(placement, w1, w2, (filter.options & option::bandStop) != 0);
            break;
    }
}

void mapToZPlane(const Dfilter& filter, Placement& placement) {
    const bool matched = (filter.options & option::matchedZ) != 0;
    const auto map = [matched](const DoubledComplex& p) {
        return matched ? exponential(p.rounded()) : (2.0 + p) / (2.0 - p);
    };
    appendImages(placement.sPoles, placement.zPoles, map);
    appendImages(placement.sZeros, placement.zZeros, map);
    while (!matched && placement.zZeros.count < placement.zPoles.count)
        placement.zZeros.add(-1.0);
}

}  // namespace torvik
