// What an exchange with a device must come to, reckoned by the rules of the command transaction alone: one lock, one
// command, answers in the order of their arrival, fixed time limits. Shares no code with the library.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "faults/device_make.h"
#include "faults/fault_plan.h"

namespace torvik::test {

namespace expected_code {
inline constexpr std::uint32_t deviceWrite = 223;
inline constexpr std::uint32_t noValueIdentifier = 249;
inline constexpr std::uint32_t firmwareUnsupported = 0x30000062;
inline constexpr std::uint32_t answerTimeout = 0x30000058;
inline constexpr std::uint32_t frequencyOutOfRange = 0x30000064;
inline constexpr std::uint32_t parameterExceedance = 0x30000100;
inline constexpr std::uint32_t internalCallFailed = 0x30000105;
inline constexpr std::uint32_t notActive = 0x30000113;
}  // namespace expected_code

class ExpectedExchange {
  public:
    enum class Answer { good, refused, missing };

    explicit ExpectedExchange(const FaultPlan& plan, const DeviceMake& make = {}) : plan_(plan), make_(make) {}

    bool knows(std::uint32_t sinceFirmware) const { return make_.firmware >= sinceFirmware; }
    std::uint32_t protocolKind() const { return make_.protocolKind; }

    // Writes a command. False: the code is stored.
    bool send(std::uint8_t command);

    // Takes an answer; a missing one stores its code, a refusal does not.
    Answer take();

    // Sends and takes.
    Answer exchange(std::uint8_t command) { return send(command) ? take() : Answer::missing; }

    // The same; a refusal is stored too. False: there is no good answer.
    bool ask(std::uint8_t command);
    bool askNext();

    // The same for answers that carry nothing: a missing one stores the code of a failed internal call.
    bool acknowledge(std::uint8_t command);
    bool takeAcknowledgement();

    // False: a release has come.
    bool pause(std::chrono::milliseconds duration);

    // A restart of the device; too old a firmware fails it.
    std::int32_t restart();
    // The same as the end of a setting, which succeeds without it.
    std::int32_t restartAfterSetting() { return knows(firmware_with::reset) ? restart() : (restart(), 0); }

    void store(std::uint32_t code) { lastError_ = code; }
    void storeRefusal() { lastError_ = refusal_; }
    std::int32_t fail(std::uint32_t code) {
        store(code);
        return -1;
    }

    // What has come of it.
    std::uint32_t lastError() const { return lastError_; }
    std::chrono::milliseconds elapsed() const { return now_; }
    const std::vector<std::uint8_t>& sent() const { return sent_; }
    std::size_t waitingAnswers() const { return ring_.size(); }
    bool lateAnswerOutstanding() const { return lateAt_.has_value(); }
    bool cutShort() const { return cut_; }
    // An answer that carries data has not been taken as it was sent.
    bool dataLost() const { return dataLost_; }
    // The stream, when the exchange has switched it.
    std::optional<bool> streaming() const { return streaming_; }

  private:
    void deliver(std::size_t position);
    void advance(std::chrono::milliseconds until);
    bool failsToWrite(std::size_t position) const;

    FaultPlan plan_;
    DeviceMake make_;
    std::size_t position_ = 0;
    std::chrono::milliseconds now_{0};
    std::deque<std::uint8_t> ring_;  // statuses
    std::optional<std::chrono::milliseconds> lateAt_;
    std::optional<std::chrono::milliseconds> releaseAt_;
    bool silent_ = false;  // no answer comes any more, and no frame goes out
    bool cut_ = false;
    bool dataLost_ = false;
    std::uint8_t refusal_ = 0;
    std::uint32_t lastError_ = 0;
    std::vector<std::uint8_t> sent_;
    std::optional<bool> streaming_;
};

}  // namespace torvik::test
