// Watches that no call takes longer than the documented waits that it really had, and one second: calls that return,
// and calls that never do. Calls of many commands get more on a machine where every command takes long.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

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

    // `mostWaits`: the time-outs and pauses that the call's own commands can have.
    void begin(std::size_t thread, const char* name, std::chrono::milliseconds mostWaits = {});
    void end(std::size_t thread);

    // A documented time-out or pause has kept the calling thread waiting for so many nanoseconds.
    static void excuse(std::int64_t nanoseconds);
    // An answer has come to the calling thread after so many nanoseconds.
    static void noteAnswer(std::int64_t nanoseconds);

    std::uint64_t beyondBound() const { return beyondBound_; }
    std::uint64_t aboveOneSecond() const { return aboveOneSecond_; }
    // The call that took longest beside its documented waits.
    std::string longest();
    // The first calls beyond their bound.
    std::vector<std::string> tooLong();
    std::chrono::microseconds meanAnswer() const;

  private:
    struct Slot {
        std::atomic<const char*> name = nullptr;
        std::atomic<std::int64_t> began = 0;  // nanoseconds; 0: no call
        std::atomic<std::int64_t> mostWaits = 0;
        std::atomic<std::int64_t> excused = 0;
        std::atomic<std::int64_t> answers = 0;

        std::int64_t waits() const { return std::min(excused.load(), mostWaits.load()); }
    };

    void watch();
    void note(const Slot& slot, std::int64_t own);
    std::int64_t boundOf(const Slot& slot) const;

    static thread_local Slot* current;
    static std::atomic<std::int64_t> answers;
    static std::atomic<std::int64_t> timeOfAnswers;

    void (*onHang_)(const std::string&);
    std::array<Slot, threads> slots_;
    std::atomic<std::uint64_t> beyondBound_ = 0;
    std::atomic<std::uint64_t> aboveOneSecond_ = 0;
    std::atomic<std::int64_t> longestOwn_ = -1;
    std::mutex longestMutex_;
    std::string longest_;
    std::vector<std::string> tooLong_;
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

}  // namespace torvik::proof
