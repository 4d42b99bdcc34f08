#include "status.hpp"

#include <algorithm>
#include <iterator>

namespace virtual_adapter {
namespace {

struct Row {
    Status status;
    const char* text;
};

constexpr Row kRows[] = {
    {0x0, "No error"},
    {0x1, "The transmit buffer of the CAN controller is full"},
    {0x2, "The CAN controller was read too late"},
    {0x4, "Bus error: an error counter has reached its lower limit"},
    {0x8, "Bus error: an error counter has reached its upper limit"},
    {0x10, "Bus error: the CAN controller has switched itself off the bus"},
    {0x20, "No frame is waiting in the receive queue"},
    {0x40, "The receive queue was full and frames were lost"},
    {0x80, "The transmit queue is full"},
    {0x100, "The registers of the CAN controller cannot be reached: no hardware found"},
    {0x200, "The adapter's driver is not loaded"},
    {0x400, "The hardware is in use by another client"},
    {0x800, "A client is already connected"},
    {0x1400, "The channel handle is not valid"},
    {0x1800, "The net handle is not valid"},
    {0x1C00, "The client handle is not valid"},
    {0x2000, "A resource could not be created"},
    {0x4000, "The parameter does not exist or cannot be used here"},
    {0x8000, "The value of a parameter is not valid"},
    {0x10000, "Unknown error"},
    {0x20000, "Data, function or action is not valid"},
    {0x40000, "Bus error: the CAN controller no longer acknowledges"},
    {0x4000000, "The channel is not initialised, or it is initialised already"},
    {0x8000000, "The operation is not possible in the present state"},
};

}  // namespace

const char* statusText(Status status) {
    const auto* const row = std::ranges::find(kRows, status, &Row::status);
    return row == std::end(kRows) ? nullptr : row->text;
}

}  // namespace virtual_adapter
