// Designed filters against the amplitudes that their prototypes have by definition, at many frequencies.
#include <vector>

#include "filter/filter_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;

constexpr double ripple = -1.5;  // dB

// Amplitude of a prototype at an analogue frequency, 1 being its cut-off.
double butterworthAmplitude(double frequency, int order) {
    return 1.0 / std::sqrt(1.0 + std::pow(frequency, 2.0 * order));
}

double chebyshevPolynomial(double x, int order) {
    const double magnitude =
        std::abs(x) <= 1.0 ? std::cos(order * std::acos(x)) : std::cosh(order * std::acosh(std::abs(x)));
    return magnitude;
}

// As far as it depends on the frequency: designs are scaled to 1 at their reference frequency.
double chebyshevAmplitude(double frequency, int order) {
    const double epsilonSquared = std::pow(10.0, -ripple / 10.0) - 1.0;
    const double polynomial = chebyshevPolynomial(frequency, order);
    const double atReference = chebyshevPolynomial(0.0, order);
    return std::sqrt((1.0 + epsilonSquared * atReference * atReference) /
                     (1.0 + epsilonSquared * polynomial * polynomial));
}

// From the recurrence of the reverse Bessel polynomials; the cut-off is where the amplitude is at half power.
std::complex<double> besselPolynomial(std::complex<double> s, int order) {
    std::complex<double> before = 1.0;
    std::complex<double> polynomial = s + 1.0;
    for (int n = 2; n <= order; ++n) {
        const std::complex<double> next = (2.0 * n - 1.0) * polynomial + s * s * before;
        before = polynomial;
        polynomial = next;
    }
    return polynomial;
}

double unscaledBesselAmplitude(double frequency, int order) {
    return std::abs(besselPolynomial(0.0, order) / besselPolynomial({0.0, frequency}, order));
}

double besselAmplitude(double frequency, int order) {
    double low = 0;
    double high = 10;
    for (int i = 0; i < 60; ++i) {
        const double middle = 0.5 * (low + high);
        (unscaledBesselAmplitude(middle, order) > halfPower ? low : high) = middle;
    }
    return unscaledBesselAmplitude(frequency * low, order);
}

struct Prototype {
    const char* name;
    std::uint32_t option;
    double (*amplitude)(double frequency, int order);
    int highestOrder;
    double tolerance;
};

constexpr Prototype prototypeTable[] = {
    {"Bessel", bessel, besselAmplitude, 10, 1e-8},
    {"Butterworth", butterworth, butterworthAmplitude, 15, 1e-8},
    {"Chebyshev", chebyshev, chebyshevAmplitude, 15, 1e-8},
};

// Where a kind of filter has the prototype's amplitude at an analogue frequency w.
double lowPassFrequency(double w, double w1, double) {
    return w / w1;
}
double highPassFrequency(double w, double w1, double) {
    return w1 / w;
}
double bandPassFrequency(double w, double w1, double w2) {
    return std::abs((w * w - w1 * w2) / (w * (w2 - w1)));
}
double bandStopFrequency(double w, double w1, double w2) {
    return 1.0 / bandPassFrequency(w, w1, w2);
}

struct Kind {
    const char* name;
    std::uint32_t option;
    double (*prototypeFrequency)(double w, double w1, double w2);
    // Wide enough that every order stays within the limits of the devices.
    double alpha1;
    double alpha2;
    int highestOrder;
};

constexpr Kind kindTable[] = {
    {"LowPass", lowPass, lowPassFrequency, 0.25, 0.25, 6},
    {"HighPass", highPass, highPassFrequency, 0.2, 0.2, 6},
    {"BandPass", bandPass, bandPassFrequency, 0.1, 0.35, 4},
    {"BandStop", bandStop, bandStopFrequency, 0.15, 0.3, 4},
};

struct Case {
    Prototype prototype;
    Kind kind;
};

void PrintTo(const Case& design, std::ostream* out) {
    *out << design.prototype.name << design.kind.name;
}

