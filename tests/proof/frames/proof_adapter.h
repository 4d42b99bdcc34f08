// An adapter library inside the program whose frames are made at the moment they are read: linking it takes the place
// of loading one. Its devices answer what activation asks.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>

#include "arrival_signal.h"
#include "can/pcan_api.h"
#include "support/adapter_entry_points.h"

namespace torvik::proof {

inline constexpr std::uint32_t channelCount = 6;
inline constexpr std::uint8_t lastDevice = 39;

constexpr std::uint32_t commandIdOf(std::uint8_t deviceNo) {
    return 0x100 + 4U * deviceNo;
}
constexpr std::uint32_t answerIdOf(std::uint8_t deviceNo) {
    return commandIdOf(deviceNo) + 1;
}
constexpr std::uint32_t valueIdOf(std::uint8_t deviceNo) {
    return commandIdOf(deviceNo) + 2;
}

// What is on the bus, frame by frame.
class FrameSource {
  public:
    virtual ~FrameSource() = default;

    // Result: 0 with the next frame, 0x20 when there is none at present, or any other status. Called by one thread.
    virtual std::uint32_t next(PcanMessage& message) = 0;
};

enum class Entry : std::uint8_t { initialize, uninitialize, reset, write, getValue, setValue, getErrorText };
inline constexpr std::size_t entryCount = 7;

class ProofAdapter : public test::AdapterDefaults {
  public:
    static ProofAdapter& instance();

    // From now on frames come from here; null: none come. Answers are handed out first.
    void connect(FrameSource* source) { source_.store(source, std::memory_order_release); }
    void signal();

    // The next call of this entry point does nothing but give this status.
    void failOnce(Entry entry, std::uint32_t status) { statusOf(entry) = status; }

    // Frames that have been handed out.
    std::uint64_t framesRead() const { return framesRead_.load(std::memory_order_acquire); }

    // The status that was to be given and has not been, if any.
    std::uint32_t takeStatus(Entry entry) { return statusOf(entry).exchange(pcan::ok); }
    void forgetAnswers();

    // Behind the entry points.
    std::uint32_t initialize(const test::AdapterInitialization&) { return takeStatus(Entry::initialize); }
    std::uint32_t uninitialize(std::uint16_t) { return takeStatus(Entry::uninitialize); }
    std::uint32_t reset() { return takeStatus(Entry::reset); }
    std::uint32_t read(PcanMessage& message, PcanTimestamp& timestamp);
    std::uint32_t write(const PcanMessage& message);
    std::uint32_t getValue(std::uint8_t parameter, void* value, std::uint32_t size);
    std::uint32_t setValue(const test::AdapterSetting& setting);
    std::uint32_t getErrorText(std::uint16_t language, char* text);

  private:
    std::uint32_t readOnce(PcanMessage& message);
    bool takeAnswer(PcanMessage& message);
    std::atomic<std::uint32_t>& statusOf(Entry entry) { return statuses_[static_cast<std::size_t>(entry)]; }

    ArrivalSignal arrivals_;
    std::atomic<bool> signalled_ = false;
    std::atomic<FrameSource*> source_ = nullptr;
    std::atomic<std::uint64_t> framesRead_ = 0;
    std::array<std::atomic<std::uint32_t>, entryCount> statuses_{};

    std::mutex answersMutex_;
    std::deque<PcanMessage> answers_;
    std::atomic<bool> answersWait_ = false;
};

}  // namespace torvik::proof
