#include <xmmintrin.h>

#include <cmath>
#include <limits>

#include "bus.hpp"
#include "open_adapter.hpp"
#include "system_support.hpp"

// Whatever a host does, the adapter neither ends nor stops it.
namespace virtual_test {
namespace {

using namespace virtual_adapter;
using ClosedChannel = ClosedAdapter;
using HostSafety = QuietAdapter;

static_assert(
    noexcept(CAN_Initialize(0, 0, 0, 0, 0)) && noexcept(CAN_Uninitialize(0)) && noexcept(CAN_Reset(0)) && noexcept(CAN_GetStatus(0)) && noexcept(CAN_Read(0, nullptr, nullptr)) && noexcept(
        CAN_Write(
            0,
            nullptr)) && noexcept(CAN_FilterMessages(0, 0, 0,
                                                     0)) && noexcept(CAN_GetValue(0, 0, nullptr,
                                                                                  0)) && noexcept(CAN_SetValue(0, 0,
                                                                                                               nullptr,
                                                                                                               0)) && noexcept(CAN_GetErrorText(0,
                                                                                                                                                0,
                                                                                                                                                nullptr)));
static_assert(noexcept(virtualReset()) && noexcept(virtualConfigure("")) && noexcept(virtualMessage()) && noexcept(
    virtualPushFrames(
        nullptr,
        0)) && noexcept(virtualSendSets(0, 0)) && noexcept(virtualQueued()) && noexcept(virtualGetCounters(nullptr)));

class CountingReceiver final : public FrameReceiver {
  public:
    void receive(const Frame& /*frame*/, Nanoseconds time) override {
        ++frames;
        latest = time;
    }
    std::uint64_t frames = 0;
    Nanoseconds latest = 0;
};

constexpr Nanoseconds kOneSecond = 1'000'000'000;

BenchConfig fastestBench() {
    BenchConfig bench;
    for (std::uint32_t i = 0; i < kMostAmplifiers; ++i) {
        AmplifierConfig& amplifier = bench.amplifiers.emplace_back();
        amplifier.valueId = i;
        amplifier.frequency = 1e6;
        amplifier.signals.resize(kMostChannels);
    }
    return bench;
}

TEST(BusAfterALongSilence, FastestStreams_TakeABoundedTimeAndGoOn) {
    VirtualCounters counters{};
    Bus bus(counters);
    CountingReceiver receiver;
    bus.setUp(fastestBench());
    bus.open(0, 1'000'000);
    bus.advance(3600 * kOneSecond, receiver);
    EXPECT_EQ(receiver.frames, std::uint64_t{Bus::kMostTurns} * kMostChannels);
    bus.advance(3600 * kOneSecond, receiver);
    EXPECT_EQ(receiver.frames, std::uint64_t{Bus::kMostTurns} * kMostChannels) << "what was missed is left out";
    EXPECT_GT(bus.nextDue(), 3600 * kOneSecond);
    bus.advance(3600 * kOneSecond + 10'000, receiver);
    EXPECT_EQ(receiver.frames, (std::uint64_t{Bus::kMostTurns} + 10 * kMostAmplifiers) * kMostChannels);
    EXPECT_GT(receiver.latest, 3600 * kOneSecond);
}

// The longest silence of which nothing is left out.
TEST(BusAfterALongSilence, FullBusOfThirtySeconds_LosesNothing) {
    VirtualCounters counters{};
    Bus bus(counters);
    CountingReceiver receiver;
    BenchConfig bench = defaultBench();
    bench.timing = true;
    bench.amplifiers[0].frequency = 1200;
    bus.setUp(bench);
    bus.open(0, 1'000'000);
    bus.advance(30 * kOneSecond, receiver);
    EXPECT_NEAR(static_cast<double>(receiver.frames), 30.0 * 1200 * 6, 6);
}

TEST_F(ClosedChannel, ParameterSetAfterAStreamWithTiming_DividesByNoBitRate) {
    ASSERT_EQ(virtualConfigure("[bus]\ntiming = true\n[[amplifier]]\nfrequency = 1000\n"), 0);
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    ASSERT_EQ(CAN_Uninitialize(kUsb), kOk);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::uint32_t off = 0;
    EXPECT_EQ(CAN_SetValue(kUsb, 0x08, &off, sizeof off), kOk);
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(ClosedChannel, ParameterSetAfterAStream_ReceivesNothing) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nfrequency = 1000\n"), 0);
    ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk);
    ASSERT_EQ(CAN_Uninitialize(kUsb), kOk);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::uint32_t off = 0;
    EXPECT_EQ(CAN_SetValue(kUsb, 0x08, &off, sizeof off), kOk);
    EXPECT_EQ(virtualQueued(), 0U);
}

TEST_F(HostSafety, FourThousandMillionSets_EndAtALimit) {
    EXPECT_EQ(virtualSendSets(0, std::numeric_limits<std::uint32_t>::max()), kReceiveQueueLength);
    EXPECT_EQ(counters().valueFramesSent, 65'536U * 6);
}

TEST_F(HostSafety, AnswersThatNobodyTakes_EndAtALimit) {
    virtualAnswerRule(0, 0x2B, VIRTUAL_ANSWER_DELAY, VIRTUAL_FOR_EVER, std::numeric_limits<std::uint32_t>::max(),
                      nullptr);
    CanMessage command = commandFrame({0x2B});
    for (int i = 0; i < 65'536 + 100; ++i)
        ASSERT_EQ(CAN_Write(kUsb, &command), kOk);
    EXPECT_EQ(counters().answersDropped, 100U);
}

TEST_F(HostSafety, FilterRanges_EndAtALimit) {
    for (std::uint32_t id = 0; id < 1024; ++id)
        ASSERT_EQ(CAN_FilterMessages(kUsb, id, id, 0), kOk);
    EXPECT_EQ(CAN_FilterMessages(kUsb, 0x7FF, 0x7FF, 0), 0x2000U);
}

TEST_F(HostSafety, NumbersOfDevicesAndChannels_OutOfRangeChangeNothing) {
    constexpr std::uint32_t huge = std::numeric_limits<std::uint32_t>::max();
    for (const std::uint32_t device : {1U, 39U, huge}) {
        virtualHoldStream(device, 0);
        virtualSkipFrame(device, huge, huge);
        virtualRepeatFrame(device, 8, huge);
        virtualAnswerRule(device, huge, huge, huge, huge, nullptr);
        EXPECT_EQ(virtualSendSets(device, huge), 0U);
    }
    virtualSkipFrame(0, 6, 1);
    virtualFailCalls(VIRTUAL_ENTRY_COUNT, kIllegalData, 0, huge);
    virtualFailCalls(huge, kIllegalData, 0, huge);
    virtualBusLoad(huge, huge);
    virtualBusLoad(0, 0);
    EXPECT_EQ(virtualSendSets(0, 1), 6U);
}

TEST_F(HostSafety, ValueOfAnySet_StaysWithinItsSignal) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nvalue_type = \"float32\"\nfrequency = 0.001\n"
                               "[[amplifier.signal]]\nwave = \"sine\"\namplitude = 2\nfrequency = 1e6\n"
                               "[[amplifier.signal]]\nwave = \"ramp\"\namplitude = 2\nfrequency = 1e6\n"),
              0);
    for (const std::uint64_t set : {std::uint64_t{1} << 32U, std::uint64_t{1} << 53U, ~std::uint64_t{0}}) {
        for (const std::uint32_t channel : {0U, 1U}) {
            double value = 0;
            ASSERT_EQ(virtualValue(0, channel, set, &value), 0);
            EXPECT_LE(std::abs(value), 2.0) << set;
        }
    }
}

// Rounding alone would end a host that has the inexact result trapped.
TEST_F(HostSafety, UnmaskedFloatExceptions_AreMaskedInsideAndRestored) {
    constexpr unsigned allUnmasked = 0x0000;
    constexpr unsigned flags = 0x3F;
    const unsigned before = _mm_getcsr();
    _mm_setcsr(allUnmasked);
    const std::uint32_t queued = virtualSendSets(0, 10);
    CanMessage command = commandFrame({0x15, 0, 0x7F, 0xA0, 0, 1});  // a signalling NaN as the scale of all channels
    const std::uint32_t wrote = CAN_Write(kUsb, &command);
    const std::uint32_t queuedNaN = virtualSendSets(0, 10);
    const int understood = virtualConfigure("[[amplifier]]\nfrequency = 0.3\n");
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(after & ~flags, allUnmasked);
    EXPECT_EQ(queued, 60U);
    EXPECT_EQ(wrote, kOk);
    EXPECT_EQ(queuedNaN, 60U);
    EXPECT_EQ(understood, 0);
}

}  // namespace
}  // namespace virtual_test