class EveryPrototypeAndKind : public FilterTest, public testing::WithParamInterface<Case> {
  protected:
    Design ofOrder(int order) {
        const auto& [prototype, kind] = GetParam();
        return {prototype.option | kind.option | given, order, kind.alpha1, kind.alpha2, {.chebyshevRipple = ripple}};
    }

    double expectedAmplitude(double alpha, int order) {
        const auto& prototype = GetParam().prototype;
        const auto& kind = GetParam().kind;
        const auto unscaled = [&](double at) {
            const double w = kind.prototypeFrequency(warped(at), warped(kind.alpha1), warped(kind.alpha2));
            return prototype.amplitude(w, order);
        };
        // Only a band pass is scaled where its prototype's amplitude is not the one at frequency 0.
        const double reference = kind.option == bandPass ? unscaled((kind.alpha1 + kind.alpha2) / 2) : 1.0;
        return unscaled(alpha) / reference;
    }

    int highestOrder() { return std::min(GetParam().prototype.highestOrder, GetParam().kind.highestOrder); }
    double tolerance() { return GetParam().prototype.tolerance; }
};

TEST_P(EveryPrototypeAndKind, HasThePrototypesAmplitudes) {
    for (int order = 1; order <= highestOrder(); ++order) {
        make(ofOrder(order));
        for (double alpha = 0.007; alpha < 0.5; alpha += 0.013) {
            EXPECT_NEAR(amplitudeAt(filter, alpha), expectedAmplitude(alpha, order), tolerance())
                << "order " << order << " at " << alpha;
        }
    }
}

TEST_P(EveryPrototypeAndKind, IsStable) {
    for (int order = 1; order <= highestOrder(); ++order) {
        make(ofOrder(order));
        EXPECT_LT(largestPoleRadius(filter), 1.0) << "order " << order;
    }
}

TEST_P(EveryPrototypeAndKind, HasAsManyPolesAsZerosTwiceAsManyForBands) {
    const bool band = (GetParam().kind.option & bandKinds) != 0;
    for (int order = 1; order <= highestOrder(); ++order) {
        make(ofOrder(order));
        const auto expected = static_cast<std::size_t>(band ? 2 * order : order);
        EXPECT_EQ(filter.zPoles.count, expected);
        EXPECT_EQ(filter.zZeros.count, expected);
        EXPECT_EQ(static_cast<std::size_t>(filter.order), expected);
    }
}

TEST_P(EveryPrototypeAndKind, DividesOnlyTheInputCoefficientsByTheGain) {
    make(ofOrder(3));
    for (std::size_t i = 0; i <= filter.zZeros.count; ++i)
        EXPECT_DOUBLE_EQ(filter.xCoefficients[i], filter.rawX[i] / filter.gain);
    for (std::size_t i = 0; i < filter.zPoles.count; ++i)
        EXPECT_EQ(filter.yCoefficients[i], filter.rawY[i]);
    EXPECT_EQ(filter.rawY[filter.zPoles.count], -1.0);
}

