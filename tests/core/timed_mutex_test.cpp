#include "platform/timed_mutex.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "support/test_clock.h"

namespace torvik {
namespace {

using namespace std::chrono_literals;
using platform::TimedLock;
using platform::TimedMutex;
using test::runWithTimeouts;
using test::TestClock;

class TimedMutexTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(mutex.create(), 0U); }

    // As the former owner of a mutex that died or did not come back in time.
    std::unique_ptr<TimedLock> lock() NO_THREAD_SAFETY_ANALYSIS {
        EXPECT_TRUE(mutex.lockFor(0ms));
        return std::make_unique<TimedLock>(mutex);
    }

    void createAgain() {
        mutex.close();
        ASSERT_EQ(mutex.create(), 0U);
    }

    // Whether somebody else gets it at once.
    bool isFree() {
        bool obtained = false;
        std::thread([&]() NO_THREAD_SAFETY_ANALYSIS {
            obtained = mutex.lockFor(0ms);
            if (obtained) const TimedLock unlocked(mutex);
        }).join();
        return obtained;
    }

    TestClock clock;
    TimedMutex mutex;
};

TEST_F(TimedMutexTest, Creation_WhileTheFormerOneIsLocked_GivesAFreeMutex) {
    const auto former = lock();
    EXPECT_FALSE(isFree());
    createAgain();
    EXPECT_TRUE(isFree());
}

TEST_F(TimedMutexTest, FormerOwnerThatComesBack_WhileTheMutexIsLocked_DoesNotUnlockIt) {
    auto former = lock();
    createAgain();
    auto present = lock();
    former.reset();
    EXPECT_FALSE(isFree());
    present.reset();
    EXPECT_TRUE(isFree());
}

TEST_F(TimedMutexTest, FormerOwnerThatComesBack_WhileOthersWait_DoesNotUnlockTheMutex) {
    auto former = lock();
    createAgain();
    auto present = lock();
    // Somebody has waited, which the mutex remembers.
    EXPECT_FALSE(runWithTimeouts(clock, [this]() NO_THREAD_SAFETY_ANALYSIS { return mutex.lockFor(1ms); }));
    former.reset();
    EXPECT_FALSE(isFree());
    present.reset();
    EXPECT_TRUE(isFree());
}

TEST_F(TimedMutexTest, FormerOwnerThatComesBack_WhileTheMutexIsFree_LeavesItFree) {
    auto former = lock();
    createAgain();
    former.reset();
    EXPECT_TRUE(isFree());
}

TEST_F(TimedMutexTest, WaiterForTheFormerMutex_AfterACreation_GetsTheNewOne) {
    const auto former = lock();
    auto waiting = std::async(std::launch::async, [this]() NO_THREAD_SAFETY_ANALYSIS {
        if (!mutex.lockFor(10s)) return false;
        const TimedLock unlocked(mutex);
        return true;
    });
    ASSERT_TRUE(clock.untilWaiting());
    createAgain();
    EXPECT_TRUE(waiting.get());
    EXPECT_EQ(clock.elapsed(), 0ms);
}

}  // namespace
}  // namespace torvik
