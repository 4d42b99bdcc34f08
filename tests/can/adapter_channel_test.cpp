#include "can/adapter_channel.h"

#include <chrono>
#include <thread>

#include "support/adapter_test.h"

namespace torvik {
namespace {

using test::AdapterTest;
using test::failEvent;
using test::failThread;
using test::FakeAdapter;

std::uint32_t failMutex(platform::FaultPoint point) {
    return point == platform::FaultPoint::mutexCreate ? 8 : 0;
}

class AdapterChannel : public AdapterTest {};

TEST_F(AdapterChannel, IsOpenedWithTheHandleOfTheAdapterType) {
    const std::pair<std::uint8_t, std::uint16_t> handles[] = {{1, 0x51}, {2, 0x41}, {3, 0x61}, {4, 0x01}};
    for (const auto& [adapterType, handle] : handles) {
        EXPECT_EQ(open(adapterType), 0);
        EXPECT_EQ(adapter.initialized(), (FakeAdapter::Initialization{.channel = handle, .baudCode = 0x001C}));
        EXPECT_TRUE(libraryState.adapterOpen);
        close();
    }
}

TEST_F(AdapterChannel, IsOpenedWithOneMegabitForBaudCodeZero) {
    EXPECT_EQ(open(1, 0), 0);
    EXPECT_EQ(adapter.initialized().baudCode, 0x0014);
    EXPECT_EQ(libraryState.baudCode, 0x0014);
}

TEST_F(AdapterChannel, RefusesAnUnknownAdapterTypeWithoutACode) {
    for (const std::uint8_t adapterType : std::to_array<std::uint8_t>({0, 5, 255})) {
        setError(deviceNo, 1);
        EXPECT_EQ(open(adapterType), refused);
        EXPECT_EQ(lastErrorOf(deviceNo), 0U);
        EXPECT_FALSE(libraryState.adapterOpen);
    }
}

TEST_F(AdapterChannel, StoresTheStatusOfAFailedInitialisation) {
    adapter.failInitialize(0x400);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0x400U);
    EXPECT_FALSE(libraryState.adapterOpen);
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterChannel, StoresTheStatusOfARefusedAutomaticReset) {
    adapter.failSetValue(pcan::busOffAutoReset, 0x4000);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0x4000U);
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterChannel, FailsWithoutTheReceiveEvent) {
    platform::setFaultHook(failEvent);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0xF4U);
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterChannel, FailsWithoutTheMutexes) {
    platform::setFaultHook(failMutex);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0x30000111U);
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterChannel, StoresAThreadThatDoesNotStartForDeviceZero) {
    platform::setFaultHook(failThread);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(0), 0x30000109U);
    EXPECT_EQ(lastErrorOf(deviceNo), 0U);
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterChannel, HasItsQueuesResetBeforeItIsOpen) {
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(adapter.resets(), 1U);
}

TEST_F(AdapterChannel, IsReadWithoutASignalToo) {
    ASSERT_EQ(open(), 0);
    DeviceRecord& record = activate(deviceNo);
    adapter.queueFrame(0x101, {0x40});
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (record.answerCount == 0 && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(record.answerCount, 1U);
}

TEST_F(AdapterChannel, LosesEveryRecordWhenItIsOpened) {
    activate(7);
    libraryState.initialisedDevices = 1;
    ASSERT_EQ(open(), 0);
    EXPECT_FALSE(deviceRecord(7).active);
    EXPECT_EQ(libraryState.initialisedDevices, 0);
}

TEST_F(AdapterChannel, EndsItsThreadAndItsMutexesWhenItIsClosed) {
    ASSERT_EQ(open(), 0);
    activate(deviceNo);
    close();
    EXPECT_FALSE(threadExists());
    EXPECT_FALSE(libraryState.adapterOpen);
    EXPECT_FALSE(libraryState.receiveEvent.exists());
    EXPECT_FALSE(answerMutex.exists());
    EXPECT_FALSE(valueMutex.exists());
    EXPECT_FALSE(deviceRecord(deviceNo).active);
}

}  // namespace
}  // namespace torvik
