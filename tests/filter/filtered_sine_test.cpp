// From end to end: filters designed and loaded through the exports, run by the simulated amplifier on sines that it
// streams, and read through the exports, against the amplitudes that the filters' prototypes have by definition.
#include <cmath>
#include <complex>
#include <numbers>
#include <ostream>
#include <span>

#include "filter/export_bench.h"

namespace torvik::test {
namespace {

constexpr double pi = std::numbers::pi;
constexpr double amplitude = 1000;
constexpr double tolerance = 0.1;  // dB
constexpr std::uint32_t filterNumber = 2;
constexpr std::int32_t settling = 500;  // sets
constexpr std::int32_t measured = 1000;
constexpr std::size_t channels = 5;

// Amplitudes of the prototypes at an analogue frequency, 1 being the cut-off.
double butterworthAmplitude(double frequency, int order) {
    return 1.0 / std::sqrt(1.0 + std::pow(frequency, 2.0 * order));
}

double besselAmplitude(double frequency, int order) {
    // The polynomials of second and fourth order and the frequencies where they are at half power.
    if (order == 2) {
        const std::complex<double> s(0.0, 1.3616541287161305 * frequency);
        return 3.0 / std::abs((s + 3.0) * s + 3.0);
    }
    const std::complex<double> s(0.0, 2.1139176749042157 * frequency);
    return 105.0 / std::abs((((s + 10.0) * s + 45.0) * s + 105.0) * s + 105.0);
}

struct Characteristic {
    const char* name;
    std::uint32_t number;
    double (*amplitude)(double frequency, int order);
};

constexpr Characteristic characteristics[] = {{"Bessel", 1, besselAmplitude}, {"Butterworth", 2, butterworthAmplitude}};

struct Kind {
    const char* name;
    std::uint32_t number;
    int prototypeOrder;
    double f1;
    double f2;
    double reference;  // where the filter is scaled to 1
    std::array<int, 2 * channels> frequencies;
};

// In Hz, at 1000 sets a second.
constexpr Kind filterKinds[] = {
    {"LowPass", 0, 4, 100, 0, 0, {5, 20, 50, 80, 95, 100, 110, 150, 200, 300}},
    {"HighPass", 1, 4, 100, 0, 500, {25, 40, 60, 80, 95, 100, 120, 200, 350, 480}},
    {"BandPass", 2, 2, 100, 200, 150, {20, 50, 80, 100, 120, 150, 180, 200, 250, 400}},
    {"BandStop", 3, 2, 100, 200, 0, {10, 60, 90, 100, 120, 180, 200, 230, 300, 450}},
};

double warped(double frequency) {
    return std::tan(pi * frequency / 1000);
}

// The prototype's frequency that stands for one of the filter.
double prototypeFrequency(const Kind& kind, double frequency) {
    const double w = warped(frequency);
    const double w1 = warped(kind.f1);
    const double w2 = warped(kind.f2);
    const double band = std::abs((w * w - w1 * w2) / (w * (w2 - w1)));
    const double values[] = {w / w1, w1 / w, band, 1.0 / band};
    return values[kind.number];
}

struct Case {
    Characteristic characteristic;
    Kind kind;
    int protocol;
};

void PrintTo(const Case& row, std::ostream* out) {
    *out << row.characteristic.name << row.kind.name << row.protocol;
}

class StreamedSines : public FilterExports, public testing::WithParamInterface<Case> {
  protected:
    // An amplifier with a sine on each channel.
    static void connect(std::span<const int> frequencies) {
        const int protocol = GetParam().protocol;
        TORVIKrelease(0);
        std::string bench =
            "[[amplifier]]\nreset_time_ms = 0\nvalue_type = 'float32'\nunit = 'counts'\nfrequency = 1000\n";
        bench += "protocol = " + std::to_string(protocol) + "\nchannels = " + std::to_string(channels) + "\n";
        for (const int frequency : frequencies) {
            bench += "[[amplifier.signal]]\nwave = 'sine'\namplitude = " + std::to_string(amplitude) +
                     "\nfrequency = " + std::to_string(frequency) + "\n";
        }
        ASSERT_EQ(virtualConfigure(bench.c_str()), 0) << virtualMessage();
        virtualHoldStream(amplifier, 1);
        std::uint32_t count = 0;
        ASSERT_EQ(TORVIKactivateExtended(device, TORVIK_ADAPTER_USB, 1000000, 65534, &count, 0x100, answerId,
                                         protocol == 16 ? TORVIK_FLAG_PROTOCOL_KIND_16 : TORVIK_FLAG_PROTOCOL_KIND_32),
                  0)
            << takeLastError(device).text;
        ASSERT_EQ(count, channels);
    }

