// What all files of responses have in common, their headings, and those of FIR filters.
#include <future>

#include "filter/response_bench.h"

namespace torvik::test {
namespace {

using namespace torvik::option;
using testing::AnyOf;
using testing::EndsWith;
using testing::SizeIs;
using testing::StartsWith;

struct HeadingCase {
    const char* name;
    Design design;
    const char* words;
};

void PrintTo(const HeadingCase& heading, std::ostream* out) {
    *out << heading.name;
}

class Headings : public ResponseFiles, public testing::WithParamInterface<HeadingCase> {
  protected:
    const std::string file = temporaryFile(GetParam().name + std::string(".txt"));
};

TEST_P(Headings, NameTheKindAndItsCutoffs) {
    make(GetParam().design);
    ASSERT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, 1234.56, 20, file.c_str()), 0U);
    EXPECT_THAT(contentOf(file), StartsWith(std::string("Step") + GetParam().words + "Time [ms]\tAmplitude\n0.000\t"));
    ASSERT_EQ(writeFrequencyResponse(filter, singlePrecision, 10, 20, 1234.56, 2, file.c_str()), 0U);
    EXPECT_THAT(contentOf(file),
                StartsWith(std::string("Frequency") + GetParam().words + "f [Hz]\tAmplitude [dB]\n10.000\t"));
    std::filesystem::remove(file);
}

