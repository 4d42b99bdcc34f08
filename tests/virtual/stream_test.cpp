#include <bit>
#include <cmath>
#include <numbers>

#include "open_adapter.hpp"
#include "signal.hpp"
#include "value_stream.hpp"

namespace virtual_test {
namespace {

using namespace virtual_adapter;
using Stream = OpenAdapter;
using SilentStream = QuietAdapter;

AmplifierConfig oneChannel(ValueType type, double value) {
    AmplifierConfig config;
    config.valueType = type;
    config.counts = true;
    config.signals.assign(1, {Waveform::constant, 0, value, 0, 0});
    return config;
}

Data firstFrame(const AmplifierConfig& config) {
    ValueStream stream(config);
    ValueStream::Frames frames;
    stream.nextSet(frames);
    return frames[0].data;
}

double decoded(const CanMessage& frame) {
    const auto bits =
        static_cast<std::uint32_t>(frame.data[4] << 24U | frame.data[5] << 16U | frame.data[6] << 8U | frame.data[7]);
    switch (frame.data[1] >> 4U & 7U) {
        case 1:
            return static_cast<std::int32_t>(bits) >> 16;
        case 2:
            return static_cast<std::int32_t>(bits) >> 8;
        default:
            return std::bit_cast<float>(bits);
    }
}

TEST(ValueFrame, Int16StandsInTheFirstTwoBytes) {
    EXPECT_EQ(firstFrame(oneChannel(ValueType::int16, -200)), (Data{0, 0x10, 0, 0, 0xFF, 0x38, 0, 0}));
}

TEST(ValueFrame, Int24StandsInTheFirstThreeBytes) {
    EXPECT_EQ(firstFrame(oneChannel(ValueType::int24, -2)), (Data{0, 0x20, 0, 0, 0xFF, 0xFF, 0xFE, 0}));
}

TEST(ValueFrame, Float32FillsFourBytes) {
    EXPECT_EQ(firstFrame(oneChannel(ValueType::float32, 1.5)), (Data{0, 0x30, 0, 0, 0x3F, 0xC0, 0, 0}));
}

TEST(ValueFrame, FullScaleIsOneWhenReadBackWithTheLibrarysFactors) {
    AmplifierConfig config = oneChannel(ValueType::int16, 1.0);
    config.counts = false;
    EXPECT_NEAR(ValueStream(config).valueAt(0, 0).number * 2.1 / 65535, 1.0, 2e-5);
    config.valueType = ValueType::int24;
    EXPECT_NEAR(ValueStream(config).valueAt(0, 0).number * 2.1 / 16777215, 1.0, 1e-7);
}

TEST(ValueFrame, SequenceNumberWrapsAfterSixteenBits) {
    const AmplifierConfig config = oneChannel(ValueType::int16, 0);
    ValueStream stream(config);
    ValueStream::Frames frames;
    for (int i = 0; i < 0x10000; ++i)
        stream.nextSet(frames);
    EXPECT_EQ(frames[0].data[2], 0xFF);
    EXPECT_EQ(frames[0].data[3], 0xFF);
    stream.nextSet(frames);
    EXPECT_EQ(frames[0].data[2], 0);
    EXPECT_EQ(frames[0].data[3], 0);
}

TEST(ValueFrame, ExtremesAreKeptUntilTheyAreCleared) {
    const AmplifierConfig config = oneChannel(ValueType::int16, -200);
    ValueStream stream(config);
    ValueStream::Frames frames;
    stream.nextSet(frames);
    EXPECT_EQ(stream.extremes(0).smallest, -200.0);
    EXPECT_EQ(stream.extremes(0).largest, -200.0);
    stream.clearExtremes(0);
    EXPECT_EQ(stream.extremes(0).smallest, 0.0);
    EXPECT_EQ(stream.extremes(0).largest, 0.0);
}

TEST(Signal, SineAgreesWithTheMathematicalOne) {
    for (int i = 0; i <= 1000; ++i) {
        EXPECT_NEAR(sineOfTurns(i / 1000.0), std::sin(2 * std::numbers::pi * i / 1000.0), 1e-9) << i;
    }
}

TEST(Signal, WaveformsHaveTheirShapes) {
    const SignalPlace place{1, 0, 100.0};
    const SignalConfig sine{Waveform::sine, 2, 1, 1, 0};
    EXPECT_NEAR(signalValue(sine, place, 25), 3.0, 1e-8);
    const SignalConfig step{Waveform::step, 2, 1, 1, 0};
    EXPECT_EQ(signalValue(step, place, 49), 1.0);
    EXPECT_EQ(signalValue(step, place, 50), 3.0);
    const SignalConfig ramp{Waveform::ramp, 2, 1, 1, 0};
    EXPECT_EQ(signalValue(ramp, place, 0), -1.0);
    EXPECT_NEAR(signalValue(ramp, place, 75), 2.0, 1e-12);
    const SignalConfig constant{Waveform::constant, 2, 1, 1, 0};
    EXPECT_EQ(signalValue(constant, place, 75), 1.0);
}

TEST(Signal, NoiseStaysWithinItsAmplitudeAndDependsOnSeedAndChannel) {
    const SignalConfig noise{Waveform::noise, 0.5, 1, 0, 0};
    double sum = 0;
    for (std::uint64_t set = 0; set < 10'000; ++set) {
        const double value = signalValue(noise, {1, 0, 100}, set);
        EXPECT_GE(value, 0.5);
        EXPECT_LT(value, 1.5);
        sum += value;
    }
    EXPECT_NEAR(sum / 10'000, 1.0, 0.02);
    EXPECT_NE(signalValue(noise, {1, 0, 100}, 5), signalValue(noise, {2, 0, 100}, 5));
    EXPECT_NE(signalValue(noise, {1, 0, 100}, 5), signalValue(noise, {1, 1, 100}, 5));
}

// The same figures on every system: what a test on one saw must be found on the other.
TEST_F(SilentStream, ValuesOfASeedAreTheSameOnEverySystem) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    virtualSendSets(0, 5000);
    for (const CanMessage& frame : drain()) {
        for (const std::uint8_t byte : dataOf(frame))
            hash = (hash ^ byte) * 0x100000001B3U;
    }
    EXPECT_EQ(hash, 6832996142265479801U);
}

TEST_F(SilentStream, ValuesAreThoseToldByTheControlFunction) {
    virtualSendSets(0, 100);
    const auto frames = drain();
    ASSERT_EQ(frames.size(), 600U);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        double value = 0;
        ASSERT_EQ(virtualValue(0, static_cast<std::uint32_t>(i % 6), i / 6, &value), 0);
        EXPECT_EQ(decoded(frames[i]), value) << i;
    }
    double untouched = 7;
    EXPECT_EQ(virtualValue(0, 6, 0, &untouched), -1);
    EXPECT_EQ(virtualValue(1, 0, 0, &untouched), -1);
    EXPECT_EQ(untouched, 7);
}

TEST_F(Stream, SetsComeAtTheSamplingFrequency) {
    const auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const auto frames = drain();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    EXPECT_GE(frames.size(), 29U * 6U);
    EXPECT_LE(static_cast<double>(frames.size()), (time.count() * 100 + 2) * 6);
    EXPECT_EQ(frames.size() % 6, 0U);
}

TEST_F(Stream, FramesAreInOrderWithoutAGap) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nfrequency = 5000\n"), 0);
    std::vector<CanMessage> frames;
    ASSERT_TRUE(eventually([&] {
        for (const CanMessage& frame : drain())
            frames.push_back(frame);
        return frames.size() > 3000;
    }));
    for (std::size_t i = 0; i < frames.size(); ++i) {
        ASSERT_EQ(frames[i].data[0], i % 6);
        ASSERT_EQ(frames[i].data[2] << 8U | frames[i].data[3], i / 6);
    }
}

