// The library opened on the adapter in memory, with active devices.
#pragma once

#include <cstdint>
#include <span>

namespace torvik::bench {

inline constexpr std::int32_t ringLength = 1024;  // of the devices 0..38, with six channels each
inline constexpr std::uint8_t largeDevice = 39;   // has one channel with the largest ring
inline constexpr std::int32_t largeRingLength = 65534;

// Opens the adapter and sets all devices up. Throws when that fails. The destructor closes everything.
class OpenLibrary {
  public:
    OpenLibrary();
    ~OpenLibrary();
    OpenLibrary(const OpenLibrary&) = delete;
    OpenLibrary& operator=(const OpenLibrary&) = delete;
};

// While it lives there is no receive thread: the pass that it does can be called directly.
class WithoutReceiveThread {
  public:
    WithoutReceiveThread();
    ~WithoutReceiveThread();
    WithoutReceiveThread(const WithoutReceiveThread&) = delete;
    WithoutReceiveThread& operator=(const WithoutReceiveThread&) = delete;
};

// Throws away what waits in the buffers of all devices.
void clearAllBuffers();

// Whether exactly this many sets of a device wait, in order from `firstSet`. Takes them.
bool takeSetsInOrder(std::uint8_t deviceNo, std::uint32_t sets, std::uint32_t firstSet = 0);

}  // namespace torvik::bench
