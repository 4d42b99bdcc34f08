// One command to a device and its answer.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>

#include "core/command.h"
#include "core/device_record.h"

namespace torvik {

inline constexpr std::chrono::milliseconds busyLimit(4000);
inline constexpr std::chrono::milliseconds answerLimit(2000);

// Takes the device's busy lock and writes the command. The lock is kept until receiveAnswer has taken the answer;
// requestValues and resetDevice draw no answer and do without the lock.
// Result: 0; otherwise lastError is set: 48 arguments, 66 busy lock or a release of the device, 223 write.
std::uint8_t sendCommand(std::uint8_t deviceNo, Command command, std::span<const std::uint8_t> parameters);

// Waits for the next answer of a device number 0..39, copies its eight bytes to `answer`, writes 6 to `dataLength` and
// frees the busy lock unless keepLock is set.
// Result: 0; otherwise lastError is set: -1 no answer, 228 a pointer is null, 212 answerMutex not obtained.
std::int32_t receiveAnswer(std::uint8_t deviceNo, std::uint8_t* answer, std::uint8_t* dataLength);

// receiveAnswer for answers that carry nothing but a status. Result: 0 or -1.
std::int32_t expectAck(std::uint8_t deviceNo);

// Clears keepLock and frees the busy lock, whoever holds it.
void freeTransaction(DeviceRecord& record);

// While it lives, the device stays reserved after an answer, for commands that draw several. To be made after the
// command is sent; frees the busy lock at its end.
class KeptTransaction {
  public:
    explicit KeptTransaction(DeviceRecord& record) : record_(record) { record_.keepLock = true; }
    ~KeptTransaction() { freeTransaction(record_); }
    KeptTransaction(const KeptTransaction&) = delete;
    KeptTransaction& operator=(const KeptTransaction&) = delete;

  private:
    DeviceRecord& record_;
};

// Waits inside a record. False: the record is being released, and the wait was cut short.
bool pauseCall(DeviceRecord& record, std::chrono::milliseconds duration);

// Lets every call that waits inside the record look at its gate again.
void wakeCalls(DeviceRecord& record);

// Appends an answer that came for this set-up of the record to its ring, counts it and wakes the call that waits for
// it. False: answerMutex not obtained, or the record has been set up anew; nothing is counted then. Called by the
// receive thread only.
bool storeAnswer(DeviceRecord& record, std::uint32_t setUpCount, const AnswerSlot& answer);

}  // namespace torvik
