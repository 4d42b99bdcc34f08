// Waiting for descriptors, which the receive thread does and no call.
#pragma once

#include <atomic>
#include <cstdint>

namespace torvik::test {

extern std::atomic<bool> pollFails;
extern std::atomic<std::uint32_t> failedPolls;

}  // namespace torvik::test