std::vector<Case> everyCase() {
    std::vector<Case> cases;
    for (const Prototype& prototype : prototypeTable) {
        for (const Kind& kind : kindTable)
            cases.push_back({prototype, kind});
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Filter, EveryPrototypeAndKind, testing::ValuesIn(everyCase()), [](const auto& instance) {
    return std::string(instance.param.prototype.name) + instance.param.kind.name;
});

// Cut-offs over the whole axis: whatever design succeeds is stable and has its gain and its cut-offs where they belong.
class CutoffSweep : public FilterTest {
  protected:
    // Below this distance from both ends of the axis, the rounding of the coefficients themselves shows.
    static constexpr double accurate = 0.004;

    template <class Check>
    void forEachDesign(std::uint32_t prototype, double lowest, Check check) {
        std::vector<double> alphas;
        for (double alpha = lowest; alpha < 0.25; alpha *= 1.35)
            alphas.insert(alphas.end(), {alpha, 0.5 - alpha});
        int succeeded = 0;
        for (const double alpha1 : alphas) {
            for (const double alpha2 : alphas) {
                for (const std::uint32_t kind : {lowPass, highPass, bandPass, bandStop}) {
                    const bool band = (kind & bandKinds) != 0;
                    if (!(band ? alpha1 < alpha2 : alpha1 == alpha2)) continue;
                    const Design design{prototype | kind | given, band ? 2 : 4, alpha1, alpha2};
                    if (run(filter, design) != filter_error::none) continue;
                    ++succeeded;
                    SCOPED_TRACE(testing::Message() << std::hex << kind << ": " << alpha1 << " " << alpha2);
                    check(kind, alpha1, alpha2);
                }
            }
        }
        EXPECT_GT(succeeded, 300);
    }
};

TEST_F(CutoffSweep, GivesStableFilters) {
    for (const std::uint32_t prototype : {bessel, butterworth})
        forEachDesign(prototype, 0.0001, [this](auto...) { EXPECT_LT(largestPoleRadius(filter), 1.0); });
}

TEST_F(CutoffSweep, GivesGainOneAtTheReferenceFrequency) {
    for (const std::uint32_t prototype : {bessel, butterworth}) {
        forEachDesign(prototype, accurate, [this](std::uint32_t kind, double alpha1, double alpha2) {
            const double expected = kind == bandStop ? amplitudeAt(filter, 0) * amplitudeAt(filter, 0.5)
                                                     : amplitudeAt(filter, kind == lowPass    ? 0
                                                                           : kind == highPass ? 0.5
                                                                                              : (alpha1 + alpha2) / 2);
            EXPECT_NEAR(expected, 1.0, 1e-6);
        });
    }
}

TEST_F(CutoffSweep, PutsButterworthCutoffsAtHalfPower) {
    forEachDesign(butterworth, accurate, [this](std::uint32_t kind, double alpha1, double alpha2) {
        if ((kind & bandKinds) == 0) {
            EXPECT_NEAR(amplitudeAt(filter, alpha1), halfPower, 1e-6);
            return;
        }
        // Bands are scaled at the middle of their cut-offs or at both ends, where they need not be at their highest.
        EXPECT_NEAR(amplitudeAt(filter, alpha1) / amplitudeAt(filter, alpha2), 1.0, 1e-6);
    });
}

// Cut-offs that leave only one end of the axis where the polynomials have any digits.
class BandStopAtAnEnd : public FilterTest {
  protected:
    void expectGainOneAt(double alpha, const Design& design) {
        SCOPED_TRACE(testing::Message() << design.alpha1 << " " << design.alpha2);
        make(design);
        EXPECT_NEAR(amplitudeAt(filter, alpha), 1.0, 1e-12);
        EXPECT_EQ(std::abs(filter.dcGain), filter.gain);
        EXPECT_EQ(std::abs(filter.hfGain), filter.gain);
    }
};

TEST_F(BandStopAtAnEnd, UpperCutoffHalfTheSamplingFrequency_AtZero_HasGainOne) {
    for (const std::uint32_t prototype : {bessel, butterworth}) {
        for (const double alpha2 : {0.5, std::nextafter(0.5, 0), 0.5 - 1e-15, 0.5 - 1e-12}) {
            for (const double alpha1 : {0.05, 0.1, 0.25, 0.45})
                expectGainOneAt(0, bandStopOf(prototype, 2, alpha1, alpha2));
        }
    }
}

TEST_F(BandStopAtAnEnd, VeryLowCentre_AtHalfTheSamplingFrequency_HasGainOne) {
    for (const std::uint32_t prototype : {bessel, butterworth}) {
        for (const double alpha1 : {3e-7, 1e-8, 1e-10, 1e-16, 1e-40, 1e-300})
            expectGainOneAt(0.5, bandStopOf(prototype, 2, alpha1, 2 * alpha1));
        expectGainOneAt(0.5, bandStopOf(prototype, 2, 1e-300, 0.2));
    }
}

}  // namespace
}  // namespace torvik::test
