#pragma once

#include <array>
#include <cstdint>
#include <deque>

#include "bench.hpp"
#include "device_memory.hpp"
#include "frame.hpp"
#include "reply.hpp"
#include "settings.hpp"
#include "stream_schedule.hpp"
#include "value_stream.hpp"

namespace virtual_adapter {

// A simulated amplifier: carries commands out, and is a node of the bus with frames to send, one after the other: the
// set it has begun, then answers and sets in the order in which they became ready.
class Amplifier {
  public:
    explicit Amplifier(const AmplifierConfig& config);
    Amplifier(const Amplifier&) = delete;
    Amplifier& operator=(const Amplifier&) = delete;

    // The device.
    [[nodiscard]] const AmplifierConfig& config() const { return config_; }
    [[nodiscard]] ValueStream& values() { return values_; }
    [[nodiscard]] const ValueStream& values() const { return values_; }
    [[nodiscard]] DeviceMemory& memory() { return memory_; }
    using ProtocolErrors = std::array<std::uint32_t, 8>;
    [[nodiscard]] ProtocolErrors& protocolErrors() { return protocolErrors_; }
    [[nodiscard]] bool identifierSet() const { return identifierSet_; }
    void noteIdentifierSet() { identifierSet_ = true; }

    // Settings act at once, but for the identifiers: those stay as they are until the next reset.
    [[nodiscard]] const Settings& settings() const { return settings_.present(); }
    template <class Change>
    void changeSettings(Kept kept, Nanoseconds now, Change change) {
        settings_.change(kept, change);
        bringIntoForce(now);
    }
    void storeSettings(std::uint8_t set) { settings_.store(set); }
    void loadSettings(std::uint8_t set, Nanoseconds now);
    // Brings the active calibration of the six-axis sensor into force.
    void useActiveCalibration();
    // Off the bus for a while; whatever was about to be sent is lost, and so are the settings that were not stored.
    void restart(Nanoseconds now);

    void requestSet(Nanoseconds now);
    void dropRequestedSets();

    // Whether commands reach it at all.
    [[nodiscard]] bool onBus(Nanoseconds now) const { return now >= backOnBus_; }
    [[nodiscard]] std::uint32_t commandId() const { return identifiers_.command; }

    // Whether a command is answered at all, be it with an error.
    [[nodiscard]] bool answers(std::uint8_t command) const;
    // Carries out a command frame of at least two bytes.
    Reply execute(const Frame& command, Nanoseconds now);

    // The node.
    static constexpr std::size_t kMostWaiting = 65'536;  // answers, and sets asked for

    void connect(Nanoseconds now);
    // The stream goes on with the first instant after `now`.
    void leaveOutMissed(Nanoseconds now);
    void hold(bool on, Nanoseconds now);
    // False: as many are waiting as can.
    bool queueAnswer(const Reply::Answer& answer, Nanoseconds ready);

    // When its next frame is ready, what it is, and its identifier.
    [[nodiscard]] Nanoseconds headTime() const { return headTime_; }
    [[nodiscard]] bool headIsAnswer() const { return !setBegun() && answerTime() <= setTime(); }
    [[nodiscard]] std::uint32_t headId() const { return headIsAnswer() ? identifiers_.answer : identifiers_.value; }

    enum class Sent : std::uint8_t { nothing, answer, value };
    // Takes the frame whose turn it is; `begun` is when it gets the bus. Nothing: all frames of a set are left out.
    Sent takeFrame(Frame& frame, Nanoseconds begun);
    [[nodiscard]] bool setBegun() const { return setPosition_ < setSize_; }

  private:
    struct Pending {
        Nanoseconds ready;
        Frame frame;
    };

    struct Identifiers {
        std::uint32_t command;
        std::uint32_t answer;
        std::uint32_t value;
    };

    void bringIntoForce(Nanoseconds now);
    void forgetUnsent();
    [[nodiscard]] Nanoseconds setTime() const;
    [[nodiscard]] Nanoseconds answerTime() const { return answers_.empty() ? kNever : answers_.front().ready; }
    void beginSet(Nanoseconds begun);
    void restartSchedule(Nanoseconds now);
    void updateHead();

    AmplifierConfig config_;
    ValueStream values_{config_};
    SettingsMemory settings_{factorySettings(config_)};
    DeviceMemory memory_;
    Identifiers identifiers_;
    ProtocolErrors protocolErrors_{};
    bool identifierSet_ = false;
    bool streaming_;
    bool held_ = false;
    Nanoseconds backOnBus_ = 0;

    std::deque<Pending> answers_;
    std::deque<Nanoseconds> requestedSets_;
    StreamSchedule schedule_;
    ValueStream::Frames set_;
    std::size_t setSize_ = 0;
    std::size_t setPosition_ = 0;
    Nanoseconds setReady_ = kNever;
    Nanoseconds headTime_ = kNever;
};

}  // namespace virtual_adapter
