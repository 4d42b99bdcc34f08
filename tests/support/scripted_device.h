// A device that answers the commands written to the fake adapter.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "can/pcan_api.h"
#include "core/command.h"

namespace torvik::test {

// Answers within the writing of the command, so that no test waits for it. Unless told otherwise it has value
// identifier 0x302, firmware 0x0003000B, three channels (mode word 4) and streams; it stays silent to every other
// command.
class ScriptedDevice {
  public:
    static constexpr std::uint32_t valueCanId = 0x302;

    explicit ScriptedDevice(std::uint8_t deviceNo);
    ~ScriptedDevice();
    ScriptedDevice(const ScriptedDevice&) = delete;
    ScriptedDevice& operator=(const ScriptedDevice&) = delete;

    // `data`: the answer's bytes 2..7.
    void answer(Command command, std::array<std::uint8_t, 6> data);
    void refuse(Command command, std::uint8_t status);
    void silence(Command command);

    // Runs `action` after the answer to `command` has arrived and before the library can take it.
    void afterAnswering(Command command, std::function<void()> action);

    // What it has been asked, in order.
    std::vector<Command> asked() const;

  private:
    void react(const PcanMessage& message);

    std::uint8_t deviceNo_;
    std::map<Command, std::array<std::uint8_t, 8>> answers_;
    std::map<Command, std::function<void()>> actions_;
    std::vector<Command> asked_;
};

}  // namespace torvik::test
