#include "can/pcan_api.h"

#include <gmock/gmock.h>

#include "can/adapter_event.h"
#include "support/adapter_test.h"

namespace torvik {
namespace {

using test::FakeAdapter;
using test::RecordTest;
using test::usb;
using testing::ElementsAre;
using testing::IsEmpty;

class PcanApi : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        unload();
    }

    // A table with an entry missing counts as not loaded.
    void unload() {
        adapter.loseEntry("CAN_Read");
        loadPcanApi();
        adapter.forget();
    }

    FakeAdapter& adapter = FakeAdapter::instance();
};

TEST_F(PcanApi, FindsItsTenEntriesOneAfterTheOther) {
    EXPECT_EQ(loadPcanApi(), pcan::ok);
    EXPECT_TRUE(pcanLoaded());
    EXPECT_THAT(adapter.lookedUp(),
                ElementsAre("CAN_Initialize", "CAN_Uninitialize", "CAN_Reset", "CAN_GetStatus", "CAN_Read", "CAN_Write",
                            "CAN_FilterMessages", "CAN_GetValue", "CAN_SetValue", "CAN_GetErrorText"));
}

TEST_F(PcanApi, IsNotLoadedWithoutTheLibrary) {
    adapter.loseLibrary();
    EXPECT_EQ(loadPcanApi(), 0x10000U);
    EXPECT_FALSE(pcanLoaded());
    EXPECT_THAT(adapter.lookedUp(), IsEmpty());
}

TEST_F(PcanApi, FindsALibraryThatWasMissingBefore) {
    adapter.loseLibrary();
    loadPcanApi();
    adapter.forget();
    EXPECT_EQ(loadPcanApi(), pcan::ok);
    EXPECT_TRUE(pcanLoaded());
}

TEST_F(PcanApi, LoadsTheLibraryOnceAndLooksItsEntriesUpAgain) {
    loadPcanApi();
    EXPECT_EQ(loadPcanApi(), pcan::ok);
    EXPECT_EQ(adapter.libraryLoads(), 1U);
    EXPECT_EQ(adapter.lookedUp().size(), 20U);
}

TEST_F(PcanApi, NeedsNoLibraryFileOnceItIsLoaded) {
    loadPcanApi();
    adapter.loseLibrary();
    EXPECT_EQ(loadPcanApi(), pcan::ok);
}

TEST_F(PcanApi, LoadsTheLibraryAgainAfterAnEntryWasMissing) {
    adapter.loseEntry("CAN_Write");
    loadPcanApi();
    loadPcanApi();
    EXPECT_EQ(adapter.libraryLoads(), 2U);
}

class PcanEntry : public PcanApi, public testing::WithParamInterface<const char*> {};

TEST_P(PcanEntry, IsNeededForTheTableToBeLoaded) {
    adapter.loseEntry(GetParam());
    EXPECT_EQ(loadPcanApi(), 0x10000U);
    EXPECT_FALSE(pcanLoaded());
}

TEST_P(PcanEntry, ThatIsMissingDoesNotEndTheLookUp) {
    adapter.loseEntry(GetParam());
    loadPcanApi();
    EXPECT_EQ(adapter.lookedUp().size(), 10U);
}

TEST_P(PcanEntry, ThatHasGoneMissingMakesALoadedTableUnusable) {
    ASSERT_EQ(loadPcanApi(), pcan::ok);
    adapter.loseEntry(GetParam());
    EXPECT_EQ(loadPcanApi(), 0x10000U);
    EXPECT_FALSE(pcanLoaded());
}

INSTANTIATE_TEST_SUITE_P(EveryOne, PcanEntry,
                         testing::Values("CAN_Initialize", "CAN_Uninitialize", "CAN_Reset", "CAN_GetStatus", "CAN_Read",
                                         "CAN_Write", "CAN_FilterMessages", "CAN_GetValue", "CAN_SetValue",
                                         "CAN_GetErrorText"));

TEST_F(PcanApi, CallsNothingWhileAnEntryIsMissing) {
    adapter.loseEntry("CAN_GetStatus");
    loadPcanApi();
    libraryState.adapterOpen = true;
    PcanMessage message;
    EXPECT_EQ(pcanInitialize(usb, 0x14), 0x10000U);
    EXPECT_EQ(pcanWrite(usb, message), 0x10000U);
    EXPECT_EQ(pcanUninitialize(usb), 0x10000U);
    EXPECT_EQ(adapter.initialized(), FakeAdapter::Initialization{});
    EXPECT_THAT(adapter.written(), IsEmpty());
    EXPECT_THAT(adapter.uninitialized(), IsEmpty());
}

class PcanCall : public RecordTest {
  protected:
    FakeAdapter& adapter = FakeAdapter::instance();
};

