#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "api/TORVIK.h"
#include "api/device_call.h"
#include "core/call_control.h"
#include "filter/dfilter.h"
#include "filter/filter_design.h"
#include "filter/filter_options.h"
#include "filter/response_files.h"
#include "params/device_filters.h"
#include "params/device_numbers.h"
#include "platform/faults.h"
#include "platform/floating_point.h"

using namespace torvik;

namespace {

constexpr std::int32_t refusedByDevice = 255;
constexpr double highestAlpha = 0.5;

bool isFilterNo(std::uint32_t filterNo) {
    return filterNo >= 1 && filterNo <= highestFilterNo;
}

// Comparisons that are false for a NaN, without a floating-point exception.
bool isPositive(double value) {
    return !isNan(value) && value > 0;
}

bool isAtLeastOne(double value) {
    return !isNan(value) && value >= 1.0;
}

bool isAboveHighestAlpha(double value) {
    return !isNan(value) && value > highestAlpha;
}

std::array<double, 2> fractionsOf(double fs, double f1, double f2) {
    const platform::MaskedFloatingPoint masked;
    return {f1 / fs, f2 / fs};
}

// The device's own designer, made at its first use; null when there is no memory for it.
Dfilter* designerOf(const FilterUse& use) try {
    DeviceRecord& record = use.record();
    if (!record.filterObject) {
        if (platform::injectedFault(platform::FaultPoint::allocation) != 0) return nullptr;
        record.filterObject = std::make_unique<Dfilter>();
    }
    return static_cast<Dfilter*>(record.filterObject.get());
} catch (const std::bad_alloc&) {
    return nullptr;
}

// Nothing: it could not be read, lastError is set, or it is no frequency.
std::optional<double> samplingFrequency(const DeviceCall& call) {
    const auto answer = call.ask(Command::getFrequency);
    if (!answer || !isPositive(answer->f32())) return std::nullopt;
    return answer->f32();
}

// Takes a cut-off frequency of a device's filter. Result: 0, 255 refused, -1 no answer; nothing: it could not be asked
// for.
std::optional<std::int32_t> readCutoff(const DeviceCall& call, std::uint32_t filterNo, std::uint32_t index, double fs,
                                       double& cutoff) {
    if (sendCommand(call.deviceNo(), Command::getFilterCutoff, filterParameters(filterNo, index).bytes()) != 0)
        return std::nullopt;
    const auto answer = takeAnswer(call.deviceNo());
    if (!answer) return failure;
    if (answer->refused()) {
        call.fail(answer->status());
        return refusedByDevice;
    }
    const platform::MaskedFloatingPoint masked;
    cutoff = fs * answer->f32();
    return success;
}

enum class Reading : std::uint8_t { taken, missing, ended };

// Takes the coefficients from `firstIndex` on. Result: whether the last one came; ended: one could not be asked for or
// was refused.
Reading readCoefficients(const DeviceCall& call, std::uint32_t filterNo, std::uint32_t firstIndex,
                         std::span<double> coefficients) {
    Reading last = Reading::taken;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        const Parameters parameters = filterParameters(filterNo, firstIndex + static_cast<std::uint32_t>(i));
        if (sendCommand(call.deviceNo(), Command::getFilterCoefficient, parameters.bytes()) != 0) return Reading::ended;
        // Kept: a coefficient that does not come is left out, and the next one asked for.
        const auto answer = takeAnswer(call.deviceNo());
        last = answer ? Reading::taken : Reading::missing;
        if (!answer) continue;
        if (answer->refused()) {
            call.fail(answer->status());
            return Reading::ended;
        }
        if (const auto coefficient = decodeCoefficient(answer->u32())) coefficients[i] = *coefficient;
    }
    return last;
}

struct Coefficients {
    std::array<double, maxPoleZero + 1> x{};
    std::array<double, maxPoleZero + 1> y{};
};

// The coefficients of the device's own last design. Nothing: there is none.
std::optional<Coefficients> designedCoefficients(const DeviceCall& call) {
    const FilterUse use(call.record());
    if (!use.granted()) return std::nullopt;
    const auto* const filter = static_cast<const Dfilter*>(call.record().filterObject.get());
    if (filter == nullptr || !filter->iirValid) return std::nullopt;
    return Coefficients{filter->xCoefficients, filter->yCoefficients};
}

