#include "support/record_test.h"

#include "support/fake_adapter.h"

namespace torvik::test {

void RecordTest::restore() {
    for (DeviceRecord& record : deviceTable())
        ASSERT_TRUE(zeroRecord(record));
    lastErrorOf(deviceLimit) = 0;
    libraryState.valueBufferLength = 0;
    libraryState.channelHandle = 0;
    libraryState.initialisedDevices = 0;
    libraryState.debugOutput = false;
    libraryState.pcanLogging = false;
    libraryState.receiveEventSet = false;
}

void RecordTest::SetUp() {
    ASSERT_EQ(answerMutex.create(), 0U);
    ASSERT_EQ(valueMutex.create(), 0U);
    restore();
    FakeAdapter::instance().open();
}

void RecordTest::TearDown() {
    restore();
    FakeAdapter::instance().forget();
    libraryState.adapterOpen = false;
    answerMutex.close();
    valueMutex.close();
}

DeviceRecord& RecordTest::activate(std::uint8_t deviceNo, const Identifiers& identifiers,
                                   std::uint32_t activeChannels) {
    DeviceRecord& record = deviceRecord(deviceNo);
    record.ownDeviceNo = deviceNo;
    record.activeChannels = activeChannels;
    const bool obtained = exclusively(answerMutex, [&]() NO_THREAD_SAFETY_ANALYSIS {
        record.commandCanId = identifiers.command;
        record.answerCanId = identifiers.answer;
        record.valueCanId = identifiers.value;
        record.active = true;
        updateRoutes();
    });
    EXPECT_TRUE(obtained);
    return record;
}

void RecordTest::deactivate(std::uint8_t deviceNo) {
    EXPECT_TRUE(exclusively(answerMutex, [&]() NO_THREAD_SAFETY_ANALYSIS {
        deviceRecord(deviceNo).active = false;
        updateRoutes();
    }));
}

void RecordTest::allocateBuffers(DeviceRecord& record, std::int32_t length) {
    libraryState.valueBufferLength = length;
    EXPECT_TRUE(exclusively(valueMutex, [&]() NO_THREAD_SAFETY_ANALYSIS {
        for (ValueBuffer& buffer : record.valueBuffer) {
            buffer = {};
            buffer.entries = std::make_unique<ValueEntry[]>(static_cast<std::size_t>(length));
            buffer.allocated = length;
        }
    }));
}

DeviceRecord* RecordTest::receiverOf(std::uint32_t identifier) {
    DeviceRecord* receiver = nullptr;
    EXPECT_TRUE(exclusively(answerMutex, [&]() NO_THREAD_SAFETY_ANALYSIS { receiver = findReceiver(identifier); }));
    return receiver;
}

const ValueBuffer& RecordTest::bufferOf(const DeviceRecord& record,
                                        std::size_t channelIndex) NO_THREAD_SAFETY_ANALYSIS {
    return record.valueBuffer[channelIndex];
}

const AnswerSlot& RecordTest::answerSlotOf(const DeviceRecord& record, std::size_t slot) NO_THREAD_SAFETY_ANALYSIS {
    return record.answerRing[slot];
}

ValueType RecordTest::lastValueTypeOf(const DeviceRecord& record) NO_THREAD_SAFETY_ANALYSIS {
    return record.lastValueType;
}

}  // namespace torvik::test