TEST_F(PcanCall, InitialisesWithChannelAndBaudCodeAndOtherwiseZeros) {
    EXPECT_EQ(pcanInitialize(usb, 0x1C), pcan::ok);
    EXPECT_EQ(adapter.initialized(), (FakeAdapter::Initialization{usb, 0x1C, 0, 0, 0}));
}

TEST_F(PcanCall, InitialisesAndUninitialisesWhileTheAdapterIsClosed) {
    libraryState.adapterOpen = false;
    EXPECT_EQ(pcanInitialize(usb, 0x1C), pcan::ok);
    EXPECT_EQ(pcanUninitialize(usb), pcan::ok);
}

TEST_F(PcanCall, ForgetsUninitialiseAfterItsFirstCall) {
    adapter.failUninitialize(0x40);
    EXPECT_EQ(pcanUninitialize(usb), 0x40U);
    EXPECT_EQ(pcanUninitialize(usb), 0x10000U);
    EXPECT_THAT(adapter.uninitialized(), ElementsAre(usb));
}

TEST_F(PcanCall, FindsUninitialiseAgainWithTheNextLoading) {
    pcanUninitialize(usb);
    loadPcanApi();
    EXPECT_EQ(pcanUninitialize(usb), pcan::ok);
    EXPECT_THAT(adapter.uninitialized(), ElementsAre(usb, usb));
}

TEST_F(PcanCall, FailsWhileTheAdapterIsClosed) {
    libraryState.adapterOpen = false;
    PcanMessage message;
    PcanTimestamp timestamp;
    std::uint32_t value = 0;
    EXPECT_EQ(pcanReset(usb), 0x10000U);
    EXPECT_EQ(pcanRead(usb, message, timestamp), 0x10000U);
    EXPECT_EQ(pcanWrite(usb, message), 0x10000U);
    EXPECT_EQ(pcanGetValue(usb, pcan::receiveEvent, &value, sizeof value), 0x10000U);
    EXPECT_EQ(pcanSetValue(usb, pcan::receiveEvent, 1), 0x10000U);
    EXPECT_EQ(adapter.resets(), 0U);
    EXPECT_THAT(adapter.written(), IsEmpty());
    EXPECT_THAT(adapter.settings(), IsEmpty());
}

TEST_F(PcanCall, SetsNumbersInFourBytes) {
    EXPECT_EQ(pcanSetValue(usb, 0x07, 1), pcan::ok);
    EXPECT_THAT(adapter.settings(), ElementsAre(FakeAdapter::Setting{usb, 0x07, 1, 4}));
}

TEST_F(PcanCall, TakesTheReceiveEventBackWithAZeroOfFourBytes) {
    libraryState.channelHandle = usb;
    EXPECT_EQ(pcanEventOff(), pcan::ok);
    EXPECT_THAT(adapter.settings(), ElementsAre(FakeAdapter::Setting{usb, 0x03, 0, 4}));
}

TEST_F(PcanCall, TakingTheReceiveEventBackGivesTheAdaptersStatus) {
    adapter.failSetValue(pcan::receiveEvent, 0x4000);
    EXPECT_EQ(pcanEventOff(), 0x4000U);
}

TEST_F(PcanCall, TakingTheReceiveEventBackFailsWhileTheAdapterIsClosed) {
    libraryState.adapterOpen = false;
    EXPECT_EQ(pcanEventOff(), 0x10000U);
    EXPECT_THAT(adapter.settings(), IsEmpty());
}

class PcanErrorText : public PcanCall {
  protected:
    static std::string printed(std::uint32_t status) {
        testing::internal::CaptureStdout();
        printPcanError(status);
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(PcanErrorText, IsTheAdaptersOwnInTheNeutralLanguage) {
    adapter.setErrorText("The bus is 100% off");
    EXPECT_EQ(printed(0x10), "The bus is 100% off\n");
    EXPECT_EQ(adapter.errorTextLanguage(), 0);
}

TEST_F(PcanErrorText, MayFillTheWholeBuffer) {
    const std::string longest(255, 'x');
    adapter.setErrorText(longest);
    EXPECT_EQ(printed(0x10), longest + "\n");
}

TEST_F(PcanErrorText, IsReplacedWhereTheAdapterHasNone) {
    adapter.failErrorText();
    EXPECT_EQ(printed(0x1C00), "An error ocurred. Error-code's text (1C00h) couldn't be retrieved\n");
}

TEST_F(PcanErrorText, IsNotAskedForWhileTheAdapterIsClosed) {
    libraryState.adapterOpen = false;
    EXPECT_EQ(printed(0x10000), "An error ocurred. Error-code's text (10000h) couldn't be retrieved\n");
    EXPECT_EQ(adapter.errorTextLanguage(), std::nullopt);
}

}  // namespace
}  // namespace torvik
