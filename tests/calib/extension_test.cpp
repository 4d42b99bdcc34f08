// The extension of a calibration: format word, matrix B and its factors, model name.
#include <thread>

#include "calib/calibration_bench.h"

namespace torvik::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class WriteExtension : public CalibrationBench {
  protected:
    std::int32_t write(std::int32_t format = 1) {
        return TORVIKwriteFTsensorCalArrExt(device, format, matrixB.data(), first.data(), second.data(), model.data());
    }
    std::int32_t writeModel(std::string name) {
        return TORVIKwriteFTsensorCalArrExt(device, 0, nullptr, nullptr, nullptr, name.data());
    }

    Frames& factors(Frames& frames) const {
        for (unsigned i = 0; i < 6; ++i)
            frames.element(9, i, first[i]).element(10, i, second[i]);
        return frames;
    }
    Frames frames() const {
        Frames expected;
        expected.element(7, 0, 1).array(8, matrixB);
        return factors(expected).model(model);
    }

    std::vector<double> matrixB = counting(36, 0.5);
    std::vector<std::uint32_t> first = {0, 1, 2, 3, 4, 5};
    std::vector<std::uint32_t> second = {5, 4, 3, 2, 1, 0};
    std::string model = "SIX-200N";
};

TEST_F(WriteExtension, SendsFormatMatrixFactorsAndName) {
    EXPECT_EQ(write(), 0);
    expectSent(frames());
    EXPECT_EQ(takeCode(), code::none);
    expectFree();
}

TEST_F(WriteExtension, SendsTheFormatWordAlone) {
    EXPECT_EQ(TORVIKwriteFTsensorCalArrExt(device, 0x00052002, nullptr, nullptr, nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.element(7, 0, 0x00052002));
}

TEST_F(WriteExtension, SendsMatrixBWhateverTheFormat) {
    EXPECT_EQ(TORVIKwriteFTsensorCalArrExt(device, 0, matrixB.data(), nullptr, nullptr, nullptr), 0);
    Frames expected;
    expectSent(expected.element(7, 0, 0).array(8, matrixB));
}

TEST_F(WriteExtension, SendsFactorsOnlyInPairs) {
    EXPECT_EQ(TORVIKwriteFTsensorCalArrExt(device, 1, nullptr, first.data(), nullptr, nullptr), 0);
    EXPECT_EQ(TORVIKwriteFTsensorCalArrExt(device, 1, nullptr, nullptr, second.data(), nullptr), 0);
    Frames expected;
    expectSent(expected.element(7, 0, 1).element(7, 0, 1));
    EXPECT_EQ(TORVIKwriteFTsensorCalArrExt(device, 1, nullptr, first.data(), second.data(), nullptr), 0);
    Frames both;
    both.element(7, 0, 1);
    expectSent(factors(both));
}

TEST_F(WriteExtension, EndsAtAFirstFactorAboveFive) {
    for (const std::uint32_t factor : {6U, 0x80000000U, 0xFFFFFFFFU}) {
        first[2] = factor;
        EXPECT_EQ(write(), -1);
        EXPECT_EQ(takeCode(), code::parameterExceedance);
        expectSent(frames().cut(1 + 36 + 4));
    }
}

TEST_F(WriteExtension, EndsAtASecondFactorAboveFive) {
    second[0] = 6;
    EXPECT_EQ(write(), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    expectSent(frames().cut(1 + 36 + 1));
}

TEST_F(WriteExtension, SendsFifteenCharactersOfALongName) {
    EXPECT_EQ(writeModel("abcdefghijklmnopqrst"), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 48 07 00 00 00 00 00", "85 1C 01 61 62 63 64", "85 1C 02 65 66 67 68",
                                        "85 1C 03 69 6A 6B 6C", "85 1C 04 6D 6E 6F 00"));
}

TEST_F(WriteExtension, FillsAShortNameWithZeros) {
    EXPECT_EQ(writeModel("ab"), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 48 07 00 00 00 00 00", "85 1C 01 61 62 00 00", "85 1C 02 00 00 00 00",
                                        "85 1C 03 00 00 00 00", "85 1C 04 00 00 00 00"));
}

TEST_F(WriteExtension, SendsAllPartsOfTheNameAndGivesTheLastOnesResult) {
    for (const std::uint32_t refused : {0U, 1U, 2U}) {
        refuseAfter(refused, 0x1C);
        EXPECT_EQ(writeModel("ab"), 0) << refused;
        EXPECT_EQ(takeSent().size(), 5U);
    }
    refuseAfter(3, 0x1C);
    EXPECT_EQ(writeModel("ab"), -1);
    EXPECT_EQ(takeCode(), 0x52U);
}

