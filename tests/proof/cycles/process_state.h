// What a process holds of the system, for comparing before and after.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace torvik::proof {

struct ProcessState {
    std::size_t threads = 0;
    std::size_t handles = 0;   // Linux: file descriptors
    std::size_t mappings = 0;  // regions of the address space
    std::size_t memory = 0;    // KiB that are the process's own
    std::int64_t heap = 0;     // bytes of all blocks that are allocated; -1: not known

    static ProcessState now();
    // How long the system keeps what it may need again, such as the idle threads of its pools.
    static std::chrono::milliseconds restTime();
    std::string text() const {
        return std::to_string(threads) + " threads, " + std::to_string(handles) + " handles, " +
               std::to_string(mappings) + " mappings, " + std::to_string(memory) + " KiB, heap " +
               std::to_string(heap) + " bytes";
    }
};

}  // namespace torvik::proof
