#include "core/transaction.h"

#include <gmock/gmock.h>

#include <future>
#include <optional>
#include <vector>

#include "core/ask.h"
#include "core/call_control.h"
#include "support/fake_adapter.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using test::answerTimeout;
using test::FakeAdapter;
using test::HeldElsewhere;
using test::RecordTest;
using test::runWithTimeouts;
using test::TestClock;
using test::given::deviceNo;

constexpr std::uint32_t internalCallFailed = 0x30000105;
constexpr std::uint32_t notActive = 0x30000113;

class Transaction : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(deviceNo, {.command = 0x200, .answer = 0x201, .value = 0x202});
        record.channelHandle = 0x51;
    }

    std::uint8_t send(Command command = Command::mode, const Parameters& parameters = {}) {
        return sendCommand(deviceNo, command, parameters.bytes());
    }

    std::int32_t receive() { return receiveAnswer(deviceNo, answer.data(), &dataLength); }

    bool arrive(std::uint8_t status, std::uint8_t mark = 0) {
        return storeAnswer(record, record.setUpCount, {.data = {0x40, status, mark}, .timestamp = 0});
    }

    static std::size_t framesWritten() { return FakeAdapter::instance().written().size(); }

    DeviceRecord& record = deviceRecord(deviceNo);
    TestClock clock;
    std::array<std::uint8_t, 8> answer{};
    std::uint8_t dataLength = 0;
};

TEST_F(Transaction, WritesHeaderCommandAndParameters) {
    EXPECT_EQ(send(Command::canSetting, Parameters().u8(2).u8(0xFE)), 0);
    ASSERT_EQ(framesWritten(), 1U);
    const PcanMessage message = FakeAdapter::instance().written().front();
    EXPECT_EQ(message.id, 0x200U);
    EXPECT_EQ(message.type, 0);
    EXPECT_EQ(message.length, 4);
    EXPECT_THAT(message.data, testing::ElementsAre(0x82, 0x8C, 2, 0xFE, 0, 0, 0, 0));
}

TEST_F(Transaction, WritesSixParametersInAFrameOfEight) {
    EXPECT_EQ(send(Command::mode, Parameters().u8(1).u8(2).u8(3).u8(4).u8(5).u8(6)), 0);
    ASSERT_EQ(framesWritten(), 1U);
    EXPECT_EQ(FakeAdapter::instance().written().front().length, 8);
    EXPECT_THAT(FakeAdapter::instance().written().front().data, testing::ElementsAre(0x86, 0x26, 1, 2, 3, 4, 5, 6));
}

TEST_F(Transaction, HoldsTheBusyLockUntilTheAnswerIsTaken) {
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(record.busy);
    ASSERT_TRUE(arrive(0));
    EXPECT_EQ(receive(), 0);
    EXPECT_FALSE(record.busy);
}

TEST_F(Transaction, TakesTheWholeAnswer) {
    ASSERT_TRUE(storeAnswer(record, record.setUpCount, {.data = {0x47, 1, 2, 3, 4, 5, 6, 7}, .timestamp = 0}));
    EXPECT_EQ(receive(), 0);
    EXPECT_THAT(answer, testing::ElementsAre(0x47, 1, 2, 3, 4, 5, 6, 7));
    EXPECT_EQ(dataLength, 6);
    EXPECT_EQ(record.answerCount, 0U);
}

TEST_F(Transaction, TakesAnAnswerTheMomentItArrives) {
    auto received = std::async(std::launch::async, [this] { return receive(); });
    ASSERT_TRUE(clock.untilWaiting());
    ASSERT_TRUE(arrive(3));
    EXPECT_EQ(received.get(), 0);
    EXPECT_EQ(answer[1], 3);
    EXPECT_EQ(clock.elapsed(), 0ms);
}

TEST_F(Transaction, TakesAnAnswerInTheLastMillisecond) {
    auto received = std::async(std::launch::async, [this] { return receive(); });
    ASSERT_TRUE(clock.untilWaiting());
    clock.advance(1999ms);
    ASSERT_TRUE(clock.untilWaiting());
    ASSERT_TRUE(arrive(3));
    EXPECT_EQ(received.get(), 0);
}

TEST_F(Transaction, KeepsTheBusyLockAfterAnAnswerWhileKeepLockIsSet) {
    EXPECT_EQ(send(), 0);
    record.keepLock = true;
    ASSERT_TRUE(arrive(0));
    ASSERT_TRUE(arrive(0));
    EXPECT_EQ(receive(), 0);
    EXPECT_TRUE(record.busy);
    EXPECT_EQ(receive(), 0);
    EXPECT_TRUE(record.busy);
    freeTransaction(record);
    EXPECT_FALSE(record.busy);
    EXPECT_FALSE(record.keepLock);
}

