#include "core/device_table.h"

#include "core/set_assembly.h"
#include "support/counted_filter.h"
#include "support/record_test.h"

namespace torvik {
namespace {

using test::CountedFilter;
using test::RecordTest;

class Routing : public RecordTest {};

TEST_F(Routing, FindsADeviceByItsAnswerAndItsValueIdentifier) {
    DeviceRecord& record = activate(7, {.command = 0x200, .answer = 0x201, .value = 0x202});
    EXPECT_EQ(receiverOf(0x201), &record);
    EXPECT_EQ(receiverOf(0x202), &record);
}

TEST_F(Routing, DoesNotFindADeviceByItsCommandIdentifier) {
    activate(7, {.command = 0x200, .answer = 0x201, .value = 0x202});
    EXPECT_EQ(receiverOf(0x200), nullptr);
}

TEST_F(Routing, FindsNobodyForAnIdentifierOfNobody) {
    EXPECT_EQ(receiverOf(0x201), nullptr);
    EXPECT_EQ(receiverOf(0), nullptr);
    EXPECT_EQ(receiverOf(0xFFFFFFFF), nullptr);
}

TEST_F(Routing, GivesASharedIdentifierToTheLowestDeviceNumber) {
    activate(9);
    DeviceRecord& lowest = activate(2);
    activate(5);
    EXPECT_EQ(receiverOf(0x101), &lowest);
    EXPECT_EQ(receiverOf(0x102), &lowest);
}

TEST_F(Routing, GivesItToTheLowestNumberAlsoWhereItAnswersOneAndCarriesValuesOfTheOther) {
    activate(4, {.answer = 0x300, .value = 0x301});
    DeviceRecord& lowest = activate(3, {.answer = 0x310, .value = 0x300});
    EXPECT_EQ(receiverOf(0x300), &lowest);
}

TEST_F(Routing, IgnoresAnInactiveDevice) {
    activate(2);
    DeviceRecord& next = activate(5);
    deactivate(2);
    EXPECT_EQ(receiverOf(0x101), &next);
    deactivate(5);
    EXPECT_EQ(receiverOf(0x101), nullptr);
}

TEST_F(Routing, ReachesTheFirstAndTheLastRecord) {
    DeviceRecord& first = activate(0, {.answer = 0x400, .value = 0x401});
    DeviceRecord& last = activate(39, {.answer = 0x7FE, .value = 0x7FF});
    EXPECT_EQ(receiverOf(0x401), &first);
    EXPECT_EQ(receiverOf(0x7FF), &last);
}

TEST_F(Routing, WorksForIdentifiersAbove2047) {
    activate(9, {.answer = 2048, .value = 0x1FFFFFFF});
    DeviceRecord& lowest = activate(6, {.answer = 2048, .value = 0x12345});
    EXPECT_EQ(receiverOf(2048), &lowest);
    EXPECT_EQ(receiverOf(0x12345), &lowest);
    EXPECT_EQ(receiverOf(0x1FFFFFFF), &deviceRecord(9));
    EXPECT_EQ(receiverOf(2049), nullptr);
}

TEST_F(Routing, ForgetsAZeroedRecord) {
    DeviceRecord& record = activate(7);
    ASSERT_TRUE(zeroRecord(record));
    EXPECT_EQ(receiverOf(0x101), nullptr);
}

class LastError : public RecordTest {};

TEST_F(LastError, KeepsTheLatestCodeOfEachDevice) {
    setError(3, 1);
    setError(3, 2);
    setError(4, 5);
    EXPECT_EQ(lastErrorOf(3), 2U);
    EXPECT_EQ(lastErrorOf(4), 5U);
    EXPECT_EQ(deviceRecord(3).lastError, 2U);
}

TEST_F(LastError, HasOnePlaceForAllNumbersOutsideTheTable) {
    setError(std::uint8_t{40}, 0x30000100);
    EXPECT_EQ(lastErrorOf(255), 0x30000100U);
    EXPECT_EQ(lastErrorOf(39), 0U);
}

TEST(DeviceNumber, IsTheLowEightBits) {
    EXPECT_EQ(deviceNumber(256 + 7), 7);
    EXPECT_EQ(deviceNumber(-1), 255);
}

class Zeroing : public RecordTest {};

TEST_F(Zeroing, DestroysTheFilterObjectOnce) {
    int destroyed = 0;
    DeviceRecord& record = activate(1);
    record.filterObject = std::make_unique<CountedFilter>(destroyed);
    ASSERT_TRUE(zeroRecord(record));
    ASSERT_TRUE(zeroRecord(record));
    EXPECT_EQ(destroyed, 1);
}

TEST_F(Zeroing, ClearsEverythingOfTheDevice) {
    DeviceRecord& record = activate(1, {}, 3);
    allocateBuffers(record, 4);
    record.lastError = 5;
    record.answerCount = 2;
    record.busy = true;
    record.keepLock = true;
    ASSERT_TRUE(zeroRecord(record));
    EXPECT_FALSE(record.active);
    EXPECT_EQ(record.activeChannels, 0U);
    EXPECT_EQ(record.lastError, 0U);
    EXPECT_EQ(record.answerCount, 0U);
    EXPECT_FALSE(record.busy);
    EXPECT_FALSE(record.keepLock);
    EXPECT_EQ(bufferOf(record, 0).entries, nullptr);
}

TEST_F(Zeroing, WorksWhileTheMutexesDoNotExist) {
    DeviceRecord& record = activate(1);
    answerMutex.close();
    valueMutex.close();
    EXPECT_TRUE(zeroRecord(record));
    EXPECT_FALSE(record.active);
}

TEST_F(Zeroing, Record_WhoseValuesAFormerOwnerOfTheMutexMayUse_LeavesTheBuffersToIt) NO_THREAD_SAFETY_ANALYSIS {
    DeviceRecord& record = activate(1);
    allocateBuffers(record, 4);
    std::array<std::unique_ptr<ValueEntry[]>, channelLimit> left;
    ASSERT_TRUE(valueMutex.lockFor(std::chrono::milliseconds(0)));
    {
        const platform::TimedLock formerOwner(valueMutex);
        valueMutex.close();
        for (std::size_t channel = 0; channel < channelLimit; ++channel)
            left[channel].reset(record.valueBuffer[channel].entries.get());
        ASSERT_TRUE(zeroRecord(record));
        EXPECT_EQ(bufferOf(record, 0).entries, nullptr);
        // Would be freed memory otherwise.
        for (const auto& entries : left)
            entries[3].value = 1.0;
    }
    EXPECT_FALSE(valueMutex.abandoned());
}

}  // namespace
}  // namespace torvik