INSTANTIATE_TEST_SUITE_P(
    Filter, Headings,
    testing::Values(
        HeadingCase{"LowPass", lowPassOf(butterworth, 4, 0.1),
                    " response of IIR low pass 4th order. Cutoff freq: 123.456 Sampling freq: 1234.6\n"},
        HeadingCase{"HighPass", highPassOf(bessel, 4, 0.3),
                    " response of IIR high pass 4th order. Cutoff freq: 370.368 Sampling freq: 1234.6\n"},
        HeadingCase{"BandPass", bandPassOf(butterworth, 2, 0.1, 0.2),
                    " response of IIR band pass 4th order.\nLower cutoff freq: 123.456 Higher cutoff freq: 246.912 "
                    "Sampling freq: 1234.6\n"},
        HeadingCase{"BandStop", bandStopOf(bessel, 2, 0.1, 0.2),
                    " response of IIR band stop 4th order.\nLower cutoff freq: 123.456 Higher cutoff freq: 246.912 "
                    "Sampling freq: 1234.6\n"},
        HeadingCase{"FourthOrderWhateverTheOrder", lowPassOf(butterworth, 2, 0.1),
                    " response of IIR low pass 4th order. Cutoff freq: 123.456 Sampling freq: 1234.6\n"},
        HeadingCase{"StopResonator", resonatorOf(bandStop, 0.1, 5),
                    " response of IIR band stop 4th order.\nLower cutoff freq: 123.456 Higher cutoff freq: 123.456 "
                    "Sampling freq: 1234.6\n"}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(ResponseFiles, HaveNoHeadingWithoutOneOfTheFourKinds) {
    make(resonatorOf(allPass, 0.1, 5));
    ASSERT_EQ(step(20), 0U);
    EXPECT_EQ(lines()[0], "Time [ms]\tAmplitude");
}

class FirFile : public ResponseFiles {
  protected:
    // No designer makes one: the object is filled.
    void SetUp() override {
        filter.firValid = true;
        filter.order = 2;
        filter.firCutoff = 12.3456;
        filter.firCoefficients = {0.25, 0.5, 0.25};
    }
};

TEST_F(FirFile, HasItsOwnHeadingForSteps) {
    ASSERT_EQ(step(20, firWord), 0U);
    EXPECT_EQ(lines()[0], "Step response of FIR low pass 2th order. Cutoff freq: 12.346 Sampling freq: 1000.0");
}

TEST_F(FirFile, HasItsOwnHeadingForFrequencies) {
    ASSERT_EQ(frequency(100, 200, 1, firWord), 0U);
    EXPECT_EQ(lines()[0], "Frequency response of FIR low pass 2th order. Cutoff freq: 12.346 Sampling freq: 1000.0");
}

TEST_F(FirFile, RunsOneTapMoreThanItsOrder) {
    ASSERT_EQ(step(20, firWord), 0U);
    EXPECT_EQ(lines()[12], "10.000\t0.12500");
    EXPECT_EQ(lines()[13], "11.000\t0.37500");
    EXPECT_EQ(lines()[14], "12.000\t0.50000");
}

TEST_F(FirFile, ShowsTheAmplitudesOfItsTaps) {
    // (1 + cos w) / 2 at a quarter of the sampling frequency.
    ASSERT_EQ(frequency(250, 400, 1, firWord), 0U);
    EXPECT_EQ(rows(), "250.000\t-6.02");
}

TEST_F(FirFile, IsRefusedWithoutAFilter) {
    filter.firValid = false;
    filter.iirValid = true;
    for (const std::uint32_t kindWord : {firWord, firWord | singlePrecision, firWord | singlePrecision | 0x100}) {
        EXPECT_EQ(step(20, kindWord), filter_error::noDesign);
        EXPECT_EQ(frequency(100, 200, 1, kindWord), filter_error::noDesign);
    }
    EXPECT_FALSE(fileThere());
}

TEST_F(ResponseFiles, AreRefusedWithoutADesign) {
    filter.iirValid = false;
    filter.firValid = true;
    EXPECT_EQ(step(20), filter_error::noDesign);
    EXPECT_EQ(step(20, iirInFixedPoint), filter_error::noDesign);
    EXPECT_EQ(frequency(100, 200, 1), filter_error::noDesign);
    EXPECT_EQ(frequency(100, 200, 1, iirInFixedPoint), filter_error::noDesign);
    EXPECT_FALSE(fileThere());
}

TEST_F(ResponseFiles, CheckTheirArgumentsBeforeTheDesign) {
    filter.iirValid = false;
    EXPECT_EQ(step(19), filter_error::wrongArguments);
    EXPECT_EQ(frequency(100, 200, 0), filter_error::wrongArguments);
}

TEST_F(ResponseFiles, LookForADesignOnlyForTheKindZero) {
    filter.iirValid = false;
    EXPECT_EQ(step(20, singlePrecision | 1), 0U);
    // In fixed point the kind is the whole word, and this is not the FIR kind.
    EXPECT_EQ(step(20, 0x180), 0U);
    EXPECT_THAT(lines()[0], StartsWith("Step response of IIR"));
}

TEST_F(ResponseFiles, ChooseTheArithmetic) {
    ASSERT_EQ(step(20, iirInFixedPoint), 0U);
    EXPECT_FALSE(filter.floatSimulation);
    ASSERT_EQ(step(20), 0U);
    EXPECT_TRUE(filter.floatSimulation);
}

TEST_F(ResponseFiles, GiveTheSystemsCodeWhenTheyCannotBeOpened) {
    const std::string nowhere = temporaryFile("no such folder/file.txt");
    constexpr std::uint32_t noSuchFile = 0x31000002;
    constexpr std::uint32_t noSuchPath = 0x31000003;  // on Windows
    EXPECT_THAT(writeStepResponse(filter, singlePrecision, 0, 1, fs, 20, nowhere.c_str()),
                AnyOf(noSuchFile, noSuchPath));
    EXPECT_THAT(writeFrequencyResponse(filter, singlePrecision, 1, 2, fs, 1, nowhere.c_str()),
                AnyOf(noSuchFile, noSuchPath));
}

TEST_F(ResponseFiles, ReplaceWhatWasThere) {
    ASSERT_EQ(step(1000), 0U);
    ASSERT_EQ(step(20), 0U);
    EXPECT_THAT(lines(), SizeIs(22));
}

TEST_F(ResponseFiles, HoldTheLargestNumbers) {
    filter.alpha1 = 1;
    EXPECT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, 1e308, 20, file.c_str()), 0U);
    EXPECT_THAT(lines()[0], EndsWith(".0"));
    EXPECT_THAT(lines(), SizeIs(22));
}

TEST_F(ResponseFiles, OfTwoThreadsDoNotMix) {
    ASSERT_EQ(frequency(10, 400, 50), 0U);
    const std::string expected = content();
    const auto writeOften = [this](const char* name) {
        Dfilter own;
        run(own, lowPassOf(butterworth, 4, 0.1));
        const std::string ownFile = file + name;
        std::vector<std::string> contents;
        for (int i = 0; i < 10; ++i) {
            writeFrequencyResponse(own, singlePrecision, 10, 400, fs, 50, ownFile.c_str());
            contents.push_back(contentOf(ownFile));
        }
        std::filesystem::remove(ownFile);
        return contents;
    };
    auto other = std::async(std::launch::async, writeOften, "1");
    EXPECT_THAT(writeOften("2"), testing::Each(expected));
    EXPECT_THAT(other.get(), testing::Each(expected));
}

}  // namespace
}  // namespace torvik::test