TEST_F(Transaction, GivesUpAfterTwoSecondsWithoutAnAnswer) {
    record.keepLock = true;
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(runWithTimeouts(clock, [this] { return receive(); }), -1);
    EXPECT_EQ(record.lastError, answerTimeout);
    EXPECT_EQ(clock.elapsed(), 2000ms);
    EXPECT_FALSE(record.busy);
    EXPECT_FALSE(record.keepLock);
}

TEST_F(Transaction, TakesALateAnswerForTheNextOne) {
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(runWithTimeouts(clock, [this] { return receive(); }), -1);
    ASSERT_TRUE(arrive(0, 1));
    for (std::uint8_t next = 2; next <= 4; ++next) {
        EXPECT_EQ(send(), 0);
        ASSERT_TRUE(arrive(0, next));
        EXPECT_EQ(receive(), 0);
        EXPECT_EQ(answer[2], next - 1);
    }
    EXPECT_EQ(record.answerCount, 1U);
}

TEST_F(Transaction, ForgetsLateAnswersWhenTheRecordIsZeroed) {
    ASSERT_TRUE(arrive(0, 1));
    ASSERT_TRUE(zeroRecord(record));
    activate(deviceNo);
    ASSERT_TRUE(arrive(0, 2));
    EXPECT_EQ(receive(), 0);
    EXPECT_EQ(answer[2], 2);
}

TEST_F(Transaction, LetsA65thAnswerOverwriteTheOldest) {
    for (std::uint8_t mark = 1; mark <= 65; ++mark)
        ASSERT_TRUE(arrive(0, mark));
    EXPECT_EQ(record.answerCount, 65U);
    EXPECT_EQ(answerSlotOf(record, 0).data[2], 65);
    EXPECT_EQ(receive(), 0);
    EXPECT_EQ(answer[2], 65);
    EXPECT_EQ(receive(), 0);
    EXPECT_EQ(answer[2], 2);
    EXPECT_EQ(record.answerCount, 63U);
}

TEST_F(Transaction, TakesAnswersInOrderAcrossTheEndOfTheRing) {
    for (std::uint8_t mark = 1; mark <= 200; ++mark) {
        ASSERT_TRUE(arrive(0, mark));
        ASSERT_EQ(receive(), 0);
        ASSERT_EQ(answer[2], mark);
    }
}

TEST_F(Transaction, BreaksTheBusyLockOfAnotherCallAfterFourSeconds) {
    EXPECT_EQ(send(), 0);
    record.keepLock = true;
    EXPECT_EQ(runWithTimeouts(clock, [this] { return send(); }), 66);
    EXPECT_EQ(record.lastError, 235U);
    EXPECT_EQ(clock.elapsed(), 4000ms);
    EXPECT_FALSE(record.busy);
    EXPECT_FALSE(record.keepLock);
    EXPECT_EQ(framesWritten(), 1U);
    EXPECT_EQ(send(), 0);
}

TEST_F(Transaction, WaitsForTheBusyLockUntilTheOtherCallHasItsAnswer) {
    EXPECT_EQ(send(), 0);
    auto second = std::async(std::launch::async, [this] { return send(Command::firmwareVersion); });
    ASSERT_TRUE(clock.untilWaiting());
    clock.advance(3999ms);
    ASSERT_TRUE(clock.untilWaiting());
    EXPECT_EQ(framesWritten(), 1U);
    ASSERT_TRUE(arrive(0));
    EXPECT_EQ(receive(), 0);
    EXPECT_EQ(second.get(), 0);
    EXPECT_EQ(framesWritten(), 2U);
    EXPECT_TRUE(record.busy);
}

TEST_F(Transaction, OfOneDeviceDoesNotHoldUpAnother) {
    activate(6, {.command = 0x210, .answer = 0x211, .value = 0x212});
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(sendCommand(6, Command::mode, {}), 0);
    EXPECT_EQ(framesWritten(), 2U);
}

TEST_F(Transaction, SendsCommandsWithoutAnswerWhileAnotherCallHoldsTheBusyLock) {
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(send(Command::requestValues), 0);
    EXPECT_EQ(send(Command::resetDevice), 0);
    EXPECT_EQ(framesWritten(), 3U);
    EXPECT_TRUE(record.busy);
    EXPECT_EQ(clock.elapsed(), 0ms);
}

TEST_F(Transaction, DoesNotTakeTheBusyLockForCommandsWithoutAnswer) {
    EXPECT_EQ(send(Command::requestValues), 0);
    EXPECT_FALSE(record.busy);
}

