// Reading and writing the unit texts, those of the table and those of the user.
#include <string_view>
#include <thread>

#include "params/params_bench.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

constexpr std::int32_t ascii = 1 << 8;
constexpr std::int32_t codePage437 = 437 << 8;

std::vector<std::uint8_t> part(std::uint8_t number, std::string_view characters) {
    std::vector<std::uint8_t> bytes{0, number};
    bytes.insert(bytes.end(), characters.begin(), characters.end());
    return bytes;
}

class GetUnitText : public ParamsBench {
  protected:
    std::int32_t read(std::int32_t mode, std::uint32_t channel = 3) {
        text.fill('~');
        return run([=, this] { return TORVIKgetUnitText(device, channel, mode, text.data()); });
    }

    void answerUserText(const std::vector<std::uint8_t>& first, const std::vector<std::uint8_t>& second) {
        silence(0x11);
        arrive(first);
        arrive(second);
    }

    // The parts come while they are waited for: the answer to the first command is another one.
    void expectUserText(const char* command) {
        text.fill('~');
        auto result = std::async(std::launch::async, [this] { return TORVIKgetUnitText(device, 3, 0, text.data()); });
        while (!record().keepLock)
            std::this_thread::yield();
        push({VirtualFrame{answerId, 0, 8, {0x40, 0, 1, 'a', 'b', 'c', 'd'}},
              VirtualFrame{answerId, 0, 8, {0x40, 0, 2, 'e', 'f'}}});
        EXPECT_EQ(result.get(), 0);
        EXPECT_STREQ(text.data(), "abcdef");
        EXPECT_THAT(takeSent(), ElementsAre("81 0F 03", command));
        expectFree();
    }

    void expectUntouched() const { EXPECT_EQ(std::string(text.begin(), text.end()), "~~~~~~~~~~"); }

    std::array<char, 10> text{};
};

TEST_F(GetUnitText, UsesTheCharacterSetOfTheMode) {
    answerWith(0x0F, {0, 34});
    EXPECT_EQ(read(0), 0);
    EXPECT_STREQ(text.data(), "N/mm\xB2");
    EXPECT_EQ(read(ascii), 0);
    EXPECT_STREQ(text.data(), "N/mm2");
    EXPECT_EQ(read(codePage437), 0);
    EXPECT_STREQ(text.data(), "N/mm\xFD");
}

TEST_F(GetUnitText, CannotAskForTheWideCharacterSets) {
    answerWith(0x0F, {0, 34});
    for (const std::int32_t mode : {0x01000000, 0x02000000, 0x7F000000}) {
        EXPECT_EQ(read(mode), 0);
        EXPECT_STREQ(text.data(), "N/mm\xB2");
    }
}

TEST_F(GetUnitText, OfUnit255IsUserText1) {
    silence(0x11);
    answerWith(0x0F, {0, 255}, 1);
    expectUserText("81 11 00");
}

TEST_F(GetUnitText, OfUnit254IsUserText2) {
    silence(0x11);
    answerWith(0x0F, {0, 254}, 1);
    expectUserText("81 11 01");
}

TEST_F(GetUnitText, OfAnUnknownUnitFails) {
    for (const std::uint8_t unit : std::to_array<std::uint8_t>({47, 48, 253})) {
        script({accepts(0x0F, {unit})});
        EXPECT_EQ(read(0), -1);
        EXPECT_EQ(takeCode(), code::internalCallFailed);
        expectUntouched();
    }
}

TEST_F(GetUnitText, OfTheUserDoesNotLookAtTheChannel) {
    answerUserText(part(1, "abcd"), part(2, "efg"));
    EXPECT_EQ(read(1, 99), 0);
    EXPECT_STREQ(text.data(), "abcdefg");
    EXPECT_THAT(takeSent(), ElementsAre("81 11 00"));
}

TEST_F(GetUnitText, OfTheUserHasAtMostEightCharacters) {
    answerUserText(part(1, "abcd"), part(2, "efgh"));
    EXPECT_EQ(read(2), 0);
    EXPECT_STREQ(text.data(), "abcdefgh");
    EXPECT_THAT(takeSent(), ElementsAre("81 11 01"));
}

TEST_F(GetUnitText, TakesThePartsInTheOrderOfTheirArrival) {
    answerUserText(part(2, "abcd"), part(1, "ef"));
    EXPECT_EQ(read(1), 0);
    EXPECT_STREQ(text.data(), "abcdef");
}

TEST_F(GetUnitText, EndsAtTheFirstZeroOfTheUsersText) {
    answerUserText(part(1, std::string_view("ab\0c", 4)), part(2, "efgh"));
    EXPECT_EQ(read(1), 0);
    EXPECT_STREQ(text.data(), "ab");
}

TEST_F(GetUnitText, IsEmptyWhenTheFirstPartHasNumberZero) {
    answerUserText(part(0, "abcd"), part(2, "efgh"));
    EXPECT_EQ(read(1), 0);
    EXPECT_STREQ(text.data(), "");
}

