// The value stream around every export that takes several elements, and the checks that all exports begin with.
#include "calib/calibration_bench.h"

namespace torvik::test {
namespace {

struct Export {
    const char* name;
    std::function<std::int32_t(std::int32_t deviceNo)> call;
    std::uint8_t command = 0x48;  // of its elements
    bool storesAfterwards = false;
};
void PrintTo(const Export& anExport, std::ostream* out) {
    *out << anExport.name;
}

namespace given {
std::array<double, 256> numbers = [] {
    std::array<double, 256> ones{};
    ones.fill(1);
    return ones;
}();
std::array<std::int32_t, 6> words{1, 1, 1, 1, 1, 1};
std::array<std::uint32_t, 6> factors{};
std::array<std::uint32_t, 2> format{};
std::array<char, 16> text{};
}  // namespace given

const std::vector<Export>& pausingExports() {
    static const std::vector<Export> all = {
        {"writeFTSensorCalArray",
         [](std::int32_t no) {
             return TORVIKwriteFTSensorCalArray(no, 0, given::text.data(), 1, 1, given::numbers.data(), nullptr,
                                                given::numbers.data());
         }},
        {"writeFTsensorCalArrayA",
         [](std::int32_t no) {
             return TORVIKwriteFTsensorCalArrayA(no, 0, given::text.data(), given::numbers.data(),
                                                 given::numbers.data(), nullptr, given::numbers.data(), nullptr, 0);
         },
         0x48, true},
        {"writeFTsensorCalArrExt",
         [](std::int32_t no) {
             return TORVIKwriteFTsensorCalArrExt(no, 1, given::numbers.data(), given::factors.data(),
                                                 given::factors.data(), given::text.data());
         }},
        {"writeFTsensorCalArrInfo",
         [](std::int32_t no) {
             return TORVIKwriteFTsensorCalArrInfo(no, given::words.data(), given::words.data(), nullptr);
         }},
        {"readFTSensorCalArray",
         [](std::int32_t no) {
             return TORVIKreadFTSensorCalArray(no, 0, nullptr, given::numbers.data(), nullptr, given::numbers.data(),
                                               nullptr, given::numbers.data());
         },
         0x47},
        {"readFTsensorCalArrayA",
         [](std::int32_t no) {
             return TORVIKreadFTsensorCalArrayA(no, 0, nullptr, nullptr, given::numbers.data(), nullptr, nullptr,
                                                nullptr, given::format.data());
         },
         0x47},
        {"readFTsensorCalArrExt",
         [](std::int32_t no) {
             return TORVIKreadFTsensorCalArrExt(no, given::format.data(), given::numbers.data(), given::factors.data(),
                                                given::factors.data(), nullptr);
         },
         0x47},
    };
    return all;
}

std::vector<Export> allExports() {
    std::vector<Export> all = pausingExports();
    all.push_back({"readFTSensorCalValue",
                   [](std::int32_t no) { return TORVIKreadFTSensorCalValue(no, 1, 0, given::numbers.data()); }});
    all.push_back({"setFTarrayToRead", [](std::int32_t no) { return TORVIKsetFTarrayToRead(no, 0); }});
    all.push_back(
        {"readFTSensorSerNo", [](std::int32_t no) { return TORVIKreadFTSensorSerNo(no, 0, given::text.data()); }});
    all.push_back({"storeFTSensorCal", [](std::int32_t no) { return TORVIKstoreFTSensorCal(no, 0); }});
    all.push_back({"getFTSensorCalArrNo", [](std::int32_t no) {
                       std::array<std::uint8_t, 3> out{};
                       return TORVIKgetFTSensorCalArrNo(no, 0, out.data());
                   }});
    all.push_back({"setFTSensorCalArrNo", [](std::int32_t no) { return TORVIKsetFTSensorCalArrNo(no, 0); }});
    all.push_back({"writeFTSensorCalFromFile",
                   [](std::int32_t no) { return TORVIKwriteFTSensorCalFromFile(no, 0, "absent.ini"); }});
    return all;
}

std::string nameOf(const testing::TestParamInfo<Export>& info) {
    return info.param.name;
}

class PausingExport : public CalibrationBench, public testing::WithParamInterface<Export> {
  protected:
    static std::int32_t call() { return GetParam().call(device); }

