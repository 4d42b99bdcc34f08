#include <algorithm>

#include "amplifier.hpp"
#include "commands/command_table.hpp"

// The calibration of a six-axis sensor: arrays, numbered slots, the sensor's model name.
namespace virtual_adapter {
namespace {

constexpr std::uint8_t kFlag = 0x80;  // may come with array codes and slot numbers; means nothing here
constexpr std::uint32_t kHighestSerial = 99'999'999;

// Firmware from which on the amplifier knows them.
constexpr std::uint32_t kWithSelection = 0x3000B;
constexpr std::uint32_t kWithAllArrays = 0x3002F;
constexpr std::uint32_t kWithModelName = 0x30032;

std::uint8_t withoutFlag(std::uint8_t byte) {
    return static_cast<std::uint8_t>(byte & ~kFlag);
}

// The status with which an element is refused; done when there is one.
std::uint8_t elementStatus(const CommandCall& call) {
    const std::size_t array = withoutFlag(call.u8(0));
    const bool late = array >= calibration_array::kZeroSignals && array <= calibration_array::kDate;
    if (late && call.amplifier.config().firmware < kWithAllArrays) return device_status::kUnknownCommand;
    return SensorCalibration::has(array, call.u8(1)) ? device_status::kDone : device_status::kWrongIndex;
}

std::uint32_t& elementOf(const CommandCall& call) {
    return call.amplifier.memory().sensor.inWork().word(withoutFlag(call.u8(0)), call.u8(1));
}

void readElement(CommandCall& call) {
    const std::uint8_t status = elementStatus(call);
    if (status != device_status::kDone) return call.reply.error(status);
    call.reply.u32(elementOf(call));
}

void writeElement(CommandCall& call) {
    const std::uint8_t status = elementStatus(call);
    if (status != device_status::kDone) return call.reply.error(status);
    if (withoutFlag(call.u8(0)) == calibration_array::kSerial && call.u32(2) > kHighestSerial)
        return call.reply.error(device_status::kWrongData);
    elementOf(call) = call.u32(2);
    call.reply.acknowledge();
}

void selectSlot(CommandCall& call) {
    call.amplifier.memory().sensor.select(withoutFlag(call.u8(0)));
    call.reply.acknowledge();
}

void storeSlot(CommandCall& call) {
    call.amplifier.memory().sensor.store(withoutFlag(call.u8(0)));
    call.amplifier.useActiveCalibration();
    call.reply.acknowledge();
}

// The number stands before two zeros.
void arrayNumber(CommandCall& call) {
    call.reply.bytes(std::array<std::uint8_t, 3>{call.amplifier.memory().sensor.activeSlot()});
}

void setArrayNumber(CommandCall& call) {
    call.amplifier.memory().sensor.activate(withoutFlag(call.u8(0)));
    call.amplifier.useActiveCalibration();
    call.reply.acknowledge();
}

// Four answers, each behind the number of its part.
void modelName(CommandCall& call) {
    std::uint8_t number = 0;
    for (const auto& part : call.amplifier.memory().sensor.inWork().modelName) {
        std::array<std::uint8_t, 1 + SensorCalibration::kNamePartSize> data{++number};
        std::ranges::copy(part, data.begin() + 1);
        call.reply.bytes(data);
    }
}

void writeModelName(CommandCall& call) {
    auto& name = call.amplifier.memory().sensor.inWork().modelName;
    const std::size_t part = call.u8(0);
    if (part < 1 || part > name.size()) return call.reply.error(device_status::kWrongIndex);
    std::ranges::copy(call.parameters.subspan(1), name[part - 1].begin());
    call.reply.acknowledge();
}

constexpr CommandRow kCalibrationRows[] = {
    {0x1B, 0, true, modelName, kWithModelName},
    {0x1C, 5, true, writeModelName, kWithModelName},
    {0x47, 2, true, readElement},
    {0x48, 6, true, writeElement},
    {0x54, 0, true, arrayNumber},
    {0x55, 1, true, setArrayNumber},
    {0x7D, 1, true, selectSlot, kWithSelection},
    {0x7F, 1, true, storeSlot},
};

}  // namespace

std::span<const CommandRow> calibrationCommands() {
    return kCalibrationRows;
}

}  // namespace virtual_adapter
