#include "bus.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "baud_rates.hpp"

// The bus by itself, on a clock driven by hand. All times in nanoseconds.
namespace virtual_test {
namespace {

using namespace virtual_adapter;

constexpr Nanoseconds kStart = 1'000'000'000;
constexpr std::uint32_t kOneMegabit = 1'000'000;
constexpr Nanoseconds kFullFrame = 123'000;
constexpr Nanoseconds kSecond = 1'000'000'000;

class BusOnAHandDrivenClock : public testing::Test, protected FrameReceiver {
  protected:
    // The bus is too large for the stack of some systems.
    void open(const BenchConfig& bench, std::uint32_t bitRate = kOneMegabit) {
        bus = std::make_unique<Bus>(counters);
        bus->setUp(bench);
        bus->open(kStart, bitRate);
    }

    void receive(const Frame& frame, Nanoseconds time) override { received.push_back({time - kStart, frame}); }

    void write(std::uint32_t id, std::initializer_list<std::uint8_t> data, Nanoseconds at) {
        Frame frame{id, kStandardFrame, static_cast<std::uint8_t>(data.size()), {}};
        std::copy(data.begin(), data.end(), frame.data.begin());
        bus->advance(kStart + at, *this);
        ASSERT_TRUE(bus->write(frame, kStart + at, *this));
    }

    void advance(Nanoseconds to) { bus->advance(kStart + to, *this); }

    [[nodiscard]] std::vector<Nanoseconds> times() const {
        std::vector<Nanoseconds> all;
        for (const TimedFrame& frame : received)
            all.push_back(frame.time);
        return all;
    }

    [[nodiscard]] std::vector<std::uint32_t> ids() const {
        std::vector<std::uint32_t> all;
        for (const TimedFrame& frame : received)
            all.push_back(frame.frame.id);
        return all;
    }

