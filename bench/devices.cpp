#include "devices.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <vector>

#include "api/TORVIK.h"
#include "can/adapter_channel.h"
#include "can/receive_thread.h"
#include "core/buffer_bound.h"
#include "core/device_table.h"
#include "core/measured_values.h"
#include "frames.h"

namespace torvik::bench {

namespace {

constexpr std::uint8_t usbAdapter = 1;
constexpr std::uint16_t anyBaudCode = 0;

void allocate(DeviceRecord& record, std::int32_t length) {
    const bool obtained = exclusively(valueMutex, [&]() NO_THREAD_SAFETY_ANALYSIS {
        for (ValueBuffer& buffer : record.valueBuffer) {
            buffer = {};
            buffer.entries = std::make_unique<ValueEntry[]>(static_cast<std::size_t>(length));
            buffer.allocated = length;
        }
    });
    if (!obtained) throw std::runtime_error("the value buffers cannot be locked");
}

// A device as activation leaves it.
void setUp(std::uint8_t deviceNo, std::uint32_t channels, std::int32_t length) {
    DeviceRecord& record = deviceRecord(deviceNo);
    allocate(record, length);
    record.ownDeviceNo = deviceNo;
    record.activeChannels = channels;
    record.channelHandle = libraryState.channelHandle.load();
    const bool obtained = exclusively(answerMutex, [&]() NO_THREAD_SAFETY_ANALYSIS {
        record.commandCanId = commandIdOf(deviceNo);
        record.answerCanId = answerIdOf(deviceNo);
        record.valueCanId = valueIdOf(deviceNo);
        record.active = true;
        updateRoutes();
    });
    if (!obtained) throw std::runtime_error("the routes cannot be locked");
}

class LifecycleHeld {
  public:
    LifecycleHeld() {
        if (!lifecycleMutex.lockFor(mutexLimit)) std::abort();
    }
    ~LifecycleHeld() { lifecycleMutex.unlock(lifecycleMutex.generation()); }
    LifecycleHeld(const LifecycleHeld&) = delete;
    LifecycleHeld& operator=(const LifecycleHeld&) = delete;
};

}  // namespace

OpenLibrary::OpenLibrary() {
    const LifecycleHeld held;
    if (initAdapter(0, usbAdapter, anyBaudCode) != 0) throw std::runtime_error("the adapter cannot be opened");
    setValueBufferLength(largestBufferLength);
    for (std::uint8_t deviceNo = 0; deviceNo < deviceCount; ++deviceNo)
        setUp(deviceNo, channelCount, ringLength);
    setUp(largeDevice, 1, largeRingLength);
}

OpenLibrary::~OpenLibrary() {
    const LifecycleHeld held;
    closeAdapter();
}

WithoutReceiveThread::WithoutReceiveThread() {
    const LifecycleHeld held;
    stopReceiveThread(std::nullopt);
}

WithoutReceiveThread::~WithoutReceiveThread() {
    const LifecycleHeld held;
    startReceiveThread();
}

void clearAllBuffers() {
    for (DeviceRecord& record : deviceTable())
        clearValueBuffers(record);
}

bool takeSetsInOrder(std::uint8_t deviceNo, std::uint32_t sets, std::uint32_t firstSet) {
    // Room for one set more than there should be.
    std::vector<double> values((std::size_t{sets} + 1) * channelCount);
    std::int32_t count = 0;
    TORVIKreadMultiple(deviceNo, 0, values.data(), static_cast<std::int32_t>(values.size()), &count, nullptr);
    if (count != static_cast<std::int32_t>(sets * channelCount)) return false;
    for (std::uint32_t i = 0; i < sets * channelCount; ++i) {
        if (values[i] != scaledValueOf(deviceNo, i % channelCount, firstSet + i / channelCount)) return false;
    }
    return true;
}

}  // namespace torvik::bench
