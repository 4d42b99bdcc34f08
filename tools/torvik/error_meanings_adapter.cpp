#include <array>

#include "error_meanings.h"

namespace torvik::tool {

namespace {

constexpr std::string_view checkBus =
    "check cable, termination (120 ohms at both ends) and that all participants use the same bit rate";
constexpr std::string_view closeOthers = "close other programs that use the adapter, or open it with their bit rate";
constexpr std::string_view replug = "unplug the adapter and plug it in again, then activate again";
constexpr std::string_view otherChoice = "check the choice of the adapter (--adapter) and of the bit rate (--baud)";

constexpr auto adapterRows = std::to_array<ErrorMeaning>({
    {0x1, "the controller has not got rid of the last frame: nobody on the bus acknowledges it", checkBus},
    {0x2, "frames came faster than the controller was read: some are lost", "lower the bus load or the data rate"},
    {0x4, "the controller counts errors on the bus (warning level)", checkBus},
    {0x8, "the controller counts many errors on the bus (error passive)", checkBus},
    {0x10, "the controller has taken itself off the bus after too many errors", checkBus},
    {0x4001C, "not a state of its own: all bits of bus errors together", checkBus},
    {0x20, "no frame is waiting; normal in operation", "nothing to do"},
    {0x40, "frames came faster than they were fetched: some are lost",
     "lower the load of the computer or the data rate"},
    {0x80, "commands wait in the adapter and cannot be sent", checkBus},
    {0x100, "the adapter's hardware was not found", replug},
    {0x200, "the adapter's driver is not running", "install the driver or load it, then plug the adapter in again"},
    {0x400, "the adapter is in use with another configuration", closeOthers},
    {0x800, "another program is connected already", closeOthers},
    {0x1400, "there is no such adapter: not plugged in, or unplugged meanwhile", replug},
    {0x1800, "the adapter's net is not valid", otherChoice},
    {0x1C00, "the connection to the adapter is not valid any more", replug},
    {0x1C00, "not a state of its own: all bits of invalid handles together", replug},
    {0x2000, "the driver could not get the means it needs, or took too long", closeOthers},
    {0x4000, "the driver refused a parameter", otherChoice},
    {0x8000, "the driver refused the value of a parameter", otherChoice},
    {0x10000,
     "the adapter's library could not be loaded or lacks a function (or the driver met a fault without a name)",
     "install the adapter's driver with its library, or try --simulate"},
    {0x20000, "the driver refused data, a function or an action", otherChoice},
    {0x4000000, "the adapter has not been opened", "activate a device first"},
    {0x8000000, "the driver does not allow this now", closeOthers},
});

}  // namespace

std::span<const ErrorMeaning> adapterMeanings() {
    return adapterRows;
}

}  // namespace torvik::tool
