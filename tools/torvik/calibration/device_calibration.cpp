#include "calibration/device_calibration.h"

#include <fmt/format.h>

#include <algorithm>

#include "TORVIK.h"
#include "number_text.h"
#include "parameters/unit_names.h"
#include "params/unit_table.h"
#include "params/user_text.h"

namespace torvik::tool {

namespace {

constexpr std::uint8_t unitsArray = static_cast<std::uint8_t>(CalArray::units);
constexpr std::uint8_t dateArray = static_cast<std::uint8_t>(CalArray::date);

void check(const Connection& connection, std::int32_t result, const std::string& what) {
    if (result != 0) connection.fail(ExitCode::deviceFailed, fmt::format("reading the calibration's {}", what));
}

/// The arrays have the size that the format word tells, which is read first.
void readMainArrays(const Connection& connection, DeviceCalibration& calibration) {
    const std::int32_t deviceNo = connection.deviceNo();
    check(connection,
          TORVIKreadFTsensorCalArrayA(deviceNo, calibration.slot, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      &calibration.formatWord),
          "size");
    const CalDimensions size = calibration.size();
    calibration.matrix.resize(size.elements());
    calibration.maxima.resize(size.outputs);
    std::vector<double> zeroSignals(size.inputs);
    std::array<char, 9> serial{};
    std::array<double, 2> scales{};
    check(
        connection,
        TORVIKreadFTsensorCalArrayA(deviceNo, calibration.slot, serial.data(), scales.data(), calibration.matrix.data(),
                                    calibration.offsets.data(), calibration.maxima.data(), zeroSignals.data(), nullptr),
        "arrays");
    calibration.serial = parseNumber(serial.data()).value_or(0);
    calibration.outScale = scales[0];
    calibration.inScale = scales[1];
    if (calibration.firmware >= firmwareWithFormatWord) calibration.zeroSignals = zeroSignals;
}

void readExtension(const Connection& connection, DeviceCalibration& calibration) {
    std::uint32_t formatWord = 0;
    MatrixB matrixB;
    std::array<char, modelNameSize> model{};
    check(connection,
          TORVIKreadFTsensorCalArrExt(connection.deviceNo(), &formatWord, matrixB.elements.data(),
                                      matrixB.firstFactors.data(), matrixB.secondFactors.data(), model.data()),
          "extension");
    if (formatType(static_cast<std::int32_t>(formatWord)) == format_type::withMatrixB) calibration.matrixB = matrixB;
    if (calibration.firmware >= firmwareWithModelName) calibration.model = model.data();
}

template <std::size_t Count>
std::array<double, Count> readElements(const Connection& connection, std::uint8_t array, const std::string& what) {
    std::array<double, Count> values{};
    for (std::size_t i = 0; i < Count; ++i)
        check(connection,
              TORVIKreadFTSensorCalValue(connection.deviceNo(), array, static_cast<std::uint8_t>(i), &values[i]), what);
    return values;
}

/// None: a unit of the table, or a number that is no unit.
std::optional<std::uint32_t> userTextOf(double unitNo) {
    for (const std::uint32_t textNo : {1U, 2U}) {
        if (unitNo == unitOfUserText(textNo)) return textNo;
    }
    return std::nullopt;
}

void readUserTexts(const Connection& connection, DeviceCalibration& calibration) {
    constexpr std::uint32_t anyChannel = 1;
    for (const double unit : *calibration.units) {
        const auto textNo = userTextOf(unit);
        if (!textNo || !calibration.userTexts[*textNo - 1].empty()) continue;
        std::array<char, unitTextSize> text{};
        check(connection,
              TORVIKgetUnitText(connection.deviceNo(), anyChannel, static_cast<std::int32_t>(*textNo), text.data()),
              "unit texts");
        calibration.userTexts[*textNo - 1] = text.data();
    }
}

}  // namespace

std::string DeviceCalibration::unitText(std::size_t output) const {
    const double unit = units.value()[output];
    if (const auto textNo = userTextOf(unit)) return userTexts[*textNo - 1];
    const bool tableNumber = unit >= 0 && unit < unitCount;
    const auto number = tableNumber ? static_cast<std::uint32_t>(unit) : unitCount;
    if (const auto text = torvik::unitText(number, charset::ascii); text && unit == number) return std::string(*text);
    return shortestText(unit);
}

std::uint32_t firmwareOf(const Connection& connection) {
    std::uint32_t version = 0;
    if (TORVIKgetFirmwareVersion(connection.deviceNo(), &version) != 0)
        connection.fail(ExitCode::deviceFailed, "reading the device's firmware version");
    return version;
}

std::uint32_t presentSlot(const Connection& connection) {
    std::array<std::uint8_t, 3> number{};
    if (TORVIKgetFTSensorCalArrNo(connection.deviceNo(), 0, number.data()) != 0)
        connection.fail(ExitCode::deviceFailed, "reading which calibration the device uses (--slot names one)");
    return std::min<std::uint32_t>(number.front(), lastCalibrationSlot);
}

DeviceCalibration readDeviceCalibration(const Connection& connection, std::uint32_t slot) {
    DeviceCalibration calibration;
    calibration.firmware = firmwareOf(connection);
    calibration.slot = slot;
    readMainArrays(connection, calibration);
    if (calibration.firmware < firmwareWithFormatWord) return calibration;
    // The slot is still selected.
    readExtension(connection, calibration);
    calibration.units = readElements<standardSize>(connection, unitsArray, "units");
    calibration.date = readElements<3>(connection, dateArray, "date");
    readUserTexts(connection, calibration);
    return calibration;
}

}  // namespace torvik::tool