TEST_F(Stream, StoppedStreamIsSilentAndGoesOnWhereItStopped) {
    ASSERT_TRUE(eventually([] { return virtualQueued() >= 12; }));
    CanMessage stop = commandFrame({0x23});
    ASSERT_EQ(CAN_Write(kUsb, &stop), kOk);
    const auto before = drain();
    EXPECT_EQ(before.back().id, kAnswerId) << "no value comes after the acknowledgement";
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(readFrame());
    CanMessage start = commandFrame({0x24});
    ASSERT_EQ(CAN_Write(kUsb, &start), kOk);
    EXPECT_EQ(readFrame().value().id, kAnswerId);
    ASSERT_TRUE(eventually([] { return virtualQueued() >= 1; }));
    const int lastSequence = before[before.size() - 2].data[3];
    EXPECT_EQ(readFrame().value().data[3], lastSequence + 1);
}

TEST_F(Stream, CommandsAreAnsweredBetweenTheValues) {
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nfrequency = 2000\n"), 0);
    int answers = 0;
    for (int i = 0; i < 100; ++i) {
        CanMessage command = commandFrame({0x2B});
        ASSERT_EQ(CAN_Write(kUsb, &command), kOk);
        for (const CanMessage& frame : drain())
            answers += frame.id == kAnswerId ? 1 : 0;
    }
    EXPECT_EQ(answers, 100);
}

TEST_F(Stream, NothingHappensWhileTheChannelIsClosed) {
    CAN_Uninitialize(kUsb);
    const VirtualCounters before = counters();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(counters().valueFramesSent, before.valueFramesSent);
}

}  // namespace
}  // namespace virtual_test