// Designs what `kind` and `characteristic` name. Nothing: lastError is set.
std::optional<Coefficients> designCoefficients(const DeviceCall& call, std::uint32_t kind, std::uint32_t characteristic,
                                               std::span<const double> alphas) {
    constexpr std::uint32_t kindOptions[] = {option::lowPass, option::highPass, option::bandPass, option::bandStop};
    const std::uint32_t prototype = characteristic == 1 ? option::bessel : option::butterworth;
    const std::uint32_t options = option::order | option::cutoffs | kindOptions[kind] | prototype;
    const std::int32_t order = (options & option::bandKinds) != 0 ? 2 : 4;
    const FilterUse use(call.record());
    if (!use.granted()) return std::nullopt;
    Dfilter* const filter = designerOf(use);
    const std::uint32_t code =
        filter == nullptr ? error::internalCallFailed : designFilter(*filter, options, order, alphas);
    if (code != error::none) {
        call.fail(code);
        return std::nullopt;
    }
    return Coefficients{filter->xCoefficients, filter->yCoefficients};
}

std::int32_t simulate(const DeviceCall& call, std::uint32_t mode, double f1, double f2, double fs, std::int32_t points,
                      const char* fileName) {
    constexpr std::uint32_t frequencyResponse = 1;
    constexpr std::uint32_t stepResponse = 2;
    const std::uint32_t kindWord = (mode & firBank) | singlePrecision;
    const platform::MaskedFloatingPoint masked;
    const FilterUse use(call.record());
    if (!use.granted()) return failure;
    Dfilter* const filter = designerOf(use);
    if (filter == nullptr) return call.fail(error::internalCallFailed);
    const auto mustEnd = [&call] { return callMustEnd(call.record()); };
    std::uint32_t code = error::parameterExceedance;
    if ((mode & frequencyResponse) != 0) {
        code = writeFrequencyResponse(*filter, kindWord, std::max(fs / 250, f1), std::min(fs / 2, f2), fs, points,
                                      fileName, mustEnd);
    } else if ((mode & stepResponse) != 0) {
        code = writeStepResponse(*filter, kindWord, f1, f2, fs, points, fileName, mustEnd);
    }
    return code == error::none ? success : call.fail(code);
}

}  // namespace

int32_t TORVIKgetDfilterOnOff(int32_t deviceNo, uint32_t* mask) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(mask != nullptr)) return failure;
        const auto answer = exchangeAnswer(call.deviceNo(), Command::getFiltersOn, {});
        if (!answer) return failure;
        if (answer->refused()) {
            call.fail(answer->status());
            return refusedByDevice;
        }
        *mask = answer->u32();
        return success;
    });
}

int32_t TORVIKsetDfilterOnOff(int32_t deviceNo, uint32_t filterNo, int32_t flags, int32_t on) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        const auto answer = exchangeAnswer(call.deviceNo(), Command::getFiltersOn, {});
        if (!answer) return failure;
        // Kept: a device that does not tell its mask has its filters set as if all had been off.
        if (answer->refused()) call.fail(answer->status());
        const std::uint32_t before = answer->refused() ? 0 : answer->u32();
        const std::uint32_t bit = filterBit(filterNo, (flags & firBank) != 0);
        return call.acknowledge(Command::setFiltersOn, Parameters().u32(on != 0 ? before | bit : before & ~bit));
    });
}

int32_t TORVIKgetDfilterInfo(int32_t deviceNo, uint32_t filterNo, int32_t flags, uint32_t* type, double* cutoffs) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(isFilterNo(filterNo) && type != nullptr && cutoffs != nullptr)) return failure;
        const auto fs = samplingFrequency(call);
        if (!fs) return failure;
        const std::uint32_t bank = static_cast<std::uint32_t>(flags) & firBank;
        if (sendCommand(call.deviceNo(), Command::getFilterType, filterParameters(filterNo, bank).bytes()) != 0)
            return failure;
        // Kept: without an answer it goes on with the type that the caller's variable holds.
        if (const auto answer = takeAnswer(call.deviceNo())) {
            if (answer->refused()) {
                call.fail(answer->status());
                return refusedByDevice;
            }
            *type = answer->byte(2);
        }
        const auto result = readCutoff(call, filterNo, bank, *fs, cutoffs[0]);
        if (!result) return failure;
        // Kept: of a band, a first cut-off that does not come is passed over.
        if (*result == refusedByDevice || !filter_type::isBand(*type)) return *result;
        return readCutoff(call, filterNo, bank + 1, *fs, cutoffs[1]).value_or(failure);
    });
}

int32_t TORVIKgetDigiFiltType(int32_t deviceNo, uint32_t filterNo, int8_t flags, uint32_t* type) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(isFilterNo(filterNo) && type != nullptr)) return failure;
        const std::uint32_t bank = static_cast<std::uint32_t>(flags) & firBank;
        // Kept: what comes is never delivered.
        if (call.ask(Command::getFilterType, filterParameters(filterNo, bank))) call.fail(error::internalCallFailed);
        return failure;
    });
}

