// Three active devices on the simulated bus; the first meets the faults, the others must not notice.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "core/device_table.h"
#include "faults/fault_row.h"
#include "faults/simulated_bus.h"
#include "faults/simulated_clock.h"

namespace torvik::test {

inline constexpr std::int32_t faultyDevice = 1;
inline constexpr std::int32_t healthyDevice = 2;
inline constexpr std::int32_t misdirectedTo = simulatedDevices;

// Reads the last error and clears it.
std::uint32_t takeCode(std::int32_t deviceNo);

// The name of a row as a case of a parameterised test.
std::string nameOf(const FaultRow& row);
void PrintTo(const FaultRow& row, std::ostream* out);

// What a call has come to.
struct Observation {
    Outcome outcome;
    std::uint32_t code = 0;
    std::chrono::milliseconds elapsed{0};
    std::vector<std::uint8_t> sent;  // commands
    std::uint32_t waitingAnswers = 0;
    bool streaming = false;
};

class FaultBench : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // All devices are of this make from now on, and active.
    void use(const DeviceMake& make);

    // Makes the first device what the row begins with, and lets the call meet the fault.
    Observation meet(const FaultRow& row, const FaultPlan& plan);

    void begin(const FaultRow& row);
    Observation observe(const FaultRow& row);

    // The device answers at once and rightly.
    void expectRight(std::int32_t deviceNo);

    // No lock is held, whoever might have taken it; every device works, and those that were released work once they are
    // active again. `strays`: answers that nobody has taken and that wait in the first device's ring.
    void expectRecovery(bool active, std::uint32_t strays);

    // The next call takes an answer that was left behind, as documented; then the device is activated anew.
    void expectStrayIsTaken(std::int32_t deviceNo);

    void activate(std::int32_t deviceNo);
    static DeviceRecord& record() { return deviceRecord(faultyDevice); }

    DeviceMake make;
    SimulatedClock clock;
    SimulatedBus& bus = SimulatedBus::instance();

  private:
    void releaseMeanwhile(bool all);

    std::thread releasing_;
};

}  // namespace torvik::test
