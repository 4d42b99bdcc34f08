#include <algorithm>
#include <atomic>

#include "open_adapter.hpp"
#include "system_support.hpp"

namespace virtual_test {
namespace {

constexpr int kNotLong = 20;      // milliseconds: long enough to see that nothing comes
constexpr int kLongest = 20'000;  // milliseconds: never waited for when all is well

class ReceiveNotification : public QuietAdapter {
  protected:
    void SetUp() override {
        QuietAdapter::SetUp();
        ASSERT_EQ(event.attach(kUsb), kOk);
    }

    ReceiveEvent event;
};

using RegisteredLate = QuietAdapter;

TEST_F(ReceiveNotification, EmptyQueueWakesNobody) {
    EXPECT_FALSE(event.wait(kNotLong));
}

TEST_F(ReceiveNotification, PushedFrameWakes) {
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    EXPECT_TRUE(event.wait(kLongest));
    EXPECT_TRUE(readFrame());
    EXPECT_FALSE(event.wait(kNotLong));
}

TEST_F(ReceiveNotification, AnswerWakes) {
    CanMessage command = commandFrame({0x2B});
    CAN_Write(kUsb, &command);
    EXPECT_TRUE(event.wait(kLongest));
    EXPECT_EQ(drain().size(), 1U);
}

// How much later than a sleep of the same length, begun right after it, answers wake their client: half of them at most
// so much. On a busy machine a wake-up is either prompt or waits for a whole time slice, so that the medians of answers
// and of sleeps differ by chance; the differences of neighbours lie around 0 however busy the machine is.
std::chrono::microseconds medianLateness(const ReceiveEvent& event) {
    using std::chrono::microseconds;
    using std::chrono::steady_clock;
    constexpr microseconds delay{2'000};
    virtualAnswerRule(0, 0x2B, VIRTUAL_ANSWER_DELAY, VIRTUAL_FOR_EVER, delay.count(), nullptr);
    const auto lateness = [&](steady_clock::time_point start) {
        return std::chrono::duration_cast<microseconds>(steady_clock::now() - start - delay);
    };
    std::vector<microseconds> differences;
    for (int i = 0; i < 51; ++i) {
        CanMessage command = commandFrame({0x2B});
        auto start = steady_clock::now();
        CAN_Write(kUsb, &command);
        EXPECT_TRUE(event.wait(kLongest));
        EXPECT_TRUE(readFrame()) << "woken before the frame was there";
        const microseconds answer = lateness(start);
        EXPECT_GE(answer, microseconds(-1));
        start = steady_clock::now();
        std::this_thread::sleep_for(delay);
        differences.push_back(answer - lateness(start));
    }
    std::ranges::sort(differences);
    return differences[differences.size() / 2];
}

TEST_F(ReceiveNotification, DueAnswerWakesAtItsTime) {
    // An adapter that is late is late in every round.
    constexpr int rounds = 5;
    std::chrono::microseconds least = std::chrono::microseconds::max();
    for (int round = 0; round < rounds && least > kWakeTolerance; ++round)
        least = std::min(least, medianLateness(event));
    EXPECT_LE(least, kWakeTolerance);
}

TEST_F(ReceiveNotification, StreamIsReceivedByAWaiterAlone) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nfrequency = 1000\n"), 0);
    std::size_t frames = 0;
    int wakes = 0;
    while (frames < 600 * 6) {
        ASSERT_TRUE(event.wait(kLongest));
        frames += drain().size();
        ++wakes;
    }
    EXPECT_LE(wakes, 1500);
}

TEST_F(ReceiveNotification, FrameThatComesWhileTheQueueIsDrainedIsNotMissed) {
    std::atomic<bool> stop = false;
    std::uint64_t pushed = 0;
    std::thread pusher([&] {
        const VirtualFrame frame = frameOf(0x123);
        for (int i = 0; i < 20'000; ++i)
            pushed += virtualPushFrames(&frame, 1);
        stop = true;
    });
    std::uint64_t read = 0;
    while (!stop) {
        if (event.wait(kNotLong)) read += drain().size();
    }
    pusher.join();
    while (event.wait(kNotLong))
        read += drain().size();
    EXPECT_EQ(read, pushed);
}

TEST_F(ReceiveNotification, OverrunWakes) {
    const std::vector<VirtualFrame> frames(kReceiveQueueLength + 1, frameOf(0x123));
    virtualPushFrames(frames.data(), static_cast<std::uint32_t>(frames.size()));
    EXPECT_TRUE(event.wait(kLongest));
}

TEST_F(ReceiveNotification, PausedQueueWakesNobodyUntilItGoesOn) {
    virtualPause(1);
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    EXPECT_FALSE(event.wait(kNotLong));
    virtualPause(0);
    EXPECT_TRUE(event.wait(kLongest));
}

TEST_F(ReceiveNotification, PausedStreamWakesNobodyUntilItGoesOn) {
    virtualPause(1);
    virtualHoldStream(0, 0);
    EXPECT_FALSE(event.wait(3 * kNotLong));
    virtualPause(0);
    EXPECT_TRUE(event.wait(kLongest));
    EXPECT_GE(drain().size(), 6U);
}

TEST_F(ReceiveNotification, ClosingTheChannelWakesTheWaiter) {
    std::thread closer([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(kNotLong));
        CAN_Uninitialize(kUsb);
    });
    EXPECT_TRUE(event.wait(kLongest));
    closer.join();
    CanMessage message{};
    EXPECT_EQ(CAN_Read(kUsb, &message, nullptr), kNotInitialised);
}

TEST_F(ReceiveNotification, ReopenedChannelNotifiesAgain) {
    CAN_Uninitialize(kUsb);
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    ASSERT_EQ(event.attach(kUsb), kOk);
    drain();
    EXPECT_TRUE(event.wait(1) || !event.wait(kNotLong)) << "a left-over of the closing is allowed, once";
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    EXPECT_TRUE(event.wait(kLongest));
}

TEST_F(ReceiveNotification, DetachingSucceeds) {
    EXPECT_EQ(ReceiveEvent::detach(kUsb), kOk);
    EXPECT_EQ(event.attach(kUsb), kOk);
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    EXPECT_TRUE(event.wait(kLongest));
}

TEST_F(RegisteredLate, FrameThatWaitsAlreadyWakes) {
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    ReceiveEvent event;
    ASSERT_EQ(event.attach(kUsb), kOk);
    EXPECT_TRUE(event.wait(kLongest));
}

TEST_F(RegisteredLate, StreamThatRunsAlreadyWakes) {
    virtualHoldStream(0, 0);
    ReceiveEvent event;
    ASSERT_EQ(event.attach(kUsb), kOk);
    EXPECT_TRUE(event.wait(kLongest));
    EXPECT_EQ(CAN_Uninitialize(kUsb), kOk);
}

}  // namespace
}  // namespace virtual_test
