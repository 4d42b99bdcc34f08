// Restarting a device, and the settings that end with a restart.
#include <thread>

#include "core/library_state.h"
#include "params/params_bench.h"
#include "support/held_elsewhere.h"

namespace torvik::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t lastFirmwareWithoutReset = 0x00030008;
constexpr std::uint32_t firstFirmwareWithReset = 0x00030009;
constexpr std::int32_t buffersNotCleared = 229;

class ResetDevice : public ParamsBench {
  protected:
    std::int32_t reset() {
        return run([] { return TORVIKresetDevice(device); });
    }
};

TEST_F(ResetDevice, NeedsFirmware30009) {
    activateAs({.firmware = lastFirmwareWithoutReset});
    EXPECT_EQ(reset(), -1);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_THAT(takeSent(), IsEmpty());
    activateAs({.firmware = firstFirmwareWithReset});
    EXPECT_EQ(reset(), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 78", "80 24"));
}

TEST_F(ResetDevice, LeavesTheDeviceAloneFor700Milliseconds) {
    script({accepts(0x24)});
    auto result = std::async(std::launch::async, [] { return TORVIKresetDevice(device); });
    ASSERT_TRUE(clock.untilWaiting());
    EXPECT_THAT(takeSent(), ElementsAre("80 78"));
    clock.advance(699ms);
    std::this_thread::sleep_for(5ms);
    EXPECT_THAT(takeSent(), IsEmpty());
    clock.advance(1ms);
    EXPECT_EQ(result.get(), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 24"));
}

TEST_F(ResetDevice, CutShortByAReleaseMakesTheSettingFailWhateverCodeStoodThere) {
    record().lastError = code::firmwareUnsupported;
    auto result = std::async(std::launch::async, [] { return TORVIKwriteAoutOffset(device, 1, 0.0); });
    for (std::vector<std::string> sent; sent.empty() || sent.back() != "80 78"; std::this_thread::sleep_for(1ms)) {
        if (auto more = takeSent(); !more.empty()) sent = more;
        ASSERT_TRUE(result.wait_for(0s) != std::future_status::ready) << "no restart";
    }
    TORVIKrelease(device);
    EXPECT_EQ(result.get(), -1);
    EXPECT_EQ(takeCode(), 0x30000113U);
}

TEST_F(ResetDevice, StopsAStreamThatWasStopped) {
    activateAs({.streaming = false});
    EXPECT_EQ(reset(), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 78", "80 23"));
    EXPECT_FALSE(record().transmitting);
}

TEST_F(ResetDevice, StartsAStreamThatRan) {
    EXPECT_EQ(reset(), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 78", "80 24"));
    EXPECT_TRUE(record().transmitting);
}

TEST_F(ResetDevice, ThrowsTheLibrarysValuesAway) {
    pushSet(0, int24Type, {1, 2, 3, 4, 5, 6});
    settle();
    std::int32_t count = 0;
    ASSERT_EQ(TORVIKreceived(device, 0, &count), 0);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(reset(), 0);
    EXPECT_EQ(TORVIKreceived(device, 0, &count), 0);
    EXPECT_EQ(count, 0);
}

TEST_F(ResetDevice, SucceedsWhenTheStreamIsRefused) {
    script({Answer{0x24, {0x52}}});
    EXPECT_EQ(reset(), 0);
    EXPECT_TRUE(record().transmitting);
    expectFree();
}

TEST_F(ResetDevice, SucceedsWhenTheStreamsAnswerIsMissing) {
    drop(0x24);
    EXPECT_EQ(reset(), 0);
    EXPECT_EQ(clock.elapsed(), 2700ms);
    expectFree();
}

TEST_F(ResetDevice, SucceedsWhenTheStreamsCommandCannotBeWritten) {
    failWriteAfter(1);
    EXPECT_EQ(reset(), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 78"));
    expectFree();
}

TEST_F(ResetDevice, KeepsTheStreamStoppedWhenStoppingFails) {
    activateAs({.streaming = false});
    script({Answer{0x23, {0x52}}});
    EXPECT_EQ(reset(), 0);
    EXPECT_FALSE(record().transmitting);
}

TEST_F(ResetDevice, GoesOnWhenTheValuesAreLockedAndTells) {
    {
        const HeldElsewhere held(valueMutex);
        EXPECT_EQ(reset(), buffersNotCleared);
    }
    EXPECT_THAT(takeSent(), ElementsAre("80 78", "80 24"));
    EXPECT_EQ(clock.elapsed(), 10700ms);
}

struct Setting {
    const char* name;
    Call call;
    std::string sent;
};

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << setting.name;
}

std::vector<Setting> settings() {
    return {
        {"setMode", writes(TORVIKsetMode, 6), "84 27 00 00 00 06"},
        {"loadSettings", writes(TORVIKloadSettings, 2U), "81 09 02"},
        {"writeAoutOffset", writes(TORVIKwriteAoutOffset, 1U, 1.0), "85 05 01 3F 80 00 00"},
        {"setAoutType", writes(TORVIKsetAoutType, 1U, std::uint8_t{1}, std::uint8_t{2}), "83 0E 01 01 02"},
        {"setInType", writes(TORVIKsetInType, 1U, std::uint8_t{1}), "82 A3 01 01"},
        {"FABwriteInputRange", writes(TORVIKFABwriteInputRange, 1U, 0U, 1.0), "86 34 01 00 00 00 00 64"},
        {"setFrequency", writes(TORVIKsetFrequency, 1.0), "84 8B 3F 80 00 00"},
    };
}

class RestartingSetting : public ParamsBench, public testing::WithParamInterface<Setting> {
  protected:
    std::int32_t set() {
        replaceAnswers();
        return run([] { return GetParam().call(device); }).result;
    }

    // The setting itself is always acknowledged.
    static void replaceAnswers() { answerWith(commandOf(GetParam().sent), {0}); }
};

TEST_P(RestartingSetting, TakesAPauseOf700Milliseconds) {
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(clock.elapsed(), 700ms);
    EXPECT_EQ(takeCode(), code::none);
}

TEST_P(RestartingSetting, LeavesAStoppedStreamStopped) {
    activateAs({.streaming = false});
    EXPECT_EQ(set(), 0);
    EXPECT_THAT(takeSent(), ElementsAre(GetParam().sent, "80 78", "80 23"));
    EXPECT_FALSE(record().transmitting);
}

TEST_P(RestartingSetting, FailsWhenTheRestartCannotBeWritten) {
    failWriteAfter(1);
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    EXPECT_THAT(takeSent(), ElementsAre(GetParam().sent));
    EXPECT_EQ(clock.elapsed(), 0ms);
}

TEST_P(RestartingSetting, SucceedsWhenTheStreamIsNotRestored) {
    answerWith(0x24, {0x52});
    EXPECT_EQ(set(), 0);
}

TEST_P(RestartingSetting, TellsThatTheValuesCouldNotBeCleared) {
    const HeldElsewhere held(valueMutex);
    EXPECT_EQ(set(), buffersNotCleared);
}

INSTANTIATE_TEST_SUITE_P(Params, RestartingSetting, testing::ValuesIn(settings()),
                         [](const auto& instance) { return instance.param.name; });

// Input types came later than the restart.
class SettingOfOldFirmware : public RestartingSetting {};

TEST_P(SettingOfOldFirmware, CountsAsMadeWithoutARestart) {
    activateAs({.firmware = lastFirmwareWithoutReset});
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_THAT(takeSent(), ElementsAre(GetParam().sent));
    EXPECT_EQ(clock.elapsed(), 0ms);
}

TEST_P(SettingOfOldFirmware, IsFollowedByARestartFrom30009On) {
    activateAs({.firmware = firstFirmwareWithReset});
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(takeCode(), code::none);
    EXPECT_THAT(takeSent(), ElementsAre(GetParam().sent, "80 78", "80 24"));
}

std::vector<Setting> settingsOfOldFirmware() {
    std::vector<Setting> old = settings();
    std::erase_if(old, [](const Setting& setting) { return setting.name == std::string("setInType"); });
    return old;
}

INSTANTIATE_TEST_SUITE_P(Params, SettingOfOldFirmware, testing::ValuesIn(settingsOfOldFirmware()),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace torvik::test