    VirtualCounters counters{};
    std::unique_ptr<Bus> bus;
    std::vector<TimedFrame> received;
};

AmplifierConfig amplifier(std::uint32_t firstId, std::size_t channels, double frequency, bool streaming = true) {
    AmplifierConfig config;
    config.commandId = firstId;
    config.answerId = firstId + 1;
    config.valueId = firstId + 2;
    config.frequency = frequency;
    config.streaming = streaming;
    config.signals.assign(channels, {});
    return config;
}

TEST(FrameBits, AreThoseOfTheWireWithHalfOfThePossibleStuffBits) {
    EXPECT_EQ(frameBits(kStandardFrame, 0), 34U + 13U + 4U);
    EXPECT_EQ(frameBits(kStandardFrame, 8), 123U);
    EXPECT_EQ(frameBits(kStandardFrame, 255), 123U);
    EXPECT_EQ(frameBits(kExtendedFrame, 8), 54U + 64U + 13U + 14U);
    EXPECT_EQ(frameBits(kRemoteFrame, 8), frameBits(kStandardFrame, 0));
}

TEST_F(BusOnAHandDrivenClock, WithoutTimingSetsArriveTheMomentTheyAreDue) {
    open({false, {amplifier(0x100, 2, 1000)}});
    EXPECT_EQ(bus->nextDue(), kStart + 1'000'000);
    advance(999'999);
    EXPECT_TRUE(received.empty());
    advance(2'500'000);
    EXPECT_EQ(times(), (std::vector<Nanoseconds>{1'000'000, 1'000'000, 2'000'000, 2'000'000}));
    EXPECT_EQ(bus->nextDue(), kStart + 3'000'000);
}

TEST_F(BusOnAHandDrivenClock, WithoutTimingAnswersAreThereAtOnce) {
    open({false, {amplifier(0x100, 1, 1, false)}});
    write(0x100, {0x80, 0x2B}, 5'000);
    EXPECT_EQ(times(), std::vector<Nanoseconds>{5'000});
    EXPECT_EQ(ids(), std::vector<std::uint32_t>{0x101});
}

TEST_F(BusOnAHandDrivenClock, StreamsDoNotDrift) {
    open({false, {amplifier(0x100, 1, 3)}});
    for (Nanoseconds second = 1; second <= 1000; ++second)
        advance(second * kSecond + 1);
    EXPECT_EQ(received.size(), 3000U);
}

TEST_F(BusOnAHandDrivenClock, LateLookFindsEverythingThatWasDueInItsOrder) {
    open({false, {amplifier(0x100, 1, 1000), amplifier(0x110, 1, 500)}});
    advance(4'000'000);
    EXPECT_EQ(times(), (std::vector<Nanoseconds>{1'000'000, 2'000'000, 2'000'000, 3'000'000, 4'000'000, 4'000'000}));
}

TEST_F(BusOnAHandDrivenClock, AnswerTimeOfTheDevicePasses) {
    AmplifierConfig slow = amplifier(0x100, 1, 1, false);
    slow.answerTime = 230;
    open({false, {slow}});
    write(0x100, {0x80, 0x2B}, 1000);
    EXPECT_EQ(bus->nextDue(), kStart + 231'000);
    advance(230'999);
    EXPECT_TRUE(received.empty());
    advance(231'000);
    EXPECT_EQ(times(), std::vector<Nanoseconds>{231'000});
}

TEST_F(BusOnAHandDrivenClock, WithTimingFramesFollowOneAnother) {
    open({true, {amplifier(0x100, 3, 1000)}});
    advance(1'500'000);
    EXPECT_EQ(times(), (std::vector<Nanoseconds>{1'000'000 + kFullFrame, 1'000'000 + 2 * kFullFrame,
                                                 1'000'000 + 3 * kFullFrame}));
}

TEST_F(BusOnAHandDrivenClock, WithTimingTheBitRateCounts) {
    open({true, {amplifier(0x100, 1, 100)}}, 500'000);
    advance(11'000'000);
    EXPECT_EQ(times(), std::vector<Nanoseconds>{10'000'000 + 2 * kFullFrame});
}

TEST_F(BusOnAHandDrivenClock, WithTimingTheLowestIdentifierGoesFirst) {
    open({true, {amplifier(0x120, 2, 1000), amplifier(0x110, 2, 1000)}});
    advance(1'999'999);
    EXPECT_EQ(ids(), (std::vector<std::uint32_t>{0x112, 0x112, 0x122, 0x122}));
}

TEST_F(BusOnAHandDrivenClock, WithTimingAFrameOnTheWireIsNotInterrupted) {
    open({true, {amplifier(0x120, 2, 1000), amplifier(0x110, 1, 999)}});
    advance(1'999'999);
    EXPECT_EQ(ids(), (std::vector<std::uint32_t>{0x122, 0x112, 0x122}));
}

TEST_F(BusOnAHandDrivenClock, WithTimingCommandsTakeTheirTimeToo) {
    open({true, {amplifier(0x100, 1, 1, false)}});
    write(0x100, {0x80, 0x2B}, 0);
    const Nanoseconds commandTime = frameDuration(frameBits(kStandardFrame, 2), kOneMegabit);
    EXPECT_EQ(bus->nextDue(), kStart + commandTime + kFullFrame);
    advance(commandTime + kFullFrame - 1);
    EXPECT_TRUE(received.empty());
    advance(commandTime + kFullFrame);
    EXPECT_EQ(times(), std::vector<Nanoseconds>{commandTime + kFullFrame});
}

TEST_F(BusOnAHandDrivenClock, WithTimingUnsentCommandsCanBeDropped) {
    open({true, {amplifier(0x100, 1, 1, false)}});
    write(0x100, {0x80, 0x2B}, 0);
    bus->dropUnsent();
    advance(kSecond);
    EXPECT_TRUE(received.empty());
    EXPECT_EQ(counters.commandsReceived, 0U);
}

TEST_F(BusOnAHandDrivenClock, WithTimingTheTransmitQueueIsBounded) {
    open({true, {amplifier(0x100, 1, 1, false)}});
    const Frame frame{0x700, kStandardFrame, 8, {}};
    std::size_t accepted = 0;
    while (bus->write(frame, kStart, *this))
        ++accepted;
    EXPECT_EQ(accepted, Bus::kTransmitSlots);
}

TEST_F(BusOnAHandDrivenClock, WithTimingADeviceFasterThanTheBusLeavesSetsOut) {
    open({true, {amplifier(0x100, 6, 10'000)}});
    advance(kSecond);
    const auto most = kSecond / kFullFrame;
    EXPECT_LE(received.size(), most);
    EXPECT_GE(received.size(), most - 12);
    for (std::size_t i = 0; i < received.size(); ++i)
        ASSERT_EQ(received[i].frame.data[0], i % 6);
}

TEST_F(BusOnAHandDrivenClock, WithTimingAnswersWaitForTheSetThatHasBegun) {
    open({true, {amplifier(0x100, 3, 1000)}});
    write(0x100, {0x80, 0x2B}, 1'010'000);
    advance(1'900'000);
    EXPECT_EQ(ids(), (std::vector<std::uint32_t>{0x102, 0x102, 0x102, 0x101}));
}

TEST_F(BusOnAHandDrivenClock, ForeignTrafficOfLowerIdentifierDelaysOthers) {
    open({true, {amplifier(0x100, 1, 1000)}});
    bus->setLoad(100, 0x001, kStart);
    advance(20'000'000);
    EXPECT_EQ(counters.valueFramesSent, 0U);
    EXPECT_EQ(received.size(), 20'000'000 / kFullFrame - 1);
}

TEST_F(BusOnAHandDrivenClock, EqualIdentifiersReachEveryDeviceThatHasThem) {
    open({false, {amplifier(0x100, 1, 1, false), amplifier(0x100, 1, 1, false)}});
    write(0x100, {0x80, 0x2B}, 0);
    EXPECT_EQ(ids(), (std::vector<std::uint32_t>{0x101, 0x101}));
    EXPECT_EQ(counters.commandsReceived, 2U);
}

TEST_F(BusOnAHandDrivenClock, ThirtyNineDevicesStreamSideBySide) {
    BenchConfig bench;
    for (std::uint32_t i = 0; i < 39; ++i)
        bench.amplifiers.push_back(amplifier(0x100 + 3 * i, 6, 1000));
    open(bench);
    advance(10'000'000);
    EXPECT_EQ(received.size(), 39U * 6U * 10U);
}

}  // namespace
}  // namespace virtual_test
