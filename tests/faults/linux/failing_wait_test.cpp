#include "faults/fault_bench.h"
#include "faults/linux/failing_system_calls.h"
#include "platform/thread.h"

namespace torvik::test {
namespace {

using namespace std::chrono_literals;

class FailingWait : public FaultBench {
  protected:
    void TearDown() override {
        pollFails = false;
        FaultBench::TearDown();
    }
};

// The receive thread then lives on its time limit of 200 ms.
TEST_F(FailingWait, DoesNotBecomeABusyLoop) {
    failedPolls = 0;
    pollFails = true;
    platform::sleepFor(1000ms);
    EXPECT_GE(failedPolls, 1U);
    EXPECT_LE(failedPolls, 6U);
    expectRight(faultyDevice);
}

}  // namespace
}  // namespace torvik::test