    // Every element reads as 1.0, which is also the given::format word of a calibration with matrix B.
    static void answerElements(std::uint32_t times = VIRTUAL_FOR_EVER) {
        answerWith(0x47, {0, 0x3F, 0x80, 0, 0}, times);
        answerWith(0x48, {0}, times);
    }
    static void useStreaming(bool streaming) {
        use(newFirmware, streaming);
        virtualClearAnswerRules();
        answerWith(0x7D, {0});
        answerWith(0x7F, {0});
        answerWith(0x1C, {0});
    }
    static std::ptrdiff_t count(const std::vector<std::string>& frames, const char* frame) {
        return std::ranges::count(frames, frame);
    }
    static std::size_t lastOfRun(const std::vector<std::string>& frames) {
        return frames.size() - (GetParam().storesAfterwards ? 2 : 1);
    }
};

TEST_P(PausingExport, StopsARunningStreamAndStartsItAgain) {
    useStreaming(true);
    answerElements();
    EXPECT_EQ(call(), 0);
    const std::vector<std::string> sent = takeSent();
    EXPECT_EQ(sent.front(), "80 23");
    EXPECT_EQ(sent[lastOfRun(sent)], "80 24");
    EXPECT_EQ(count(sent, "80 23"), 1);
    EXPECT_EQ(count(sent, "80 24"), 1);
    EXPECT_TRUE(record().transmitting);
}

TEST_P(PausingExport, LeavesAStoppedStreamAlone) {
    useStreaming(false);
    answerElements();
    EXPECT_EQ(call(), 0);
    const std::vector<std::string> sent = takeSent();
    EXPECT_EQ(count(sent, "80 23"), 0);
    EXPECT_EQ(count(sent, "80 24"), 0);
    EXPECT_FALSE(record().transmitting);
}

TEST_P(PausingExport, GoesOnWhenThePauseIsRefused) {
    useStreaming(true);
    answerElements();
    answerWith(0x23, {0x52});
    EXPECT_EQ(call(), 0);
    const std::vector<std::string> sent = takeSent();
    EXPECT_EQ(sent.front(), "80 23");
    EXPECT_EQ(sent[lastOfRun(sent)], "80 24");
    EXPECT_TRUE(record().transmitting);
}

TEST_P(PausingExport, SucceedsThoughTheStreamDoesNotStartAgain) {
    useStreaming(true);
    answerElements();
    answerWith(0x24, {0x52});
    EXPECT_EQ(call(), 0);
    EXPECT_FALSE(record().transmitting);
}

TEST_P(PausingExport, StartsTheStreamAgainAfterARefusedElement) {
    for (const std::uint32_t good : {0U, 1U, 8U}) {
        useStreaming(true);
        if (good > 0) answerElements(good);
        answerWith(GetParam().command, {0x53});
        EXPECT_EQ(call(), -1);
        EXPECT_EQ(takeCode(), 0x53U);
        const std::vector<std::string> sent = takeSent();
        EXPECT_EQ(sent.front(), "80 23");
        EXPECT_EQ(sent.back(), "80 24");
        EXPECT_TRUE(record().transmitting);
    }
}

TEST_P(PausingExport, StartsTheStreamAgainAfterAMissingAnswer) {
    useStreaming(true);
    answerElements(2);
    drop(GetParam().command);
    EXPECT_EQ(run([] { return call(); }), -1);
    EXPECT_EQ(takeSent().back(), "80 24");
    EXPECT_TRUE(record().transmitting);
    expectFree();
}

TEST_P(PausingExport, StartsTheStreamAgainAfterAFailedWrite) {
    useStreaming(true);
    answerElements();
    failWriteAfter(4);
    EXPECT_EQ(call(), -1);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    const std::vector<std::string> sent = takeSent();
    EXPECT_EQ(sent.size(), 5U);
    EXPECT_EQ(sent.back(), "80 24");
    EXPECT_TRUE(record().transmitting);
    expectFree();
}

INSTANTIATE_TEST_SUITE_P(Calibration, PausingExport, testing::ValuesIn(pausingExports()), nameOf);

class CalibrationExport : public CalibrationBench, public testing::WithParamInterface<Export> {};

TEST_P(CalibrationExport, RefusesNumbersAboveThirtyNine) {
    for (const std::int32_t number : {40, 255}) {
        EXPECT_EQ(GetParam().call(number), -1);
        EXPECT_EQ(takeCode(40), code::parameterExceedance);
    }
    EXPECT_THAT(takeSent(), testing::IsEmpty());
}

TEST_P(CalibrationExport, RefusesAnInactiveDevice) {
    EXPECT_EQ(GetParam().call(inactiveDevice), -1);
    EXPECT_EQ(takeCode(inactiveDevice), code::notActive);
    EXPECT_THAT(takeSent(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Calibration, CalibrationExport, testing::ValuesIn(allExports()), nameOf);

}  // namespace
}  // namespace torvik::test
