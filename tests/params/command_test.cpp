// Single commands as the caller gives them.
#include "TORVIKcommand.h"
#include "params/params_bench.h"

namespace torvik::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint8_t readCoefficient = 0x4F;

class Command : public ParamsBench {
  protected:
    static constexpr std::uint8_t untouchedByte = 0xEE;

    std::int32_t send(std::uint8_t commandCode, const Bytes& parameters, std::int32_t deviceNo = device) {
        return run([&, deviceNo, commandCode] {
            return TORVIKcommand(deviceNo, commandCode, parameters.empty() ? nullptr : parameters.data(),
                                 static_cast<std::uint32_t>(parameters.size()), answer.data());
        });
    }

    // The call failed with this code and wrote no answer.
    void expectFailure(std::int32_t result, std::uint32_t expectedCode, std::int32_t deviceNo = device) {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(takeCode(deviceNo), expectedCode);
        EXPECT_THAT(answer, Each(untouchedByte));
    }

    Bytes answer = Bytes(8, untouchedByte);
};

TEST_F(Command, WithParameters_SendsThemInTheirOrderAndReturnsTheWholeAnswer) {
    script({Answer{readCoefficient, {0x3F, 0x81, 0x02, 0x03, 0x04, 0x05, 0x06}}});
    EXPECT_EQ(send(readCoefficient, {0x03, 0x12}), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 4F 03 12"));
    EXPECT_THAT(answer, ElementsAre(0x46, 0x3F, 0x81, 0x02, 0x03, 0x04, 0x05, 0x06));
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(Command, WithSixParameters_FillsTheFrame) {
    script({accepts(0x50)});
    EXPECT_EQ(send(0x50, {1, 2, 3, 4, 5, 6}), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 50 01 02 03 04 05 06"));
}

TEST_F(Command, WithoutParameters_NeedsNoPointer) {
    script({accepts(0x2B, {0, 4, 0, 0})});
    EXPECT_EQ(send(0x2B, {}), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 2B"));
}

TEST_F(Command, LengthZero_IgnoresTheParameters) {
    script({accepts(0x2B)});
    const Bytes ignored{1, 2, 3};
    EXPECT_EQ(TORVIKcommand(device, 0x2B, ignored.data(), 0, answer.data()), 0);
    EXPECT_THAT(takeSent(), ElementsAre("80 2B"));
}

TEST_F(Command, AnswerInThePlaceOfTheParameters_IsWrittenOnceTheyAreSent) {
    script({accepts(0x50, {9, 8, 7})});
    Bytes both{1, 2, 3, 4, 5, 6, 0, 0};
    EXPECT_EQ(TORVIKcommand(device, 0x50, both.data(), 6, both.data()), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 50 01 02 03 04 05 06"));
    EXPECT_THAT(both, ElementsAre(0x46, 0, 9, 8, 7, 0, 0, 0));
}

TEST_F(Command, EveryCodeWithOneAnswer_IsSent) {
    for (unsigned number = 0; number < 256; ++number) {
        const auto commandCode = static_cast<std::uint8_t>(number);
        if (commandCode == 0x11 || commandCode == 0x1B || commandCode == 0x53 || commandCode == 0x3B ||
            commandCode == 0x78)
            continue;
        script({Answer{commandCode, {0, commandCode}}});
        EXPECT_EQ(send(commandCode, {}), 0) << number;
        EXPECT_EQ(answer[2], commandCode);
    }
    EXPECT_EQ(takeSent().size(), 251U);
}

TEST_F(Command, EveryCodeWithoutExactlyOneAnswer_IsRejected) {
    for (const std::uint8_t commandCode : Bytes{0x11, 0x1B, 0x53, 0x3B, 0x78})
        expectFailure(send(commandCode, {1}), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
    expectFree();
}

TEST_F(Command, LengthAboveSix_IsRejected) {
    const Bytes seven(7);
    for (const std::uint32_t length : {7U, 14U, 254U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU})
        expectFailure(TORVIKcommand(device, readCoefficient, seven.data(), length, answer.data()),
                      code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(Command, NullParametersWithALength_AreRejected) {
    for (const std::uint32_t length : {1U, 6U, 7U})
        expectFailure(TORVIKcommand(device, readCoefficient, nullptr, length, answer.data()),
                      code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(Command, NullAnswer_IsRejected) {
    const Bytes parameters{1, 2};
    EXPECT_EQ(TORVIKcommand(device, readCoefficient, parameters.data(), 2, nullptr), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(Command, NumberAboveThirtyNine_IsRejected) {
    for (const std::int32_t number : {40, 255, 0x7FFFFF28})
        expectFailure(send(readCoefficient, {1, 2}, number), code::parameterExceedance, 40);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(Command, InactiveDevice_FailsAfterTheArgumentsWereChecked) {
    expectFailure(send(readCoefficient, {1, 2}, inactiveDevice), code::notActive, inactiveDevice);
    expectFailure(send(readCoefficient, {1, 2}, 0), code::notActive, 0);
    expectFailure(send(0x11, {1}, inactiveDevice), code::parameterExceedance, inactiveDevice);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(Command, Refusal_FailsWithTheStatusAndReturnsTheAnswer) {
    for (const std::uint8_t status : Bytes{0x40, 0x52, 0x99, 0xFF}) {
        answer.assign(8, untouchedByte);
        script({Answer{readCoefficient, {status, 1, 2, 3, 4, 5, 6}}});
        EXPECT_EQ(send(readCoefficient, {1, 2}), -1);
        EXPECT_EQ(takeCode(), status);
        EXPECT_THAT(answer, ElementsAre(0x46, status, 1, 2, 3, 4, 5, 6));
    }
    expectFree();
}

TEST_F(Command, MissingAnswer_FailsAfterTwoSeconds) {
    drop(readCoefficient);
    expectFailure(send(readCoefficient, {1, 2}), code::answerTimeout);
    EXPECT_THAT(takeSent(), ElementsAre("82 4F 01 02"));
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(2));
    expectFree();
}

TEST_F(Command, FailedWrite_IsReported) {
    failWriteAfter(0);
    expectFailure(send(readCoefficient, {1, 2}), code::deviceWrite);
    EXPECT_THAT(takeSent(), IsEmpty());
    expectFree();
}

TEST_F(Command, ThatChangesTheDevice_LeavesTheRecordAsItWas) {
    script({accepts(0x23), accepts(0x4A), accepts(0x8D), accepts(0x20)});
    const std::uint32_t valueIdentifier = record().valueCanId;
    ASSERT_TRUE(record().transmitting);
    EXPECT_EQ(send(0x23, {}), 0);
    EXPECT_EQ(send(0x4A, {0, 0, 3}), 0);
    EXPECT_EQ(send(0x8D, {0, 0, 0, 3, 0}), 0);
    EXPECT_TRUE(record().transmitting);
    EXPECT_EQ(record().activeChannels, 6U);
    EXPECT_EQ(record().commandCanId, 0x100U);
    EXPECT_EQ(record().answerCanId, answerId);
    EXPECT_EQ(record().valueCanId, valueIdentifier);
}

}  // namespace
}  // namespace torvik::test
