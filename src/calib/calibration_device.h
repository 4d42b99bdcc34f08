// Reading and writing calibration elements of a device, one frame each, with its value stream out of the way.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "calib/calibration_format.h"
#include "core/device_record.h"

namespace torvik {

// While it lives, the device's value stream is stopped, if it ran. Neither a failed stop nor a failed start is
// reported.
class StreamPause {
  public:
    StreamPause(DeviceRecord& record, std::uint8_t deviceNo);
    ~StreamPause();
    StreamPause(const StreamPause&) = delete;
    StreamPause& operator=(const StreamPause&) = delete;

  private:
    DeviceRecord& record_;
    std::uint8_t deviceNo_;
    bool wasTransmitting_;
};

void stopStream(DeviceRecord& record, std::uint8_t deviceNo);
void startStream(DeviceRecord& record, std::uint8_t deviceNo);

// Writes one element as a float. An array code (without bit 7) outside 1..12 stores 0x30000100 and gives 0: kept,
// callers go on with the next element. Result: 0; -1 with lastError set.
std::int32_t writeCalElement(std::uint8_t deviceNo, std::uint32_t arrayCode, std::uint32_t elementIndex, double value);

std::int32_t writeCalElement(std::uint8_t deviceNo, CalArray array, std::size_t elementIndex, double value);

// Writes one element after the other from index 0 on. Result: 0; -1 after the first that failed.
std::int32_t writeCalElements(std::uint8_t deviceNo, CalArray array, std::span<const double> values);

// Writes zeros.
std::int32_t clearCalElements(std::uint8_t deviceNo, CalArray array, std::size_t count);

// The value of one element. Nothing: lastError is set.
std::optional<double> readCalElement(std::uint8_t deviceNo, std::uint8_t arrayCode, std::uint8_t elementIndex);

// Fills `values` from index 0 on; false after the first that failed. Nothing is read into an empty span.
bool readCalElements(std::uint8_t deviceNo, CalArray array, std::span<double> values);

// Reads the format word. Nothing: lastError is set, 0x30000060 when it is no 32-bit number.
std::optional<std::int32_t> readFormatWord(std::uint8_t deviceNo);

// Reads the serial number of a slot, which is selected first. Nothing: lastError is set.
std::optional<std::uint32_t> readSerialNumber(std::uint8_t deviceNo, std::uint32_t slot);
std::int32_t writeSerialNumber(std::uint8_t deviceNo, std::uint32_t serial);

// Selects the slot whose arrays are read next, as the byte is given.
std::int32_t selectCalSlot(std::uint8_t deviceNo, std::uint8_t slot);

// Stores the written arrays. Result: 0; -1 with lastError set.
std::int32_t storeCalSlot(std::uint8_t deviceNo, std::uint8_t slot);

}  // namespace torvik