TEST_F(Transaction, FreesTheBusyLockOfAnotherCallWhenACommandWithoutAnswerFails) {
    EXPECT_EQ(send(), 0);
    FakeAdapter::instance().failWrites(0x80);
    EXPECT_EQ(send(Command::requestValues), 223);
    EXPECT_FALSE(record.busy);
}

TEST_F(Transaction, FailsWithWhatTheAdapterRefusesAndLeavesKeepLock) {
    record.keepLock = true;
    FakeAdapter::instance().failWrites(0x80);
    EXPECT_EQ(send(), 223);
    EXPECT_EQ(record.lastError, 223U);
    EXPECT_FALSE(record.busy);
    EXPECT_TRUE(record.keepLock);
}

TEST_F(Transaction, FailsWhileTheAdapterIsClosed) {
    libraryState.adapterOpen = false;
    EXPECT_EQ(send(), 223);
    EXPECT_EQ(record.lastError, 223U);
    EXPECT_FALSE(record.busy);
    EXPECT_EQ(framesWritten(), 0U);
}

TEST_F(Transaction, RefusesMoreThanSixParameters) {
    for (const std::size_t length : {7U, 14U, 254U, 255U, 256U}) {
        record.lastError = 0;
        const std::vector<std::uint8_t> parameters(length);
        EXPECT_EQ(sendCommand(deviceNo, Command::mode, parameters), 48);
        EXPECT_EQ(record.lastError, 48U);
    }
    EXPECT_EQ(framesWritten(), 0U);
    EXPECT_FALSE(record.busy);
}

TEST_F(Transaction, RefusesDeviceNumbersFromFortyOn) {
    for (const std::uint8_t outside : std::to_array<std::uint8_t>({40, 255})) {
        lastErrorOf(outside) = 0;
        EXPECT_EQ(sendCommand(outside, Command::mode, {}), 48);
        EXPECT_EQ(lastErrorOf(outside), 48U);
    }
    EXPECT_EQ(framesWritten(), 0U);
}

TEST_F(Transaction, RefusesBadArgumentsWithoutWaitingForTheBusyLock) {
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(sendCommand(deviceNo, Command::mode, std::array<std::uint8_t, 7>{}), 48);
    EXPECT_EQ(clock.elapsed(), 0ms);
}

TEST_F(Transaction, RefusesNullPointersAndKeepsTheAnswer) {
    ASSERT_TRUE(arrive(0));
    for (const bool answerIsNull : {true, false}) {
        record.lastError = 0;
        record.busy = true;
        record.keepLock = true;
        EXPECT_EQ(receiveAnswer(deviceNo, answerIsNull ? nullptr : answer.data(), answerIsNull ? &dataLength : nullptr),
                  228);
        EXPECT_EQ(record.lastError, 228U);
        EXPECT_FALSE(record.busy);
        EXPECT_FALSE(record.keepLock);
    }
    EXPECT_EQ(record.answerCount, 1U);
}

TEST_F(Transaction, PrefersTheAnswerTimeoutToTheNullPointer) {
    EXPECT_EQ(runWithTimeouts(clock, [] { return receiveAnswer(deviceNo, nullptr, nullptr); }), -1);
    EXPECT_EQ(record.lastError, answerTimeout);
}

TEST_F(Transaction, GivesUpAfterTenSecondsWithoutTheAnswerMutex) {
    EXPECT_EQ(send(), 0);
    record.keepLock = true;
    ASSERT_TRUE(arrive(0));
    const HeldElsewhere held(answerMutex);
    EXPECT_EQ(runWithTimeouts(clock, [this] { return receive(); }), 212);
    EXPECT_EQ(record.lastError, 212U);
    EXPECT_EQ(clock.elapsed(), 10000ms);
    EXPECT_FALSE(record.busy);
    EXPECT_FALSE(record.keepLock);
    EXPECT_EQ(record.answerCount, 1U);
}

TEST_F(Transaction, DropsAnArrivingAnswerAfterTenSecondsWithoutTheAnswerMutex) {
    const HeldElsewhere held(answerMutex);
    EXPECT_FALSE(runWithTimeouts(clock, [this] { return arrive(0); }));
    EXPECT_EQ(clock.elapsed(), 10000ms);
    EXPECT_EQ(record.answerCount, 0U);
}

