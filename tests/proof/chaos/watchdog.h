// Watches that no call takes longer than its bound: those that return, and those that never do.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "random_call.h"

namespace torvik::proof {

class Watchdog {
  public:
    static constexpr std::size_t threads = 17;  // the callers, and the one that unloads
    using Clock = std::chrono::steady_clock;

    // `onHang` runs, on the watchdog's own thread, once a call is far beyond its bound; it must not return.
    explicit Watchdog(void (*onHang)(const std::string& what));
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    void begin(std::size_t thread, const char* name, std::chrono::milliseconds bound);
    void end(std::size_t thread);

    std::uint64_t beyondBound() const { return beyondBound_; }
    std::uint64_t aboveOneSecond() const { return aboveOneSecond_; }
    // The call that took the largest part of its bound, and the first beyond it.
    std::string nearest();

  private:
    struct Slot {
        std::atomic<const char*> name = nullptr;
        std::atomic<std::int64_t> began = 0;  // nanoseconds; 0: no call
        std::atomic<std::int64_t> bound = 0;
    };

    void watch();
    void note(const Slot& slot, std::int64_t took);

    void (*onHang_)(const std::string&);
    std::array<Slot, threads> slots_;
    std::atomic<std::uint64_t> beyondBound_ = 0;
    std::atomic<std::uint64_t> aboveOneSecond_ = 0;
    std::atomic<double> nearestPart_ = 0;
    std::mutex nearestMutex_;
    std::string nearest_;
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

}  // namespace torvik::proof
