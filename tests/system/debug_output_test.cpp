// The lines that the debug flag turns on.
#include <chrono>
#include <string>
#include <thread>

#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint32_t quiet = TORVIK_FLAG_PROTOCOL_KIND_16;
constexpr std::uint32_t debug = TORVIK_FLAG_PROTOCOL_KIND_16 | 0x02;

class DebugOutput : public Bench {
  protected:
    void SetUp() override {
        Bench::SetUp();
        testing::internal::CaptureStdout();
    }

    void TearDown() override {
        if (!taken_) testing::internal::GetCapturedStdout();
        Bench::TearDown();
    }

    // Line ends as they are on Linux.
    std::string takeOutput() {
        taken_ = true;
        std::string text = testing::internal::GetCapturedStdout();
        std::erase(text, '\r');
        return text;
    }

    static std::int32_t open(std::uint32_t flags, std::uint8_t adapterType = TORVIK_ADAPTER_USB) {
        std::uint32_t channels = 0;
        return TORVIKactivateExtended(device, adapterType, 1000000, 100, &channels, 0x100, answerId, flags);
    }

  private:
    bool taken_ = false;
};

TEST_F(DebugOutput, IsEmptyWithoutTheFlag) {
    EXPECT_EQ(open(quiet), 0);
    EXPECT_THAT(takeOutput(), IsEmpty());
}

TEST_F(DebugOutput, TellsThatTheAdapterIsOpen) {
    EXPECT_EQ(open(debug), 0);
    EXPECT_THAT(takeOutput(), HasSubstr("Der CAN-Adapter ist initialisiert\n"));
}

TEST_F(DebugOutput, ShowsEveryAnswerWithAllItsBytes) {
    EXPECT_EQ(open(debug), 0);
    EXPECT_THAT(takeOutput(), HasSubstr("OnCAN: 101 - 44 00 | 00 04 00 00 00 00\n"));
}

TEST_F(DebugOutput, TellsWhatSetUpHasFound) {
    EXPECT_EQ(open(debug), 0);
    const std::string output = takeOutput();
    EXPECT_THAT(output, HasSubstr("Value ID      102 \n"));
    EXPECT_THAT(output, HasSubstr("Aktive Kanaele 6 \n"));
    EXPECT_THAT(output, HasSubstr("CANDEV-Handle 1 initialisiert\n"));
}

TEST_F(DebugOutput, TellsThatTheReceiveEventCouldNotBeRegistered) {
    virtualFailCalls(VIRTUAL_GET_VALUE, 0x1400, 0, VIRTUAL_FOR_EVER);
    virtualFailCalls(VIRTUAL_SET_VALUE, 0x1400, 1, VIRTUAL_FOR_EVER);
    EXPECT_EQ(open(debug), 0);
    EXPECT_THAT(takeOutput(), HasSubstr("Fehler beim Setzen des Events\nThe channel handle is not valid\n"));
}

TEST_F(DebugOutput, NamesAnUnknownAdapterType) {
    EXPECT_EQ(open(debug, 5), -1);
    EXPECT_EQ(takeOutput(), "Der CAN-Adapter wird nicht unterstuetzt\n");
}

TEST_F(DebugOutput, ShowsTheStatusOfAFailedInitialisationWithoutItsText) {
    // The channel is not open yet, so that the adapter is not asked for a text.
    virtualFailCalls(VIRTUAL_INITIALIZE, 0x1400, 0, 1);
    EXPECT_EQ(open(debug), -1);
    EXPECT_EQ(
        takeOutput(),
        "An error ocurred. Error-code's text (1400h) couldn't be retrieved\nFehler Aufruf PCANInitialize [5120]\n");
}

TEST_F(DebugOutput, NamesTheAdapterOptionThatWasRefused) {
    constexpr std::uint32_t debugWithLog = debug | 0x04;
    const char* const lines[] = {"Fehler PCAN_LOG_CONFIGURE - LOG_FUNCTION_ALL [5120]\n",
                                 "Fehler PCAN_LOG_STATUS - PCAN_PARAMETER_ON [5120]\n",
                                 "Fehler PCAN_BUSOFF_AUTORESET - PCAN_PARAMETER_ON [5120]\n"};
    std::string expected;
    for (std::uint32_t skipped = 0; skipped < 3; ++skipped) {
        virtualFailCalls(VIRTUAL_SET_VALUE, 0x1400, skipped, 1);
        EXPECT_EQ(open(debugWithLog), -1);
        // The event was never registered, so that it cannot be taken back from the closed channel either.
        expected += std::string(lines[skipped]) +
                    "Fehler beim Ruecksetzen des Events\nAn error ocurred. Error-code's text (10000h) couldn't be "
                    "retrieved\n";
        TORVIKrelease(0);
        virtualReset();
    }
    EXPECT_EQ(takeOutput(), expected);
}

TEST_F(DebugOutput, ShowsTheTextOfARefusedWrite) {
    EXPECT_EQ(open(debug), 0);
    virtualFailCalls(VIRTUAL_WRITE, 0x10, 0, 1);
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), -1);
    EXPECT_THAT(takeOutput(), HasSubstr("Bus error: the CAN controller has switched itself off the bus\n"));
}

TEST_F(DebugOutput, SaysSoWhenTheAdapterHasNoText) {
    EXPECT_EQ(open(debug), 0);
    virtualFailCalls(VIRTUAL_WRITE, 0x10, 0, 1);
    virtualFailCalls(VIRTUAL_GET_ERROR_TEXT, 0x1, 0, 1);
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, &ident), -1);
    EXPECT_THAT(takeOutput(), HasSubstr("An error ocurred. Error-code's text (10h) couldn't be retrieved\n"));
}

struct Fault {
    std::uint32_t status;
    const char* lines;
};

class FaultDebugOutput : public DebugOutput, public testing::WithParamInterface<Fault> {};

TEST_P(FaultDebugOutput, ShowsTheTextOfTheStatusAndThenTheFault) {
    ASSERT_EQ(open(debug), 0);
    virtualFailCalls(VIRTUAL_READ, GetParam().status, 0, 1);
    push({valueFrame(valueId, 0, 1, int16Type, 7)});
    VirtualCounters counters{};
    for (int i = 0; i < 2000 && counters.calls[VIRTUAL_GET_ERROR_TEXT] == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        virtualGetCounters(&counters);
    }
    TORVIKrelease(0);  // ends the receive thread, so that it has printed everything
    EXPECT_THAT(takeOutput(), HasSubstr(GetParam().lines));
}

INSTANTIATE_TEST_SUITE_P(
    Adapter, FaultDebugOutput,
    testing::Values(
        Fault{0x4, "Bus error: an error counter has reached its lower limit\nFehler: PCAN_ERROR_BUSLIGHT\n"},
        Fault{0x8, "Bus error: an error counter has reached its upper limit\nFehler: PCAN_ERROR_BUSHEAVY\n"},
        Fault{0x10, "Bus error: the CAN controller has switched itself off the bus\nFehler: PCAN_ERROR_BUSOFF\n"},
        Fault{0x40, "The receive queue was full and frames were lost\nFehler: PCAN_ERROR_QOVERRUN\n"},
        Fault{0x1400, "The channel handle is not valid\nFehler: PCAN_ERROR_ILLHW\n"},
        Fault{0x10000, "Unknown error\nFehler: Status 65536\n"}),
    [](const auto& fault) { return "Status" + std::to_string(fault.param.status); });

}  // namespace
