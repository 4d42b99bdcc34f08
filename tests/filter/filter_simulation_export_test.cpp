// The files of the simulation through the exports.
#include <future>

#include "filter/export_bench.h"
#include "filter/response_bench.h"
#include "platform/faults.h"

namespace torvik::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::int32_t amplitudeMode = 1;
constexpr std::int32_t stepMode = 2;

class SimulatedFilter : public FilterExports {
  protected:
    void SetUp() override {
        FilterExports::SetUp();
        std::filesystem::remove(file);
    }
    void TearDown() override {
        platform::setFaultHook(nullptr);
        std::filesystem::remove(file);
        FilterExports::TearDown();
    }

    // A Butterworth low pass of 100 Hz at 1000 Hz, kept by the library.
    void design() {
        script({samplingFrequency()});
        ASSERT_EQ(TORVIKcalcSetDfilterParams(device, 9, 0, 0, 2, 4, 100, 0), 0);
        takeSent();
    }

    std::int32_t simulate(std::int32_t mode, double f1, double f2, double frequency = 1000, std::int32_t points = 20) {
        return run([=, this] { return TORVIKsimulateDfilter(device, mode, f1, f2, frequency, points, file.c_str()); });
    }

    // What the writers make of the same design on their own.
    template <class Write>
    std::string expected(Write write) {
        Dfilter filter;
        designAlone(filter);
        const std::string other = file + ".expected";
        EXPECT_EQ(write(filter, other.c_str()), 0U);
        const std::string content = contentOf(other);
        std::filesystem::remove(other);
        return content;
    }
    std::string expectedAmplitudes(double fStart, double fStop, std::int32_t points) {
        return expected([=](Dfilter& filter, const char* name) {
            return writeFrequencyResponse(filter, singlePrecision, fStart, fStop, 1000, points, name);
        });
    }
    std::string expectedStep(std::int32_t points) {
        return expected([=](Dfilter& filter, const char* name) {
            return writeStepResponse(filter, singlePrecision, 0, 1, 1000, points, name);
        });
    }

    const std::string file =
        temporaryFile(testing::UnitTest::GetInstance()->current_test_info()->name() + std::string(".txt"));

  private:
    static void designAlone(Dfilter& filter) {
        const double cutoffs[] = {0.1, 0};
        designFilter(filter, option::lowPass | option::butterworth | given, 4, cutoffs);
    }
};

TEST_F(SimulatedFilter, WritesAmplitudesInModeOne) {
    design();
    EXPECT_EQ(simulate(amplitudeMode, 10, 400), 0);
    EXPECT_EQ(contentOf(file), expectedAmplitudes(10, 400, 20));
    EXPECT_THAT(contentOf(file),
                StartsWith("Frequency response of IIR low pass 4th order. Cutoff freq: 100.000 Sampling freq: 1000.0\n"
                           "f [Hz]\tAmplitude [dB]\n10.00\t"));
    expectNothingSentAndNoTimePassed();
}

TEST_F(SimulatedFilter, WritesAStepInModeTwo) {
    design();
    EXPECT_EQ(simulate(stepMode, 0.25, 0.75), 0);
    EXPECT_EQ(contentOf(file), expectedStep(20));
    EXPECT_EQ(designer()->stepLevelBefore, 0.25);
    EXPECT_EQ(designer()->stepLevelAfter, 0.75);
    expectNothingSentAndNoTimePassed();
}

TEST_F(SimulatedFilter, WritesAmplitudesWhenBothAreAskedFor) {
    design();
    EXPECT_EQ(simulate(amplitudeMode | stepMode | 0x7FFFFF00, 10, 400), 0);
    EXPECT_THAT(contentOf(file), StartsWith("Frequency"));
}

TEST_F(SimulatedFilter, NeedsAMode) {
    design();
    for (const std::int32_t mode : {0, 4, 0x80, 0x100})
        expectFailure(simulate(mode, 10, 400), code::parameterExceedance);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SimulatedFilter, StartsAtA250thOfTheSamplingFrequencyAtTheLowest) {
    design();
    EXPECT_EQ(simulate(amplitudeMode, 3.99, 100, 1000, 1), 0);
    EXPECT_THAT(contentOf(file), HasSubstr("\n4.000\t"));
    EXPECT_EQ(simulate(amplitudeMode, -HUGE_VAL, 100, 1000, 1), 0);
    EXPECT_THAT(contentOf(file), HasSubstr("\n4.000\t"));
}

