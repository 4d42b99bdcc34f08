// Each limit once in real time; everything else about them is tested on a clock of the tests' own.
#include <array>
#include <chrono>

#include "core/transaction.h"
#include "support/fake_adapter.h"
#include "support/held_elsewhere.h"
#include "support/record_test.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using test::given::deviceNo;

class TimeLimit : public test::RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        activate(deviceNo);
    }

    template <class Call>
    static milliseconds timeOf(Call call) {
        const auto begun = steady_clock::now();
        call();
        return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begun);
    }

    static void expectAbout(milliseconds time, milliseconds limit) {
        EXPECT_GE(time, limit);
        EXPECT_LT(time, limit + 1000ms);
    }

    static std::int32_t receive() {
        std::array<std::uint8_t, 8> answer{};
        std::uint8_t length = 0;
        return receiveAnswer(deviceNo, answer.data(), &length);
    }

    DeviceRecord& record = deviceRecord(deviceNo);
};

TEST_F(TimeLimit, AnswerIsWaitedForTwoSeconds) {
    expectAbout(timeOf([] { EXPECT_EQ(receive(), -1); }), 2000ms);
    EXPECT_EQ(record.lastError, test::answerTimeout);
}

TEST_F(TimeLimit, BusyDeviceIsWaitedForFourSeconds) {
    record.busy = true;
    expectAbout(timeOf([] { EXPECT_EQ(sendCommand(deviceNo, Command::mode, {}), 66); }), 4000ms);
    EXPECT_EQ(record.lastError, 235u);
}

TEST_F(TimeLimit, AnswerMutexIsWaitedForTenSeconds) {
    ASSERT_TRUE(storeAnswer(record, record.setUpCount, {}));
    const test::HeldElsewhere held(answerMutex);
    expectAbout(timeOf([] { EXPECT_EQ(receive(), 212); }), 10000ms);
    EXPECT_EQ(record.lastError, 212u);
}

}  // namespace
}  // namespace torvik
