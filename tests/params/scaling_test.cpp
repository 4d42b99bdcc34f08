// The maximum and minimum value, whose command draws two answers, and the refusals that count as successes.
#include <thread>

#include "params/params_bench.h"

namespace torvik::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class ReadMaxMinVal : public ParamsBench {
  protected:
    void SetUp() override {
        ParamsBench::SetUp();
        silence(0x53);
    }

    std::int32_t read() {
        return run([this] { return TORVIKreadMaxMinVal(device, 3, &value, &second); });
    }

    double value = 77;
    double second = 78;
};

TEST_F(ReadMaxMinVal, DeliversTheSecondAnswerAndAlwaysZero) {
    arrive({0, 0x3F, 0x80, 0, 0});
    arrive({0, 0xC0, 0x20, 0, 0});
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(value, -2.5);
    EXPECT_EQ(second, 0.0);
    expectFree();
}

TEST_F(ReadMaxMinVal, EndsWithARefusedFirstAnswer) {
    arrive({0x52});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(second, 78);
    expectFree();
}

TEST_F(ReadMaxMinVal, EndsWithAMissingFirstAnswer) {
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    EXPECT_EQ(second, 78);
    expectFree();
}

TEST_F(ReadMaxMinVal, EndsWithARefusedSecondAnswer) {
    arrive({0, 0x3F, 0x80, 0, 0});
    arrive({0x53});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), 0x53U);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(second, 0.0);
    expectFree();
}

TEST_F(ReadMaxMinVal, StoresAFailedInternalCallForAMissingSecondAnswer) {
    arrive({0, 0x3F, 0x80, 0, 0});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::internalCallFailed);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(second, 0.0);
    EXPECT_EQ(clock.elapsed(), 2s);
    expectFree();
}

TEST_F(ReadMaxMinVal, KeepsOtherCommandsAwayBetweenItsAnswers) {
    arrive({0, 0x3F, 0x80, 0, 0});
    auto reading = std::async(std::launch::async, [this] { return TORVIKreadMaxMinVal(device, 3, &value, &second); });
    while (!record().keepLock || record().answerCount != 0)
        std::this_thread::yield();
    std::uint32_t ident = 0;
    auto other = std::async(std::launch::async, [&ident] { return TORVIKgetInterfaceIdent(device, 1, &ident); });
    ASSERT_TRUE(clock.untilWaiting(2));
    EXPECT_THAT(takeSent(), ElementsAre("81 53 03"));
    // Not arrive(): the waiting call takes it at once.
    push({VirtualFrame{answerId, 0, 8, {0x40, 0, 0xC0, 0x20}}});
    EXPECT_EQ(reading.get(), 0);
    EXPECT_EQ(other.get(), 0);
    EXPECT_EQ(value, -2.5);
    EXPECT_EQ(ident, 1U);
}

TEST_F(ParamsBench, ReadUserScaleAboveNumber39LeavesAnOlderError) {
    std::uint32_t serial = 0;
    ASSERT_EQ(TORVIKgetSerialNo(40, &serial), -1);
    EXPECT_EQ(TORVIKreadUserScale(40, 9, nullptr), 0);
    EXPECT_EQ(takeCode(40), code::parameterExceedance);
    EXPECT_EQ(TORVIKreadUserScale(40, 9, nullptr), 0);
    EXPECT_EQ(takeCode(40), code::none);
}

TEST_F(ParamsBench, WriteUserScaleFailsForAWrongChannelOfAWrongNumber) {
    EXPECT_EQ(TORVIKwriteUserScale(40, 9, 1.0), -1);
    EXPECT_EQ(takeCode(40), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

}  // namespace
}  // namespace torvik::test
