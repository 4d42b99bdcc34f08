#include "core/measured_values.h"

#include <array>

#include "core/set_assembly.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"
#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using test::HeldElsewhere;
using test::int16Type;
using test::mutexTimeout;
using test::RecordTest;
using test::runWithTimeouts;
using test::TestClock;

constexpr std::uint32_t dataBuffer = 0x30000106;

class MeasuredValues : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(1, {}, 2);
    }

    void takeSet(std::uint8_t sequence, std::uint8_t status = int16Type) {
        assembleValueFrame(record, {0, status, 0, sequence, 0, 10});
        assembleValueFrame(record, {1, status, 0, sequence, 0, 20});
    }

    std::int32_t waiting(std::size_t channelIndex = 0) const { return bufferOf(record, channelIndex).count; }

    DeviceRecord& record = deviceRecord(1);
    double value = 5.0;
    std::array<double, 4> values{5.0, 5.0, 5.0, 5.0};
    std::int32_t count = 7;
};

// The two channels have counts but no memory.
class MissingBuffer : public MeasuredValues {
  protected:
    void SetUp() override {
        MeasuredValues::SetUp();
        libraryState.valueBufferLength = 4;
        takeSet(1);
        ASSERT_EQ(waiting(), 1);
    }
};

TEST_F(MissingBuffer, RefusesABlockOfOneChannel) {
    EXPECT_EQ(readChannel(record, 1, values, count, nullptr), -1);
    EXPECT_EQ(record.lastError, dataBuffer);
}

TEST_F(MissingBuffer, RefusesABlockOfAllChannels) {
    EXPECT_EQ(readSets(record, values, count, nullptr), -1);
    EXPECT_EQ(record.lastError, dataBuffer);
}

TEST_F(MissingBuffer, IsCleared) {
    EXPECT_TRUE(clearValueBuffers(record));
    EXPECT_EQ(waiting(), 0);
}

class ClearedValues : public MeasuredValues {
  protected:
    void SetUp() override {
        MeasuredValues::SetUp();
        allocateBuffers(record, 4);
        takeSet(1, 0x9D);
        takeSet(2, 0x9E);
    }
};

TEST_F(ClearedValues, KeepTheirStatusBytes) {
    EXPECT_TRUE(clearValueBuffers(record));
    for (std::size_t channel = 0; channel < 2; ++channel) {
        EXPECT_EQ(bufferOf(record, channel).entries[0].status, 0x9D);
        EXPECT_EQ(bufferOf(record, channel).entries[1].status, 0x9E);
    }
}

TEST_F(ClearedValues, AreZeroAndNobodysAnyMore) {
    ASSERT_EQ(readValue(record, 1, value), 1);
    EXPECT_TRUE(clearValueBuffers(record));
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const ValueBuffer& buffer = bufferOf(record, channel);
        EXPECT_EQ(buffer.entries[0].value, 0.0);
        EXPECT_EQ(buffer.entries[1].value, 0.0);
        EXPECT_EQ(buffer.count, 0);
        EXPECT_EQ(buffer.readIndex, 0);
        EXPECT_EQ(buffer.writeIndex, 0);
    }
}

TEST_F(ClearedValues, AreThoseOfAnActiveDeviceOnly) {
    deactivate(1);
    EXPECT_FALSE(clearValueBuffers(record));
    EXPECT_EQ(record.lastError, 0U);
    EXPECT_EQ(waiting(), 2);
}

// Another call has the value mutex and does not give it back.
class HeldValues : public MeasuredValues {
  protected:
    void SetUp() override {
        MeasuredValues::SetUp();
        allocateBuffers(record, 4);
        takeSet(1);
        held_ = std::make_unique<HeldElsewhere>(valueMutex);
    }

    void TearDown() override {
        release();
        MeasuredValues::TearDown();
    }

    void release() { held_.reset(); }

    // Runs `call` until it gives up, which takes it ten seconds.
    template <class Call>
    auto givenUp(Call call) {
        auto result = runWithTimeouts(clock, call);
        EXPECT_EQ(clock.elapsed(), 10000ms);
        return result;
    }

    TestClock clock;

  private:
    std::unique_ptr<HeldElsewhere> held_;
};

TEST_F(HeldValues, AreNotReadSingly) {
    EXPECT_EQ(givenUp([this] { return readValue(record, 1, value); }), -1);
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_EQ(value, 5.0);
}

TEST_F(HeldValues, AreNotReadAsABlockOfOneChannel) {
    EXPECT_EQ(givenUp([this] { return readChannel(record, 1, values, count, nullptr); }), -1);
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_EQ(values[0], 5.0);
}

TEST_F(HeldValues, AreNotReadAsABlockOfAllChannels) {
    EXPECT_EQ(givenUp([this] { return readSets(record, values, count, nullptr); }), -1);
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_EQ(values[0], 5.0);
}

TEST_F(HeldValues, AreNotCounted) {
    EXPECT_FALSE(givenUp([this] { return countValues(record, 1, count); }));
    EXPECT_EQ(record.lastError, mutexTimeout);
    EXPECT_EQ(count, 7);
}

TEST_F(HeldValues, AreNotClearedAndNoErrorIsStored) {
    EXPECT_FALSE(givenUp([this] { return clearValueBuffers(record); }));
    EXPECT_EQ(record.lastError, 0U);
    EXPECT_EQ(waiting(), 1);
}

TEST_F(HeldValues, LeaveACompleteSetAsItIs) {
    record.newValues = false;
    givenUp([this] {
        takeSet(2);
        return true;
    });
    EXPECT_EQ(waiting(), 1);
    EXPECT_FALSE(record.newValues);
    EXPECT_TRUE(record.assembly.setInProgress);
    EXPECT_EQ(record.assembly.setFramesReceived, 2);
}

TEST_F(HeldValues, AreContinuedWithTheNextSetOnceTheyAreFree) {
    givenUp([this] {
        takeSet(2);
        return true;
    });
    release();
    takeSet(3);
    EXPECT_EQ(waiting(), 2);
    EXPECT_TRUE(record.newValues);
}

}  // namespace
}  // namespace torvik