TEST_F(WriteExtension, SendsNoNameToOlderFirmware) {
    use(firmwareWithModelName - 1);
    EXPECT_EQ(writeModel("ab"), 0);
    EXPECT_THAT(takeSent(), ElementsAre("86 48 07 00 00 00 00 00"));
}

TEST_F(WriteExtension, NeedsNewFirmware) {
    use(oldFirmware);
    EXPECT_EQ(write(), -1);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_EQ(write(-1), -1);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_THAT(takeSent(), IsEmpty());
    use(firmwareWithFormatWord);
    EXPECT_EQ(write(), 0);
}

TEST_F(WriteExtension, RefusesANegativeFormatWord) {
    EXPECT_EQ(write(-1), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(WriteExtension, EndsWithTheFirstElementThatIsRefused) {
    for (const std::size_t good : {0U, 1U, 36U, 37U, 38U, 48U}) {
        refuseAfter(static_cast<std::uint32_t>(good), 0x48);
        EXPECT_EQ(write(), -1);
        EXPECT_EQ(takeCode(), 0x52U);
        expectSent(frames().cut(good + 1));
    }
}

class ReadExtension : public CalibrationBench {
  protected:
    std::int32_t read() {
        return TORVIKreadFTsensorCalArrExt(device, &format, matrixB.data(), first.data(), second.data(), nullptr);
    }

    // Starts the reading of the name and lets these frames come once it waits for them.
    std::int32_t readModel(const std::vector<VirtualFrame>& frames) {
        answerWith(0x47, {0}, 1);
        drop(0x1B);
        model.fill('~');
        auto result = std::async(std::launch::async, [this] {
            return TORVIKreadFTsensorCalArrExt(device, &format, nullptr, nullptr, nullptr, model.data());
        });
        while (!record().keepLock)
            std::this_thread::yield();
        EXPECT_TRUE(record().busy);
        push(frames);
        // Only what has been pushed can still come; a busy machine takes its time to bring it.
        constexpr int longQuiet = 50;
        for (int quiet = 0; result.wait_for(std::chrono::milliseconds(2)) != std::future_status::ready; ++quiet) {
            if (record().answerCount != 0 || virtualQueued() != 0) quiet = 0;
            if (quiet >= longQuiet) clock.advanceToEarliestDeadline();
        }
        return result.get();
    }

    static VirtualFrame part(std::uint8_t number, std::string_view text, std::uint8_t status = 0) {
        VirtualFrame frame{answerId, 0, 8, {0x46, status, number}};
        std::ranges::copy(text, frame.data + 3);
        return frame;
    }

    std::uint32_t format = 0xDEADBEEF;
    std::vector<double> matrixB = std::vector<double>(36, -77.25);
    std::vector<std::uint32_t> first = std::vector<std::uint32_t>(6, 99);
    std::vector<std::uint32_t> second = std::vector<std::uint32_t>(6, 99);
    std::array<char, 17> model{};
};

TEST_F(ReadExtension, DeliversMatrixBAndItsFactors) {
    holds({1});
    holds(counting(36));
    holds({0, 5, 1, 4, 2, 3, 3, 2, 4, 1, 5.75, 0});
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(format, 1U);
    EXPECT_EQ(matrixB, counting(36));
    EXPECT_THAT(first, ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(second, ElementsAre(5, 4, 3, 2, 1, 0));
    Frames expected;
    expected.read(7, 1).read(8, 36);
    for (const char* const index : {"00", "01", "02", "03", "04", "05"})
        expected.raw(std::string("82 47 09 ") + index).raw(std::string("82 47 0A ") + index);
    expectSent(expected);
}

TEST_F(ReadExtension, DeliversTheFormatWordAloneWithoutMatrixB) {
    for (const double word : {0.0, 335874.0, 3.0}) {
        holds({word});
        EXPECT_EQ(read(), 0);
        EXPECT_EQ(format, static_cast<std::uint32_t>(word));
    }
    EXPECT_THAT(matrixB, Each(-77.25));
    EXPECT_THAT(first, Each(99U));
    Frames expected;
    expectSent(expected.read(7, 1).read(7, 1).read(7, 1));
}

TEST_F(ReadExtension, ReadsMatrixBOnlyWithBothFactors) {
    holds({1, 1, 1});
    EXPECT_EQ(TORVIKreadFTsensorCalArrExt(device, &format, nullptr, first.data(), second.data(), nullptr), 0);
    EXPECT_EQ(TORVIKreadFTsensorCalArrExt(device, &format, matrixB.data(), nullptr, second.data(), nullptr), 0);
    EXPECT_EQ(TORVIKreadFTsensorCalArrExt(device, &format, matrixB.data(), first.data(), nullptr, nullptr), 0);
    EXPECT_EQ(takeSent().size(), 3U);
}

TEST_F(ReadExtension, NeedsAPlaceForTheFormatWord) {
    EXPECT_EQ(TORVIKreadFTsensorCalArrExt(device, nullptr, nullptr, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(takeCode(), code::parameterExceedance);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(ReadExtension, NeedsNewFirmware) {
    use(oldFirmware);
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(takeCode(), code::firmwareUnsupported);
    EXPECT_THAT(takeSent(), IsEmpty());
    use(firmwareWithFormatWord);
    holds({0});
    EXPECT_EQ(read(), 0);
}

TEST_F(ReadExtension, EndsWithTheFirstElementThatIsRefused) {
    for (const std::size_t good : {0U, 1U, 37U, 38U, 48U}) {
        use(newFirmware);
        holds(std::vector<double>(good, 1));
        answerWith(0x47, {0x52}, 1);
        EXPECT_EQ(read(), -1);
        EXPECT_EQ(takeCode(), 0x52U);
        EXPECT_EQ(takeSent().size(), good + 1);
    }
}

TEST_F(ReadExtension, RefusesFactorsThatAreNoIndices) {
    for (const double factor : {-1.0, 1e10}) {
        use(newFirmware);
        holds(std::vector<double>(37, 1));
        holds({factor});
        EXPECT_EQ(read(), -1);
        EXPECT_EQ(takeCode(), wrongAnswer) << factor;
    }
}

TEST_F(ReadExtension, JoinsTheFourPartsOfTheName) {
    EXPECT_EQ(readModel({part(1, "abcd"), part(2, "efgh"), part(3, "ijkl"), part(4, "mno")}), 0);
    EXPECT_STREQ(model.data(), "abcdefghijklmno");
    EXPECT_EQ(model[16], '~');
    EXPECT_THAT(takeSent(), ElementsAre("82 47 07 00", "80 1B"));
    expectFree();
}

TEST_F(ReadExtension, PutsThePartsWhereTheirNumbersSay) {
    EXPECT_EQ(readModel({part(4, "4444"), part(2, "2222"), part(1, "1111"), part(3, "3333")}), 0);
    EXPECT_STREQ(model.data(), "111122223333444");
}

TEST_F(ReadExtension, EndsTheNameAtItsFirstZero) {
    EXPECT_EQ(readModel({part(1, "ab"), part(2, "efgh"), part(3, ""), part(4, "")}), 0);
    EXPECT_STREQ(model.data(), "ab");
    EXPECT_EQ(model[3], '~');
}

TEST_F(ReadExtension, DoesNotLookAtTheStatusOfTheParts) {
    EXPECT_EQ(readModel({part(1, "abcd", 0x52), part(2, "e", 0xFF), part(3, ""), part(4, "")}), 0);
    EXPECT_STREQ(model.data(), "abcde");
}

TEST_F(ReadExtension, DoesNotNoticeARepeatedPart) {
    EXPECT_EQ(readModel({part(1, "abcd"), part(1, "efgh"), part(2, "ijkl"), part(2, "mnop")}), 0);
    EXPECT_STREQ(model.data(), "efghmnop");
}

class WrongPart : public ReadExtension, public testing::WithParamInterface<std::tuple<int, int>> {};

TEST_P(WrongPart, EndsTheReadingAndFreesTheDevice) {
    const auto [place, number] = GetParam();
    std::vector<VirtualFrame> frames;
    for (int i = 0; i < place; ++i)
        frames.push_back(part(static_cast<std::uint8_t>(i + 1), "abcd"));
    frames.push_back(part(static_cast<std::uint8_t>(number), "abcd"));
    EXPECT_EQ(readModel(frames), -1);
    EXPECT_EQ(takeCode(), wrongAnswer);
    EXPECT_EQ(model.front(), '~');
    expectFree();
}

INSTANTIATE_TEST_SUITE_P(ReadExtension, WrongPart, testing::Combine(testing::Range(0, 4), testing::Values(0, 5, 255)));

TEST_F(ReadExtension, EndsWithAPartThatDoesNotCome) {
    EXPECT_EQ(readModel({part(1, "abcd"), part(2, "efgh"), part(3, "ijkl")}), -1);
    EXPECT_EQ(takeCode(), code::answerTimeout);
    EXPECT_EQ(model.front(), '~');
    expectFree();
}

TEST_F(ReadExtension, ReadsNoNameFromOlderFirmware) {
    use(firmwareWithModelName - 1);
    holds({0});
    model.fill('~');
    EXPECT_EQ(TORVIKreadFTsensorCalArrExt(device, &format, nullptr, nullptr, nullptr, model.data()), 0);
    EXPECT_THAT(takeSent(), ElementsAre("82 47 07 00"));
    EXPECT_EQ(model.front(), '~');
}

}  // namespace
}  // namespace torvik::test