TEST_F(SimulatedFilter, EndsAtHalfTheSamplingFrequencyAtTheHighest) {
    design();
    EXPECT_EQ(simulate(amplitudeMode, 10, 500.1, 1000, 2), 0);
    EXPECT_THAT(contentOf(file), HasSubstr("\n500.000\t"));
    EXPECT_EQ(simulate(amplitudeMode, 10, HUGE_VAL, 1000, 2), 0);
    EXPECT_THAT(contentOf(file), HasSubstr("\n500.000\t"));
}

TEST_F(SimulatedFilter, AsksForTheSamplingFrequencyBelowOne) {
    design();
    for (const double missing : {0.999, 0.0, -5.0, static_cast<double>(NAN)}) {
        script({samplingFrequency(2000)});
        EXPECT_EQ(simulate(amplitudeMode, 10, 400, missing, 1), 0);
        EXPECT_THAT(takeSent(), ElementsAre("80 8A"));
        EXPECT_THAT(contentOf(file), HasSubstr("Cutoff freq: 200.000 Sampling freq: 2000.0\n"));
    }
}

TEST_F(SimulatedFilter, DoesNotAskForASamplingFrequencyOfOne) {
    design();
    EXPECT_EQ(simulate(stepMode, 0, 1, 1.0), 0);
    expectNothingSentAndNoTimePassed();
}

TEST_F(SimulatedFilter, FailsWithoutASamplingFrequency) {
    design();
    for (const float wrong : {0.0F, -1.0F, static_cast<float>(NAN)}) {
        script({samplingFrequency(wrong)});
        expectFailure(simulate(amplitudeMode, 10, 400, 0), code::frequencyOutOfRange);
    }
    script({Answer{0x8A, {0x42}}});
    expectFailure(simulate(amplitudeMode, 10, 400, 0), code::frequencyOutOfRange);
    virtualClearAnswerRules();
    silence(0x8A);
    expectFailure(simulate(amplitudeMode, 10, 400, 0), code::frequencyOutOfRange);
    EXPECT_FALSE(std::filesystem::exists(file));
    expectFree();
}

TEST_F(SimulatedFilter, RefusesADevicesSamplingFrequencyBelowOne) {
    design();
    script({samplingFrequency(0.5)});
    expectFailure(simulate(stepMode, 0, 1, 0), filter_error::wrongArguments);
}

TEST_F(SimulatedFilter, NeedsADesign) {
    expectFailure(simulate(amplitudeMode, 10, 400), filter_error::noDesign);
    expectFailure(simulate(stepMode, 0, 1), filter_error::noDesign);
    ASSERT_NE(designer(), nullptr);
    EXPECT_EQ(designer()->errorCode, filter_error::noDesign);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SimulatedFilter, IsNeverAFirFilter) {
    design();
    expectFailure(simulate(0x80 | amplitudeMode, 10, 400), filter_error::noDesign);
    expectFailure(simulate(0x80 | stepMode, 0, 1), filter_error::noDesign);
}

TEST_F(SimulatedFilter, PassesTheCodesOfTheFilesOn) {
    design();
    expectFailure(simulate(stepMode, 0, 1, 1000, 19), filter_error::wrongArguments);
    expectFailure(simulate(amplitudeMode, 10, 400, 1000, 0), filter_error::wrongArguments);
    expectFailure(simulate(amplitudeMode, 1000, 400), filter_error::wrongArguments);
    const std::string nowhere = temporaryFile("no such folder/file.txt");
    EXPECT_EQ(TORVIKsimulateDfilter(device, stepMode, 0, 1, 1000, 20, nowhere.c_str()), -1);
    EXPECT_THAT(takeCode(), testing::AnyOf(0x31000002U, 0x31000003U));
}

TEST_F(SimulatedFilter, FailsWithoutMemoryForItsObject) {
    platform::setFaultHook(
        [](platform::FaultPoint point) { return point == platform::FaultPoint::allocation ? std::uint32_t{12} : 0; });
    expectFailure(simulate(stepMode, 0, 1), code::internalCallFailed);
}

TEST_F(SimulatedFilter, WritesTheSameInTwoThreadsAtOnce) {
    design();
    const auto contents = [this](std::int32_t mode, double f1, double f2) {
        const std::string own = file + std::to_string(mode);
        std::vector<std::string> all;
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(TORVIKsimulateDfilter(device, mode, f1, f2, 1000, 50, own.c_str()), 0);
            all.push_back(contentOf(own));
        }
        std::filesystem::remove(own);
        return all;
    };
    auto amplitudes = std::async(std::launch::async, contents, amplitudeMode, 10.0, 400.0);
    EXPECT_THAT(contents(stepMode, 0, 1), Each(expectedStep(50)));
    EXPECT_THAT(amplitudes.get(), Each(expectedAmplitudes(10, 400, 50)));
}

}  // namespace
}  // namespace torvik::test