TEST_F(GetUnitText, FailsWithARefusedFirstPart) {
    silence(0x11);
    arrive({0x52});
    EXPECT_EQ(read(1), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    expectUntouched();
    expectFree();
}

TEST_F(GetUnitText, FailsWithAMissingFirstPart) {
    silence(0x11);
    EXPECT_EQ(read(1), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    expectUntouched();
    expectFree();
}

TEST_F(GetUnitText, FailsWithARefusedSecondPart) {
    answerUserText(part(1, "abcd"), {0x53});
    EXPECT_EQ(read(1), -1);
    EXPECT_EQ(takeCode(), 0x53U);
    expectUntouched();
    expectFree();
}

TEST_F(GetUnitText, FailsWithAMissingSecondPart) {
    silence(0x11);
    arrive(part(1, "abcd"));
    EXPECT_EQ(read(1), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    expectUntouched();
    expectFree();
}

class SetUnitText : public ParamsBench {
  protected:
    void SetUp() override {
        ParamsBench::SetUp();
        answerWith(0x10, {0});
    }

    std::int32_t write(std::int32_t mode, const char* text) {
        return run([=] { return TORVIKsetUnitText(device, 3, mode, text); });
    }

    static void acceptHalves() { answerWith(0x12, {0}); }
};

TEST_F(SetUnitText, FindsTheUnitInTheCharacterSetOfTheMode) {
    EXPECT_EQ(write(ascii, "N/mm2"), 0);
    EXPECT_EQ(write(0, "N/mm\xB2"), 0);
    EXPECT_EQ(write(codePage437, "N/mm\xFD"), 0);
    EXPECT_EQ(write(ascii + 16, "N/mm2"), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 10 03 22", "82 10 03 22", "82 10 03 22", "82 10 03 22"));
}

TEST_F(SetUnitText, ComparesByteForByte) {
    acceptHalves();
    EXPECT_EQ(write(0, "N/mm2"), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 12 00 01 4E 2F 6D 6D", "86 12 00 02 32 00 00 00", "82 10 03 FF"));
    EXPECT_EQ(write(16, "kn"), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
}

TEST_F(SetUnitText, TakesABlankForUnit7) {
    EXPECT_EQ(write(0, " "), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 10 03 07"));
}

TEST_F(SetUnitText, MakesAnUnknownUnitUserText1) {
    acceptHalves();
    EXPECT_EQ(write(0, "Lbs"), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 12 00 01 4C 62 73 00", "86 12 00 02 00 00 00 00", "82 10 03 FF"));
}

struct Request {
    std::int32_t mode;
    const char* name;
    std::vector<std::string> sent;
};

class UserTextRequest : public SetUnitText, public testing::WithParamInterface<Request> {};

TEST_P(UserTextRequest, WritesTheTextWithoutASearch) {
    acceptHalves();
    EXPECT_EQ(write(GetParam().mode, "kN"), 0);
    EXPECT_EQ(takeSent(), GetParam().sent);
}

const std::vector<std::string> userText1 = {"86 12 00 01 6B 4E 00 00", "86 12 00 02 00 00 00 00", "82 10 03 FF"};
const std::vector<std::string> userText2 = {"86 12 01 01 6B 4E 00 00", "86 12 01 02 00 00 00 00", "82 10 03 FE"};

INSTANTIATE_TEST_SUITE_P(Params, UserTextRequest,
                         testing::Values(Request{1, "Request1", userText1}, Request{2, "Request2", userText2},
                                         Request{17, "Request17", userText1}, Request{18, "Request18", userText2},
                                         Request{0x7FFFFF02, "Request2OfAnyCharacterSet", userText2}),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(SetUnitText, SendsSevenCharactersOfEightOrMore) {
    acceptHalves();
    for (const char* const text : {"abcdefg", "abcdefgh", "abcdefghij"}) {
        EXPECT_EQ(write(1, text), 0);
        EXPECT_THAT(takeSent(), ElementsAre("86 12 00 01 61 62 63 64", "86 12 00 02 65 66 67 00", "82 10 03 FF"));
    }
}

TEST_F(SetUnitText, EndsWithARefusedFirstHalf) {
    script({Answer{0x12, {0x52}}});
    EXPECT_EQ(write(1, "abcdefg"), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_THAT(takeSent(), ElementsAre("86 12 00 01 61 62 63 64"));
}

TEST_F(SetUnitText, EndsWithAFirstHalfThatCannotBeWritten) {
    failWriteAfter(0);
    EXPECT_EQ(write(1, "abcdefg"), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    expectFree();
}

TEST_F(SetUnitText, EndsWithARefusedSecondHalfAndLeavesTheUnit) {
    script({accepts(0x12), Answer{0x12, {0x52}}});
    EXPECT_EQ(write(1, "abcdefg"), -1);
    EXPECT_EQ(takeCode(), 0x52U);
    EXPECT_THAT(takeSent(), ElementsAre("86 12 00 01 61 62 63 64", "86 12 00 02 65 66 67 00"));
}

TEST_F(SetUnitText, EndsWithAnUnansweredSecondHalfAndLeavesTheUnit) {
    script({accepts(0x12)});
    drop(0x12);
    EXPECT_EQ(write(1, "abcdefg"), -1);
    EXPECT_EQ(takeCode(), code::internalCallFailed);
    EXPECT_THAT(takeSent(), ElementsAre("86 12 00 01 61 62 63 64", "86 12 00 02 65 66 67 00"));
    expectFree();
}

TEST_F(SetUnitText, GoesOnWhenTheSecondHalfCannotBeWritten) {
    acceptHalves();
    failWriteAfter(1);
    EXPECT_EQ(write(2, "abcdefg"), 0);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    EXPECT_THAT(takeSent(), ElementsAre("86 12 01 01 61 62 63 64", "82 10 03 FE"));
}

TEST_F(SetUnitText, StoresTheStatusOfARefusedUnit) {
    script({accepts(0x12), accepts(0x12), Answer{0x10, {0x52}}});
    EXPECT_EQ(write(1, "abc"), -1);
    EXPECT_EQ(takeCode(), 0x52U);
}

}  // namespace
}  // namespace torvik::test
