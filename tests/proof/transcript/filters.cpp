// Digital filters: designed, loaded, read back and simulated.
#include <string>

#include "transcript/bench.h"

namespace torvik::proof {

namespace {

using Doubles = std::vector<double>;
using Words = std::vector<std::uint32_t>;

constexpr std::uint32_t bandPass = 2;

void readBack(Run& run, std::uint32_t filterNo, std::uint32_t bank) {
    Transcript& t = run.transcript;
    Words word(1, 0xDEADBEEF);
    Doubles cutoffs(2, -77.25);
    t.call("TORVIKgetDfilterInfo", TORVIKgetDfilterInfo, 1, filterNo, bank, word, cutoffs);
    t.call("TORVIKgetDigiFiltType", TORVIKgetDigiFiltType, 1, filterNo, bank, word);
    Doubles x(5, -77.25);
    Doubles y(4, -77.25);
    t.call("TORVIKgetDfilterCoeff", TORVIKgetDfilterCoeff, 1, filterNo, bank, x, y);
    t.call("TORVIKsetDfilterOnOff", TORVIKsetDfilterOnOff, 1, filterNo, bank, run.random.below(2));
    t.call("TORVIKgetDfilterOnOff", TORVIKgetDfilterOnOff, 1, word);
}

struct Design {
    std::uint32_t kind;
    std::uint32_t characteristic;
    double f1;
    double f2;
};

// Sometimes too low for the device.
Design randomDesign(RandomNumbers& random, double fs) {
    Design design{random.below(4), 1 + random.below(2), fs * random.between(0.002, 0.5), 0};
    if (design.kind >= bandPass) design.f2 = random.between(design.f1, fs / 2);
    return design;
}

bool design(Run& run, std::uint32_t filterNo, const Design& wanted) {
    Transcript& t = run.transcript;
    const std::int32_t result = t.call("TORVIKcalcSetDfilterParams", TORVIKcalcSetDfilterParams, 1, filterNo, 0,
                                       wanted.kind, wanted.characteristic, 4, wanted.f1, wanted.f2);
    Doubles x(5, -77.25);
    Doubles y(4, -77.25);
    t.call("TORVIKgetDfilterCoeff", TORVIKgetDfilterCoeff, 1, -1, 0, x, y);
    return result == 0;
}

void simulate(Run& run, double fs, std::uint32_t number) {
    Transcript& t = run.transcript;
    constexpr int frequencyResponse = 1;
    constexpr int stepResponse = 2;
    const std::string name = std::to_string(number);
    t.call("TORVIKsimulateDfilter", TORVIKsimulateDfilter, 1, frequencyResponse, fs / 250, fs / 2, fs, 60,
           ("frequency-" + name + ".txt").c_str());
    t.call("TORVIKsimulateDfilter", TORVIKsimulateDfilter, 1, stepResponse, 0.0, 1.0, fs, 100,
           ("step-" + name + ".txt").c_str());
}

void recordDesigns(Run& run, double fs, std::uint32_t protocolKind, std::uint32_t& files) {
    openBench(run, amplifier("frequency = " + std::to_string(fs) + "\nprotocol = " + std::to_string(protocolKind)),
              protocolKind == 16 ? kind16 : kind32);
    for (std::uint32_t i = 0; i < 60 * run.size; ++i) {
        const std::uint32_t filterNo = 1 + run.random.below(8);
        const bool designed = design(run, filterNo, randomDesign(run.random, fs));
        readBack(run, filterNo, 0);
        if (designed && i % 12 == 0) simulate(run, fs, files++);
    }
}

// Given coefficients, of IIR and FIR filters.
void recordLoading(Run& run, std::uint32_t protocolKind) {
    constexpr std::uint32_t firBank = 0x80;
    openBench(run, amplifier("protocol = " + std::to_string(protocolKind)), protocolKind == 16 ? kind16 : kind32);
    for (std::uint32_t i = 0; i < 20 * run.size; ++i) {
        RandomNumbers& random = run.random;
        const std::uint32_t order = random.below(5);
        const auto type = static_cast<std::int32_t>(order + 0x10 * random.below(4));
        const std::uint32_t filterNo = 1 + random.below(8);
        Doubles cutoffs{random.between(0, 0.5), random.between(0, 0.5)};
        Doubles x(16);
        Doubles y(16);
        for (double& coefficient : x)
            coefficient = random.any();
        for (double& coefficient : y)
            coefficient = random.any();
        const bool fir = random.below(3) == 0;
        run.transcript.call("TORVIKsetDfilterParams", TORVIKsetDfilterParams, 1, filterNo, fir ? -type : type, cutoffs,
                            x, y);
        readBack(run, filterNo, fir ? firBank : 0);
    }
    run.transcript.call("TORVIKstoreDigitalFilter", TORVIKstoreDigitalFilter, 1, 1, 0);
}

}  // namespace

void recordFilters(Run& run) {
    std::uint32_t files = 0;
    for (const double fs : {1000.0, 123.4, 8192.0}) {
        recordDesigns(run, fs, 16, files);
        recordDesigns(run, fs, 32, files);
    }
    recordLoading(run, 16);
    recordLoading(run, 32);
}

}  // namespace torvik::proof
