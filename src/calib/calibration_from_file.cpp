#include "calib/calibration_from_file.h"

#include <algorithm>

#include "calib/calibration_arrays.h"
#include "calib/calibration_device.h"
#include "core/device_table.h"
#include "core/error_codes.h"
#include "params/unit_table.h"
#include "params/user_text.h"

namespace torvik {

namespace {

constexpr std::size_t userTexts = 2;

std::int32_t writeFileExtension(std::uint8_t deviceNo, const CalibrationFile& calibration) {
    ExtensionArrays arrays;
    if (calibration.model) arrays.model = calibration.model->c_str();
    if (calibration.matrixB) {
        arrays.matrixB = calibration.matrixB->elements.data();
        arrays.firstFactors = calibration.matrixB->firstFactors.data();
        arrays.secondFactors = calibration.matrixB->secondFactors.data();
    }
    return writeExtension(deviceNo, calibration.formatWord(), arrays);
}

std::int32_t writeDate(std::uint8_t deviceNo, const CalibrationDate& date) {
    const std::int32_t numbers[] = {date.year, date.month, date.day};
    for (std::size_t i = 0; i < std::size(numbers); ++i) {
        if (writeCalElement(deviceNo, CalArray::date, i, numbers[i]) == -1) return -1;
    }
    return 0;
}

// Finds a unit number for each unit text of a file, writing those that are in no table as user texts of the device.
class UnitWriter {
  public:
    explicit UnitWriter(std::uint8_t deviceNo) : deviceNo_(deviceNo) {}

    // Result: 0; -1 with lastError set.
    std::int32_t write(std::size_t output, const std::string& text) {
        auto unitNo = findUnit(text, charset::ascii);
        if (!unitNo) unitNo = userUnit(output, text);
        return unitNo ? writeCalElement(deviceNo_, CalArray::units, output, *unitNo) : -1;
    }

  private:
    struct Slot {
        std::string text;  // as the device has it: seven characters at most
        bool used = false;
    };

    std::nullopt_t fail(std::uint32_t code) const {
        setError(deviceNo_, code);
        return std::nullopt;
    }

    // What the device has, asked for when the first text is needed.
    bool readSlots() {
        for (std::uint32_t number = 1; !slotsRead_ && number <= userTexts; ++number) {
            const auto text = readUserText(deviceNo_, number);
            if (!text) return false;
            slots_[number - 1].text.assign(text->begin(), std::ranges::find(*text, '\0'));
        }
        slotsRead_ = true;
        return true;
    }

    std::optional<std::uint32_t> userUnit(std::size_t output, const std::string& text) {
        if (text.size() > longestUnitText) return fail(error::parameterExceedance);
        if (!readSlots()) return std::nullopt;
        const std::string kept = text.substr(0, userTextLength - 1);
        auto slot = std::ranges::find(slots_, kept, &Slot::text);
        if (slot == slots_.end()) {
            slot = std::ranges::find(slots_, false, &Slot::used);
            if (slot == slots_.end()) return fail(error::fileContent);
            if (!writeSlot(numberOf(slot), output, text)) return std::nullopt;
            slot->text = kept;
        }
        slot->used = true;
        return unitOfUserText(numberOf(slot));
    }

    bool writeSlot(std::uint32_t number, std::size_t output, const std::string& text) const {
        const auto channel = static_cast<std::uint32_t>(output + 1);
        return writeUserText(deviceNo_, number, text) == 0 && setUserTextUnit(deviceNo_, channel, number) == 0;
    }

    using Slots = std::array<Slot, userTexts>;
    std::uint32_t numberOf(Slots::const_iterator slot) const {
        return static_cast<std::uint32_t>(slot - slots_.begin()) + 1;
    }

    std::uint8_t deviceNo_;
    Slots slots_;
    bool slotsRead_ = false;
};

std::int32_t writeUnits(std::uint8_t deviceNo, const UnitTexts& units) {
    UnitWriter writer(deviceNo);
    for (std::size_t output = 0; output < units.outputs.size(); ++output) {
        if (units.outputs[output] && writer.write(output, *units.outputs[output]) == -1) return -1;
    }
    return 0;
}

}  // namespace

std::int32_t writeCalibration(std::uint8_t deviceNo, std::uint8_t slot, const CalibrationFile& calibration) {
    const bool extended = deviceRecord(deviceNo).firmwareVersion >= firmwareWithFormatWord;
    const auto serial = parseSerialText(calibration.serialText.data());
    // Refused before anything is sent: otherwise half a calibration would be written.
    if (!serial || isTooSmallForScale(calibration.outScale) || isTooSmallForScale(calibration.inScale)) {
        setError(deviceNo, error::parameterExceedance);
        return -1;
    }
    if (extended && writeFileExtension(deviceNo, calibration) != 0) return -1;
    if (calibration.date && writeDate(deviceNo, *calibration.date) != 0) return -1;
    if (writeUnits(deviceNo, calibration.units) != 0) return -1;
    const CalibrationArrays arrays{.serial = *serial,
                                   .outScale = calibration.outScale,
                                   .inScale = calibration.inScale,
                                   .matrix = calibration.matrix.data(),
                                   .offsets = calibration.offsets.data(),
                                   .maxima = calibration.maxima.data(),
                                   .zeroSignals = calibration.zeroSignals.data()};
    return writeArrays(deviceNo, slot, arrays, extended ? calibration.formatWord() : 0);
}

}  // namespace torvik
