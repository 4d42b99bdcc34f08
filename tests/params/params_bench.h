// The exports of the device parameters against the virtual adapter, on a clock that passes only in tests.
#pragma once

#include <future>
#include <span>
#include <string>
#include <vector>

#include "core/device_table.h"
#include "params/export_row.h"
#include "support/bench_fixture.h"
#include "support/test_clock.h"

namespace torvik::test {

inline constexpr std::int32_t inactiveDevice = 2;

// What a test's amplifier says of itself when it is activated.
struct AmplifierTraits {
    std::uint32_t firmware = 0x00040000;
    std::uint32_t protocolFlag = TORVIK_FLAG_PROTOCOL_KIND_16;
    std::uint8_t channels = 6;
    bool streaming = true;
};

class ParamsBench : public Bench {
  protected:
    void SetUp() override;

    // Activates the device anew; it is active with the default traits from the beginning.
    static void activateAs(const AmplifierTraits& traits);

    // From now on the amplifier gives exactly these answers, each once and in this order to its command, and its own
    // to commands that are not among them.
    static void script(std::span<const Answer> answers);
    static void script(std::initializer_list<Answer> answers) { script(std::span(answers)); }

    // The amplifier's own answers to a command no longer arrive, only what a test lets arrive.
    static void silence(std::uint8_t command);

    // An answer comes from the bus; returns when it waits to be taken.
    static void arrive(std::span<const std::uint8_t> statusAndData);
    static void arrive(std::initializer_list<std::uint8_t> statusAndData) { arrive(std::span(statusAndData)); }

    // Lets `skip` frames through and then fails the writing of one.
    static void failWriteAfter(std::uint32_t skip) { virtualFailCalls(VIRTUAL_WRITE, 0x80, skip, 1); }

    // Runs `call` and lets its pauses pass. The wait for an answer ends only when the answer was dropped; one that
    // never ends fails the test after ten seconds of real time.
    template <class Function>
    auto run(Function call) {
        Passing passing;
        auto result = std::async(std::launch::async, call);
        while (result.wait_for(std::chrono::microseconds(200)) != std::future_status::ready)
            letPass(passing);
        return result.get();
    }

    // The data bytes of the frames written since the last call; all of them to the device.
    static std::vector<std::string> takeSent();

    // The device answers a further command without any time passing.
    void expectFree();

    static DeviceRecord& record() { return deviceRecord(device); }
    static std::uint32_t takeCode(std::int32_t deviceNo = device) { return takeLastError(deviceNo).code; }

    TestClock clock;

  private:
    struct Passing {
        Passing();
        std::uint64_t expiring;  // answers missing so far, waited for or not
        platform::TimePoint begun;
    };

    void letPass(Passing& passing);
};

}  // namespace torvik::test
