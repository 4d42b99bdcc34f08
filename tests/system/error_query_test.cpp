#include <array>

#include "support/bench_fixture.h"

namespace {

using namespace torvik::test;
using testing::ElementsAre;

class ErrorQuery : public Bench {
  protected:
    void SetUp() override {
        Bench::SetUp();
        activate();
    }
};

TEST_F(ErrorQuery, LibraryErrorIsReadOnceAsANumber) {
    EXPECT_EQ(TORVIKclearMaximumValue(device, 9), -1);
    std::uint32_t code = 0;
    EXPECT_EQ(TORVIKgetLastProtocolError(device, 1, 0, &code), 0);
    EXPECT_EQ(code, 0x30000100u);
    EXPECT_EQ(TORVIKgetLastProtocolError(device, 1, 0, &code), 0);
    EXPECT_EQ(code, 0u);
    expectNothingSent();
}

TEST_F(ErrorQuery, ProtocolErrorOfTheDeviceIsAskedByItsNumber) {
    answerWith(0x42, {0, 1, 2, 3, 4});
    std::uint32_t code = 0;
    EXPECT_EQ(TORVIKgetLastProtocolError(device, 2, 5, &code), 0);
    EXPECT_EQ(code, 0x01020304u);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 81 42 05"));
}

TEST_F(ErrorQuery, UnknownKindAndNullAreRefused) {
    std::uint32_t code = 0;
    for (const std::uint32_t kind : {0u, 3u, 257u}) {
        EXPECT_EQ(TORVIKgetLastProtocolError(device, kind, 0, &code), -1);
        expectLastError(device, 0x30000100, parameterExceedance);
    }
    EXPECT_EQ(TORVIKgetLastProtocolError(device, 1, 0, nullptr), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    EXPECT_EQ(TORVIKgetLastValueError(device, 0, nullptr), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
    expectNothingSent();
}

TEST_F(ErrorQuery, ValueErrorGivesSixBytes) {
    answerWith(0x43, {0, 1, 2, 3, 4, 5, 6});
    std::array<std::uint8_t, 7> data{9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(TORVIKgetLastValueError(device, 255, data.data()), 0);
    EXPECT_THAT(data, ElementsAre(1, 2, 3, 4, 5, 6, 9));
    EXPECT_THAT(takeWritten(), ElementsAre("100: 81 43 FF"));
}

TEST_F(ErrorQuery, ResetStatusSendsItsCommand) {
    EXPECT_EQ(TORVIKresetStatus(device), 0);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 80 00"));
}

TEST_F(ErrorQuery, InterfaceIdentSendsTheLowTwoBitsOfItsIndex) {
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 6, &ident), 0);
    EXPECT_EQ(ident, 1000000u);
    EXPECT_THAT(takeWritten(), ElementsAre("100: 81 01 02"));
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 0, nullptr), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
}

TEST_F(ErrorQuery, NumbersAboveThirtyNineShareOneSlot) {
    EXPECT_EQ(TORVIKresetStatus(41), -1);
    expectLastError(255, 0x30000100, parameterExceedance);
    std::uint32_t code = 0;
    EXPECT_EQ(TORVIKgetLastProtocolError(40, 1, 0, &code), -1);
    expectLastError(40, 0x30000100, parameterExceedance);
    expectNothingSent();
}

TEST_F(ErrorQuery, EveryQueryRefusesANumberAboveThirtyNine) {
    std::uint32_t number = 0;
    std::array<std::uint8_t, 6> data{};
    EXPECT_EQ(TORVIKgetLastProtocolError(40, 2, 0, &number), -1);
    expectLastError(40, 0x30000100, parameterExceedance);
    EXPECT_EQ(TORVIKgetLastValueError(40, 0, data.data()), -1);
    expectLastError(40, 0x30000100, parameterExceedance);
    EXPECT_EQ(TORVIKgetInterfaceIdent(40, 0, &number), -1);
    expectLastError(40, 0x30000100, parameterExceedance);
    expectNothingSent();
}

TEST_F(ErrorQuery, InactiveDeviceIsRefusedButANullPointerFirst) {
    std::uint32_t code = 0;
    EXPECT_EQ(TORVIKgetLastProtocolError(5, 1, 0, &code), -1);
    expectLastError(5, 0x30000113, notInitialized);
    EXPECT_EQ(TORVIKgetInterfaceIdent(5, 0, nullptr), -1);
    expectLastError(5, 0x30000100, parameterExceedance);
    expectNothingSent();
}

TEST_F(ErrorQuery, TextTakesNoMoreThanItsBuffer) {
    EXPECT_EQ(TORVIKclearMaximumValue(device, 9), -1);
    std::array<char, 130> text{};
    text.fill('#');
    std::uint32_t code = 0;
    EXPECT_EQ(TORVIKgetLastErrorText(device, text.data(), &code), 0);
    EXPECT_EQ(std::string_view(text.data()), parameterExceedance);
    EXPECT_EQ(text[128], '#');
    EXPECT_EQ(text[129], '#');
}

TEST_F(ErrorQuery, StatusThatNoTextIsKnownForIsNamedByItsNumber) {
    answerWith(0x00, {0xFE}, 1);
    EXPECT_EQ(TORVIKresetStatus(device), -1);
    const LastError error = takeLastError(device);
    EXPECT_EQ(error.code, 0xFEu);
    EXPECT_THAT(error.text, testing::HasSubstr("FE"));
}

TEST_F(ErrorQuery, NullTextOrCodeKeepsTheError) {
    EXPECT_EQ(TORVIKclearMaximumValue(device, 9), -1);
    std::array<char, 128> text{};
    std::uint32_t code = 0;
    EXPECT_EQ(TORVIKgetLastErrorText(device, nullptr, &code), -1);
    EXPECT_EQ(TORVIKgetLastErrorText(device, text.data(), nullptr), -1);
    expectLastError(device, 0x30000100, parameterExceedance);
}

TEST_F(ErrorQuery, VersionNeedsNoDevice) {
    TORVIKrelease(0);
    std::uint32_t version = 0;
    EXPECT_EQ(TORVIKDllVersion(&version), 0);
    EXPECT_EQ(version, 65553u);
}

}  // namespace
