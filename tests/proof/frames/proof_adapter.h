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

// Sees every frame that is handed out, in order and before the library does.
class FrameObserver {
  public:
    virtual ~FrameObserver() = default;
    virtual void handedOut(const PcanMessage& message) = 0;
};

enum class Entry : std::uint8_t { initialize, uninitialize, reset, read, write, getValue, setValue, getErrorText };
inline constexpr std::size_t entryCount = 8;

// Every status that the adapter library documents, and a few that it does not.
inline constexpr std::array<std::uint32_t, 30> adapterStatuses = {
    0x1,     0x2,     0x4,     0x8,     0x10,    0x20,      0x40,      0x80,      0x100,      0x200,
    0x400,   0x800,   0x1000,  0x1400,  0x1800,  0x1C00,    0x2000,    0x4000,    0x8000,     0x10000,
    0x1001C, 0x20000, 0x40000, 0x4001C, 0x80000, 0x2000000, 0x4000000, 0x8000000, 0x80000000, 0xFFFFFFFF};

// How often an entry point has been called and has given each of these statuses.
struct EntryRecord {
    std::uint64_t calls = 0;
    std::uint64_t callsSinceOpening = 0;
    std::array<std::uint64_t, adapterStatuses.size()> given{};
    std::array<std::uint64_t, adapterStatuses.size()> givenLater{};  // not by the first call after an opening
};

class ProofAdapter : public test::AdapterDefaults {
  public:
    static ProofAdapter& instance();

    // From now on frames come from here; null: none come. Answers are handed out first.
    void connect(FrameSource* source) { source_.store(source, std::memory_order_release); }
    void observe(FrameObserver* observer) { observer_.store(observer, std::memory_order_release); }
    void signal();

    // From now on the queue seems empty after every frame, and the next frame comes with a signal of its own.
    void handOutSingly() { singly_ = true; }

    // The next calls of this entry point, other than read, do nothing but give this status.
    void fail(Entry entry, std::uint32_t status, std::uint32_t times = 1);

    // Result: how many calls were still to fail.
    std::uint32_t stopFailing(Entry entry);
    void forgetAnswers();
    bool answersWait() const { return answersWait_.load(std::memory_order_acquire); }
    // False: the library registers an event of its own.
    bool hasDescriptor() const { return arrivals_.descriptor() >= 0; }

    // Frames that have been handed out.
    std::uint64_t framesRead() const { return framesRead_.load(std::memory_order_acquire); }
    // How often the queue seemed empty.
    std::uint64_t emptyReads() const { return emptyReads_.load(std::memory_order_acquire); }
    EntryRecord recordOf(Entry entry) const;

    // Behind the entry points.
    std::uint32_t initialize(const test::AdapterInitialization&);
    std::uint32_t uninitialize(std::uint16_t) { return enter(Entry::uninitialize); }
    std::uint32_t reset() { return enter(Entry::reset); }
    std::uint32_t read(PcanMessage& message, PcanTimestamp& timestamp);
    std::uint32_t write(const PcanMessage& message);
    std::uint32_t getValue(std::uint8_t parameter, void* value, std::uint32_t size);
    std::uint32_t setValue(const test::AdapterSetting& setting);
    std::uint32_t getErrorText(std::uint16_t language, char* text);

  private:
    struct Failure {
        std::uint32_t status = pcan::ok;
        std::uint32_t times = 0;
    };

    std::uint32_t readOnce(PcanMessage& message);
    std::uint32_t readNext(PcanMessage& message);
    bool pauses();
    bool takeAnswer(PcanMessage& message);
    std::uint32_t enter(Entry entry);
    void count(Entry entry, std::uint32_t status);

    ArrivalSignal arrivals_;
    std::atomic<bool> signalled_ = false;
    std::atomic<FrameSource*> source_ = nullptr;
    std::atomic<std::uint64_t> framesRead_ = 0;
    std::atomic<std::uint64_t> emptyReads_ = 0;
    std::atomic<FrameObserver*> observer_ = nullptr;
    std::atomic<bool> singly_ = false;
    bool frameGiven_ = false;  // since the queue last seemed empty

    mutable std::mutex entriesMutex_;
    std::array<Failure, entryCount> failures_{};
    std::array<EntryRecord, entryCount> records_{};

    std::mutex answersMutex_;
    std::deque<PcanMessage> answers_;
    std::atomic<bool> answersWait_ = false;
};

}  // namespace torvik::proof
