// Reading the coefficients of a filter, writing them in the numbers of both protocol kinds.
#include <climits>

#include "filter/export_bench.h"
#include "params/device_filters.h"

namespace torvik::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

constexpr std::uint32_t one = 0x01000000;  // 1.0 as a device tells it

class ReadCoefficients : public FilterExports {
  protected:
    std::int32_t get(std::uint32_t flags = 0) {
        return run([this, flags] { return TORVIKgetDfilterCoeff(device, 2, flags, x.data(), y.data()); });
    }
    static void scriptWords(std::initializer_list<std::uint32_t> words) {
        std::vector<Answer> answers;
        for (const std::uint32_t word : words)
            answers.push_back(acceptsWord(0x4F, word));
        script(std::span<const Answer>(answers));
    }

    std::array<double, 5> x = {unchangedDouble, unchangedDouble, unchangedDouble, unchangedDouble, unchangedDouble};
    std::array<double, 4> y = {unchangedDouble, unchangedDouble, unchangedDouble, unchangedDouble};
};

TEST_F(ReadCoefficients, OfAnIirFilterAreFiveAndFour) {
    scriptWords({one, 2 * one, 1, 0, 0x7FFFFFFF, one / 2, one / 4, 3 * one, 4 * one});
    EXPECT_EQ(get(), 0);
    EXPECT_THAT(x, ElementsAre(1, 2, 0x1p-24, 0, 128 - 0x1p-24));
    EXPECT_THAT(y, ElementsAre(0.5, 0.25, 3, 4));
    EXPECT_THAT(takeSent(), ElementsAre("82 4F 02 00", "82 4F 02 01", "82 4F 02 02", "82 4F 02 03", "82 4F 02 04",
                                        "82 4F 02 10", "82 4F 02 11", "82 4F 02 12", "82 4F 02 13"));
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(ReadCoefficients, OfAFirFilterAreFour) {
    scriptWords({one, 2 * one, 3 * one, 4 * one});
    EXPECT_EQ(run([this] { return TORVIKgetDfilterCoeff(device, 2, 0x80, x.data(), nullptr); }), 0);
    EXPECT_THAT(x, ElementsAre(1, 2, 3, 4, unchangedDouble));
    EXPECT_THAT(takeSent(), ElementsAre("82 4F 02 80", "82 4F 02 81", "82 4F 02 82", "82 4F 02 83"));
}

TEST_F(ReadCoefficients, WithOtherFlagsAreTheFirstFourOfTheIirBank) {
    scriptWords({one, 2 * one, 3 * one, 4 * one});
    EXPECT_EQ(get(1), 0);
    EXPECT_THAT(y, Each(unchangedDouble));
    EXPECT_THAT(takeSent(), ElementsAre("82 4F 02 00", "82 4F 02 01", "82 4F 02 02", "82 4F 02 03"));
}

TEST_F(ReadCoefficients, PassesNegativeOnesOver) {
    scriptWords({0x80000001, 2 * one, 0xFFFFFFFF, one, 0x81000000, 0xC0000000, one, one, 0x80000000});
    EXPECT_EQ(get(), 0);
    EXPECT_THAT(x, ElementsAre(unchangedDouble, 2, unchangedDouble, 1, unchangedDouble));
    EXPECT_THAT(y, ElementsAre(unchangedDouble, 1, 1, unchangedDouble));
}

TEST_F(ReadCoefficients, ReadTheSameInProtocolKind32) {
    activateAs({.protocolFlag = TORVIK_FLAG_PROTOCOL_KIND_32});
    scriptWords({one, 0x81000000, 1, one, one, one, one, one, one});
    EXPECT_EQ(get(), 0);
    EXPECT_THAT(x, ElementsAre(1, unchangedDouble, 0x1p-24, 1, 1));
}

TEST_F(ReadCoefficients, EndAtARefusal) {
    script({acceptsWord(0x4F, one), Answer{0x4F, {0x40, 1}}});
    expectFailure(get(), 0x40);
    EXPECT_THAT(takeSent(), SizeIs(2));
    EXPECT_THAT(x, ElementsAre(1, unchangedDouble, unchangedDouble, unchangedDouble, unchangedDouble));
    expectFree();
}

TEST_F(ReadCoefficients, EndWhenOneCannotBeAskedFor) {
    scriptWords({one, one, one});
    failWriteAfter(3);
    expectFailure(get(), code::deviceWrite);
    EXPECT_THAT(takeSent(), SizeIs(3));
}

TEST_F(ReadCoefficients, GoOnAfterAMissingAnswer) {
    drop(0x4F, 1);
    for (int i = 0; i < 8; ++i)
        answerWith(0x4F, {0, 1, 0, 0, 0}, 1);
    EXPECT_EQ(get(), 0);
    EXPECT_THAT(x, ElementsAre(unchangedDouble, 1, 1, 1, 1));
    EXPECT_THAT(y, Each(1.0));
    EXPECT_EQ(takeCode(), code::answerTimeout);
    expectFree();
}

TEST_F(ReadCoefficients, FailWhenTheLastOneDoesNotCome) {
    scriptWords({one, one, one, one, one, one, one, one});
    silence(0x4F);
    expectFailure(get(), code::answerTimeout);
    EXPECT_THAT(y, ElementsAre(1, 1, 1, unchangedDouble));
    EXPECT_THAT(takeSent(), SizeIs(9));
}

TEST_F(ReadCoefficients, SucceedWhenOnlyTheLastInputCoefficientDoesNotCome) {
    scriptWords({one, one, one, one});
    drop(0x4F, 1);
    for (int i = 0; i < 4; ++i)
        answerWith(0x4F, {0, 1, 0, 0, 0}, 1);
    EXPECT_EQ(get(), 0);
    EXPECT_THAT(x, ElementsAre(1, 1, 1, 1, unchangedDouble));
}

struct WordCase {
    double coefficient;
    std::uint32_t word;
};

constexpr WordCase wordsOfKind32[] = {
    {0.0, 0},
    {1.0, 0x01000000},
    {-1.0, 0x81000000},
    {2.5, 0x02800000},
    {-63.999, 0xBFFFBE77},
    {0.4 * 0x1p-24, 0},
    {0.5 * 0x1p-24, 1},
    {1.5 * 0x1p-24, 2},
    {2.5 * 0x1p-24, 3},
    {-0.5 * 0x1p-24, 0x80000001},
    {-2.5 * 0x1p-24, 0x80000003},
    {-0.4 * 0x1p-24, 0x80000000},  // the sign stands although nothing else does
    {-1e-300, 0x80000000},
    {128 - 0x1p-24, 0x7FFFFFFF},
    // Nothing that a design gives: the nearest number that the format has.
    {128, 0x7FFFFFFF},
    {-1e300, 0xFFFFFFFF},
};

TEST(CoefficientOfKind32, IsSignAndRoundedMagnitude) {
    for (const auto& [coefficient, word] : wordsOfKind32)
        EXPECT_EQ(encodeCoefficient(coefficient, 32), word) << coefficient;
}

TEST(CoefficientOfKind16, IsAFloat) {
    for (const auto& [coefficient, word] : wordsOfKind32) {
        if (std::abs(coefficient) > 1e38) continue;
        EXPECT_EQ(encodeCoefficient(coefficient, 16), std::bit_cast<std::uint32_t>(static_cast<float>(coefficient)));
    }
}

class WriteParameters : public FilterExports {
  protected:
    std::int32_t set(std::int32_t type) {
        return run([this, type] { return TORVIKsetDfilterParams(device, 5, type, cutoffs, x, y); });
    }
    static void scriptAll() {
        std::vector<Answer> answers = {accepts(0x4C), accepts(0x4E), accepts(0x4E), accepts(0x0A)};
        answers.insert(answers.end(), 31, accepts(0x50));
        script(std::span<const Answer>(answers));
    }

    double cutoffs[2] = {0.125, 0.25};
    double x[16] = {0.5, -1.5, 2.25, -3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    double y[16] = {-0.25, 0.75, -1, 1.25, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
};

TEST_F(WriteParameters, SendTypeCutoffCoefficientsAndStoreThem) {
    scriptAll();
    EXPECT_EQ(set(0x04), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 4C 05 04", "86 4E 05 00 3E 00 00 00", "86 50 05 00 3F 00 00 00",
                                        "86 50 05 01 BF C0 00 00", "86 50 05 02 40 10 00 00", "86 50 05 03 C0 40 00 00",
                                        "86 50 05 04 40 80 00 00", "86 50 05 10 BE 80 00 00", "86 50 05 11 3F 40 00 00",
                                        "86 50 05 12 BF 80 00 00", "86 50 05 13 3F A0 00 00", "81 0A 00"));
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(WriteParameters, SendSignAndMagnitudeInProtocolKind32) {
    activateAs({.protocolFlag = TORVIK_FLAG_PROTOCOL_KIND_32});
    scriptAll();
    EXPECT_EQ(set(0x12), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 4C 05 12", "86 4E 05 00 3E 00 00 00", "86 50 05 00 00 80 00 00",
                                        "86 50 05 01 81 80 00 00", "86 50 05 02 02 40 00 00", "86 50 05 10 80 40 00 00",
                                        "86 50 05 11 00 C0 00 00", "81 0A 00"));
}

TEST_F(WriteParameters, SendTheSecondCutoffForBandsOnly) {
    for (const std::int32_t type : {0x21, 0x31}) {
        scriptAll();
        EXPECT_EQ(set(type), 0);
        const auto sent = takeSent();
        ASSERT_THAT(sent, SizeIs(7));
        EXPECT_EQ(sent[1], "86 4E 05 00 3E 00 00 00");
        EXPECT_EQ(sent[2], "86 4E 05 01 3E 80 00 00");
    }
}

TEST_F(WriteParameters, SendNoFeedbackForTheFirForm) {
    scriptAll();
    EXPECT_EQ(set(INT_MIN | 0x81), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 4C 05 81", "86 4E 05 00 3E 00 00 00", "86 50 05 80 3F 00 00 00",
                                        "86 50 05 81 BF C0 00 00", "81 0A 00"));
}

TEST_F(WriteParameters, OfOrderZeroIsOneCoefficient) {
    scriptAll();
    EXPECT_EQ(set(0x10), 0);
    EXPECT_THAT(takeSent(),
                ElementsAre("82 4C 05 10", "86 4E 05 00 3E 00 00 00", "86 50 05 00 3F 00 00 00", "81 0A 00"));
}

TEST_F(WriteParameters, OfTypeZeroAreOfTheIirBank) {
    scriptAll();
    EXPECT_EQ(set(0), 0);
    EXPECT_THAT(takeSent(),
                ElementsAre("82 4C 05 00", "86 4E 05 00 3E 00 00 00", "86 50 05 00 3F 00 00 00", "81 0A 00"));
}

TEST_F(WriteParameters, OfOrderFifteenAreThirtyOneCoefficients) {
    scriptAll();
    EXPECT_EQ(set(0x0F), 0);
    const auto sent = takeSent();
    ASSERT_THAT(sent, SizeIs(2 + 16 + 15 + 1));
    EXPECT_EQ(sent[17], "86 50 05 0F " + hexOfFloat(15));
    EXPECT_EQ(sent[32], "86 50 05 1E " + hexOfFloat(15));
}

TEST_F(WriteParameters, SendOnlyTheLowByteOfTheType) {
    scriptAll();
    EXPECT_EQ(set(0x00FFFF00), 0);
    EXPECT_EQ(takeSent().front(), "82 4C 05 00");
}

TEST_F(WriteParameters, StopAtTheFirstFrameThatCannotBeWritten) {
    constexpr std::uint32_t frames = 13;  // band pass of fourth order
    for (std::uint32_t written = 0; written < frames; ++written) {
        scriptAll();
        failWriteAfter(written);
        expectFailure(set(0x24), code::deviceWrite);
        EXPECT_THAT(takeSent(), SizeIs(written));
    }
    expectFree();
}

TEST_F(WriteParameters, StopAtTheFirstRefusal) {
    struct Stop {
        std::uint8_t command;
        std::size_t sent;
    };
    for (const auto& [command, sent] : {Stop{0x4C, 1}, Stop{0x4E, 2}, Stop{0x50, 4}, Stop{0x0A, 13}}) {
        std::vector<Answer> answers = {Answer{command, {0x45}}};
        for (const std::uint8_t other : std::initializer_list<std::uint8_t>{0x4C, 0x4E, 0x4E, 0x0A})
            answers.push_back(accepts(other));
        answers.insert(answers.end(), 9, accepts(0x50));
        script(std::span<const Answer>(answers));
        expectFailure(set(0x24), 0x45);
        EXPECT_THAT(takeSent(), SizeIs(sent));
    }
    expectFree();
}

TEST_F(WriteParameters, FailWithoutAnAcknowledgement) {
    scriptAll();
    virtualClearAnswerRules();
    silence(0x4C);
    expectFailure(set(0x04), code::internalCallFailed);
    EXPECT_THAT(takeSent(), SizeIs(1));
    expectFree();
}

}  // namespace
}  // namespace torvik::test
