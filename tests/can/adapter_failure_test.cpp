// Openings of the adapter channel that stop half way.
#include <gmock/gmock.h>

#include "support/adapter_test.h"

namespace torvik {
namespace {

using test::AdapterTest;
using test::failEvent;
using test::failThread;
using test::FakeAdapter;
using test::usb;
using testing::ElementsAre;
using testing::IsEmpty;

int mutexesUntilFailure = 0;

// The answer mutex is the first one, the value mutex the second.
std::uint32_t failOneMutex(platform::FaultPoint point) {
    return point == platform::FaultPoint::mutexCreate && mutexesUntilFailure-- == 0 ? 14 : 0;
}

std::uint32_t failBothMutexes(platform::FaultPoint point) {
    return point == platform::FaultPoint::mutexCreate ? 15 : 0;
}

class AdapterFailure : public AdapterTest {
  protected:
    static void failMutex(int number) {
        mutexesUntilFailure = number;
        platform::setFaultHook(failOneMutex);
    }
};

TEST_F(AdapterFailure, WithoutTheAnswerMutexAloneIsAMutexFailure) {
    failMutex(0);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0x30000111U);
    EXPECT_FALSE(answerMutex.exists());
    EXPECT_TRUE(valueMutex.exists());
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterFailure, WithoutTheValueMutexAloneIsAMutexFailure) {
    failMutex(1);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0x30000111U);
    EXPECT_TRUE(answerMutex.exists());
    EXPECT_FALSE(valueMutex.exists());
    EXPECT_FALSE(threadExists());
}

TEST_F(AdapterFailure, LeavesOpenWhatWasOpened) {
    platform::setFaultHook(failThread);
    EXPECT_EQ(open(), refused);
    EXPECT_TRUE(libraryState.adapterOpen);
    EXPECT_TRUE(libraryState.receiveEvent.exists());
    EXPECT_TRUE(answerMutex.exists());
    EXPECT_TRUE(valueMutex.exists());
    EXPECT_THAT(adapter.uninitialized(), IsEmpty());
}

TEST_F(AdapterFailure, DoesNotKeepTheChannelFromBeingOpenedAfterARelease) {
    platform::setFaultHook(failThread);
    EXPECT_EQ(open(), refused);
    release(true);
    platform::setFaultHook(nullptr);
    EXPECT_EQ(open(), 0);
    EXPECT_TRUE(threadExists());
}

TEST_F(AdapterFailure, WithoutTheLibraryStoresTheUnknownError) {
    adapter.loseEntry("CAN_Read");
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0x10000U);
    EXPECT_FALSE(libraryState.adapterOpen);
}

TEST_F(AdapterFailure, OfTheEventIsPrintedWithTheSystemError) {
    platform::setFaultHook(failEvent);
    EXPECT_EQ(debugLines([] { open(); }), "Das EventHandle konnte nicht initialisert werden(8)\n");
}

TEST_F(AdapterFailure, OfTheAnswerMutexIsPrintedWithTheSystemError) {
    failMutex(0);
    EXPECT_EQ(debugLines([] { open(); }), "CreateMutex error: 14\n");
}

TEST_F(AdapterFailure, OfTheValueMutexIsPrintedWithTheSystemError) {
    failMutex(1);
    EXPECT_EQ(debugLines([] { open(); }), "CreateReadMutex error: 14\n");
}

TEST_F(AdapterFailure, OfBothMutexesIsPrintedForEach) {
    platform::setFaultHook(failBothMutexes);
    EXPECT_EQ(debugLines([] { open(); }), "CreateMutex error: 15\nCreateReadMutex error: 15\n");
}

TEST_F(AdapterFailure, OfTheThreadIsPrinted) {
    platform::setFaultHook(failThread);
    EXPECT_EQ(debugLines([] { open(); }), "Der LeseThread konnte nicht gestartet werden\n");
}

TEST_F(AdapterFailure, PrintsNothingWhileDebugOutputIsOff) {
    testing::internal::CaptureStdout();
    platform::setFaultHook(failEvent);
    open();
    failMutex(0);
    open();
    platform::setFaultHook(failThread);
    open();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

class AdapterOptions : public AdapterTest {
  protected:
    // Without what concerns the receive event.
    std::vector<FakeAdapter::Setting> options() const {
        std::vector<FakeAdapter::Setting> settings = adapter.settings();
        std::erase_if(settings, [](const auto& setting) { return setting.parameter == pcan::receiveEvent; });
        return settings;
    }
};

TEST_F(AdapterOptions, AreTheAutomaticBusOffResetAlone) {
    ASSERT_EQ(open(), 0);
    EXPECT_THAT(options(), ElementsAre(FakeAdapter::Setting{usb, 0x07, 1, 4}));
}

TEST_F(AdapterOptions, ForTheLogComeFirstAndConcernNoChannel) {
    libraryState.pcanLogging = true;
    ASSERT_EQ(open(), 0);
    EXPECT_THAT(options(), ElementsAre(FakeAdapter::Setting{0, 0x0B, 0xFFFF, 4}, FakeAdapter::Setting{0, 0x0A, 1, 4},
                                       FakeAdapter::Setting{usb, 0x07, 1, 4}));
}

struct Refusal {
    std::uint8_t parameter;
    std::size_t optionsTried;
};

class RefusedAdapterOption : public AdapterOptions, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusedAdapterOption, IsTheLastOneAndGivesItsStatus) {
    libraryState.pcanLogging = true;
    adapter.failSetValue(GetParam().parameter, 0x4000);
    EXPECT_EQ(open(), refused);
    EXPECT_EQ(lastErrorOf(deviceNo), 0x4000U);
    EXPECT_EQ(options().size(), GetParam().optionsTried);
    EXPECT_FALSE(threadExists());
}

INSTANTIATE_TEST_SUITE_P(EveryOne, RefusedAdapterOption,
                         testing::Values(Refusal{pcan::logConfigure, 1}, Refusal{pcan::logStatus, 2},
                                         Refusal{pcan::busOffAutoReset, 3}));

}  // namespace
}  // namespace torvik