int32_t TORVIKgetDfilterCoeff(int32_t deviceNo, int32_t filterNo, uint32_t flags, double* x, double* y) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const bool designed = filterNo < 0;
        const auto number = static_cast<std::uint32_t>(filterNo);
        if (!call.numberValid()) return failure;
        // Quirk: of an active device, the design is looked for before the pointers are checked.
        if (designed && call.record().active && !designedCoefficients(call)) return call.fail(filter_error::noDesign);
        if (!call.ready((designed || isFilterNo(number)) && x != nullptr && (flags != 0 || y != nullptr)))
            return failure;
        const std::span<double> xWanted(x, flags != 0 ? 4 : 5);
        const std::span<double> yWanted(y, flags != 0 ? 0 : 4);
        if (designed) {
            const auto coefficients = designedCoefficients(call);
            if (!coefficients) return call.fail(filter_error::noDesign);
            std::ranges::copy_n(coefficients->x.begin(), static_cast<std::ptrdiff_t>(xWanted.size()), x);
            std::ranges::copy_n(coefficients->y.begin(), static_cast<std::ptrdiff_t>(yWanted.size()), y);
            return success;
        }
        constexpr std::uint32_t yIndex = 0x10;
        Reading last = readCoefficients(call, number, flags & firBank, xWanted);
        if (last != Reading::ended && flags == 0) last = readCoefficients(call, number, yIndex, yWanted);
        return last == Reading::taken ? success : failure;
    });
}

int32_t TORVIKstoreDigitalFilter(int32_t deviceNo, uint32_t a, uint32_t b) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(a <= highestFilterNo && b <= highestFilterNo)) return failure;
        return call.acknowledge(Command::storeFilter, filterParameters(a, b));
    });
}

int32_t TORVIKsetDfilterParams(int32_t deviceNo, uint32_t filterNo, int32_t type, double* cutoffs, double* x,
                               double* y) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        const auto word = static_cast<std::uint32_t>(type);
        if (!call.ready(filterNo <= highestFilterNo && cutoffs != nullptr && x != nullptr && y != nullptr &&
                        isPositive(cutoffs[0]) && (word & filter_type::refused) == 0 &&
                        (!filter_type::isBand(word) || isPositive(cutoffs[1]))))
            return failure;
        return loadFilter(call.deviceNo(), filterNo, type, cutoffs, x, y);
    });
}

int32_t TORVIKcalcSetDfilterParams(int32_t deviceNo, uint32_t filterNo, uint32_t mode, uint32_t kind,
                                   uint32_t characteristic, uint32_t orderBits, double f1, double f2) {
    constexpr std::uint32_t lastKind = 3;
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(true)) return failure;
        if ((mode & 1) != 0) return call.fail(error::firmwareUnsupported);
        const auto fs = samplingFrequency(call);
        if (!fs) return call.fail(error::frequencyOutOfRange);
        const std::uint32_t kindBits = kind << 4;
        auto alphas = fractionsOf(*fs, f1, f2);
        // Quirk: NaN is no wrong argument; the designer reports it.
        if (!call.argumentsValid(kind <= lastKind && !isAboveHighestAlpha(alphas[0]) &&
                                 !(filter_type::isBand(kindBits) && isAboveHighestAlpha(alphas[1])) &&
                                 characteristic >= 1 && characteristic <= 2))
            return failure;
        auto designed = designCoefficients(call, kind, characteristic, alphas);
        if (!designed) return failure;
        // Without a filter number the design only stays with the library.
        if (filterNo > highestFilterNo) return success;
        return TORVIKsetDfilterParams(deviceNo, filterNo, static_cast<std::int32_t>(kindBits | orderBits),
                                      alphas.data(), designed->x.data(), designed->y.data());
    });
}

int32_t TORVIKsimulateDfilter(int32_t deviceNo, int32_t mode, double f1, double f2, double fs, int32_t points,
                              const char* fileName) {
    return deviceCall(deviceNo, [&](const DeviceCall& call) {
        if (!call.ready(fileName != nullptr)) return failure;
        if (!isAtLeastOne(fs)) {
            const auto ownFrequency = samplingFrequency(call);
            if (!ownFrequency) return call.fail(error::frequencyOutOfRange);
            fs = *ownFrequency;
        }
        return simulate(call, static_cast<std::uint32_t>(mode), f1, f2, fs, points, fileName);
    });
}