TEST_F(Transaction, GivesOneAnswerToOneOfTwoWaitingCalls) {
    const auto wait = [] {
        std::array<std::uint8_t, 8> taken{};
        std::uint8_t length = 0;
        return receiveAnswer(deviceNo, taken.data(), &length);
    };
    auto first = std::async(std::launch::async, wait);
    auto second = std::async(std::launch::async, wait);
    ASSERT_TRUE(clock.untilWaiting(2));
    ASSERT_TRUE(arrive(0));
    // The other one's time has to come before both are done.
    while (first.wait_for(1ms) != std::future_status::ready && second.wait_for(1ms) != std::future_status::ready) {
    }
    EXPECT_EQ(clock.elapsed(), 0ms);
    EXPECT_EQ(record.answerCount, 0U);
    clock.advance(2000ms);
    EXPECT_EQ(first.get() + second.get(), -1);
    EXPECT_EQ(record.answerCount, 0U);
}

TEST_F(Transaction, EndsAWaitForAnAnswerWhenTheDeviceIsReleased) {
    auto received = std::async(std::launch::async, [this] { return receive(); });
    ASSERT_TRUE(clock.untilWaiting());
    beginExclusion(record);
    EXPECT_EQ(received.get(), -1);
    endExclusion(record);
    EXPECT_EQ(record.lastError, notActive);
    EXPECT_EQ(clock.elapsed(), 0ms);
}

TEST_F(Transaction, EndsAWaitForTheBusyLockWhenTheDeviceIsReleased) {
    EXPECT_EQ(send(), 0);
    auto sent = std::async(std::launch::async, [this] { return send(); });
    ASSERT_TRUE(clock.untilWaiting());
    beginExclusion(record);
    EXPECT_NE(sent.get(), 0);
    endExclusion(record);
    EXPECT_EQ(record.lastError, notActive);
    EXPECT_TRUE(record.busy);
    EXPECT_EQ(framesWritten(), 1U);
}

TEST_F(Transaction, PausesForAsLongAsAsked) {
    EXPECT_TRUE(runWithTimeouts(clock, [this] { return pauseCall(record, 300ms); }));
    EXPECT_EQ(clock.elapsed(), 300ms);
}

TEST_F(Transaction, EndsAPauseWhenTheDeviceIsReleased) {
    auto paused = std::async(std::launch::async, [this] { return pauseCall(record, 300ms); });
    ASSERT_TRUE(clock.untilWaiting());
    beginExclusion(record);
    EXPECT_FALSE(paused.get());
    endExclusion(record);
    EXPECT_EQ(clock.elapsed(), 0ms);
}

TEST_F(Transaction, AcknowledgesAnAnswerBelow0x40) {
    ASSERT_TRUE(arrive(0x3F));
    EXPECT_EQ(acknowledge(deviceNo, Command::clearMaximum, Parameters().u8(1)), 0);
    EXPECT_EQ(record.lastError, 0U);
}

TEST_F(Transaction, StoresTheStatusOfARefusal) {
    ASSERT_TRUE(arrive(0x52));
    EXPECT_EQ(acknowledge(deviceNo, Command::clearMaximum, Parameters().u8(1)), -1);
    EXPECT_EQ(record.lastError, 0x52U);
    EXPECT_FALSE(record.busy);
}

TEST_F(Transaction, ReplacesTheReasonWhereAnAcknowledgementDoesNotCome) {
    EXPECT_EQ(runWithTimeouts(clock, [] { return expectAck(deviceNo); }), -1);
    EXPECT_EQ(record.lastError, internalCallFailed);
    EXPECT_EQ(clock.elapsed(), 2000ms);
}

TEST_F(Transaction, AsksAndGivesTheAnswer) {
    ASSERT_TRUE(storeAnswer(record, record.setUpCount, {.data = {0x40, 0, 0, 4, 0, 1}, .timestamp = 0}));
    const std::optional<AnswerView> version = ask(deviceNo, Command::firmwareVersion, {});
    ASSERT_TRUE(version.has_value());
    EXPECT_EQ(version->u32(), 0x00040001U);
}

TEST_F(Transaction, AsksAndStoresTheStatusOfARefusal) {
    ASSERT_TRUE(arrive(0x40));
    EXPECT_FALSE(ask(deviceNo, Command::firmwareVersion, {}).has_value());
    EXPECT_EQ(record.lastError, 0x40U);
}

TEST_F(Transaction, ExchangesARefusalLikeAnyAnswer) {
    ASSERT_TRUE(arrive(0x40));
    const std::optional<AnswerView> refusal = exchangeAnswer(deviceNo, Command::mode, {});
    ASSERT_TRUE(refusal.has_value());
    EXPECT_TRUE(refusal->refused());
    EXPECT_EQ(record.lastError, 0U);
}

}  // namespace
}  // namespace torvik