    static void loadFilter() {
        const auto& [characteristic, kind, protocol] = GetParam();
        ASSERT_EQ(TORVIKcalcSetDfilterParams(device, filterNumber, 0, kind.number, characteristic.number, 4, kind.f1,
                                             kind.f2),
                  0)
            << takeLastError(device).text;
        ASSERT_EQ(TORVIKsetDfilterOnOff(device, filterNumber, 0, 1), 0) << takeLastError(device).text;
    }

    // What the channels' next sets carry, without those in which a filter settles; set by set.
    static std::vector<double> stream() {
        const auto sets = settling + measured;
        EXPECT_EQ(TORVIKclearDLLbuffer(device), 0);
        EXPECT_EQ(virtualSendSets(amplifier, sets), sets * channels);
        settle();
        std::vector<double> values(sets * channels);
        std::int32_t count = 0;
        EXPECT_EQ(
            TORVIKreadMultiple(device, 0, values.data(), static_cast<std::int32_t>(values.size()), &count, nullptr), 1);
        EXPECT_EQ(static_cast<std::size_t>(count), values.size());
        values.erase(values.begin(), values.begin() + settling * static_cast<std::ptrdiff_t>(channels));
        return values;
    }

    // Of the sine that a channel carries.
    static double amplitudeOf(std::span<const double> values, std::size_t channel, int frequency) {
        std::complex<double> sum = 0;
        for (std::size_t set = 0; set < measured; ++set) {
            const double angle = 2 * pi * frequency * static_cast<double>(set) / 1000;
            sum += values[set * channels + channel] * std::polar(1.0, angle);
        }
        return std::abs(sum) * 2 / measured;
    }

    static double expectedAmplitude(int frequency) {
        const auto& characteristic = GetParam().characteristic;
        const auto& kind = GetParam().kind;
        const auto at = [&](double f) {
            return characteristic.amplitude(prototypeFrequency(kind, f), kind.prototypeOrder);
        };
        return amplitude * at(frequency) / at(kind.reference);
    }

    static double decibels(double ratio) { return 20 * std::log10(ratio); }
};

TEST_P(StreamedSines, HaveTheDesignedAmplitudes) {
    const auto all = std::span(GetParam().kind.frequencies);
    for (const auto frequencies : {all.first<channels>(), all.last<channels>()}) {
        connect(frequencies);
        ASSERT_FALSE(HasFailure());
        const auto unfiltered = stream();
        loadFilter();
        const auto filtered = stream();
        ASSERT_FALSE(HasFailure());
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const int frequency = frequencies[channel];
            EXPECT_NEAR(amplitudeOf(unfiltered, channel, frequency), amplitude, 0.01) << frequency << " Hz";
            const double error = decibels(amplitudeOf(filtered, channel, frequency) / expectedAmplitude(frequency));
            EXPECT_NEAR(error, 0.0, tolerance) << frequency << " Hz";
        }
    }
}

std::vector<Case> everyCase() {
    std::vector<Case> cases;
    for (const Characteristic& characteristic : characteristics) {
        for (const Kind& kind : filterKinds) {
            for (const int protocol : {16, 32})
                cases.push_back({characteristic, kind, protocol});
        }
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Filter, StreamedSines, testing::ValuesIn(everyCase()), [](const auto& row) {
    return row.param.characteristic.name + std::string(row.param.kind.name) + "Kind" +
           std::to_string(row.param.protocol);
});

}  // namespace
}  // namespace torvik::test
