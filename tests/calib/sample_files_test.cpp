// What the sample calibration files say.
#include "calib/sample_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "calibration_invariants.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

class Sample : public testing::Test {
  protected:
    void read(const std::string& name) {
        ASSERT_EQ(readCalibrationFile(samplePath(name + ".ini").c_str(), true, calibration), 0U);
    }
    std::string serial() const { return calibration.serialText.data(); }
    std::vector<int> date() const {
        if (!calibration.date) return {};
        return {calibration.date->year, calibration.date->month, calibration.date->day};
    }

    CalibrationFile calibration;
};

TEST_F(Sample, OfVersion0HasUsualScaleFactors) {
    read("version0");
    EXPECT_EQ(calibration.version, 0);
    EXPECT_EQ(serial(), "SN-00001001");
    EXPECT_EQ(calibration.outScale, 5.0);
    EXPECT_EQ(calibration.inScale, 2.0);
    EXPECT_THAT(calibration.maxima, ElementsAre(200, 200, 500, 7.5, 7.5, 12));
    EXPECT_THAT(calibration.zeroSignals, ElementsAre(0.0125, 0, 0, -0.0075, 0, 0));
    EXPECT_THAT(calibration.offsets, ElementsAre(0, 0, 0.0184));
    EXPECT_EQ(calibration.matrix.front(), -12.0416);
    EXPECT_EQ(calibration.matrix.back(), -0.0026);
    EXPECT_EQ(calibration.formatWord(), 0);
}

TEST_F(Sample, OfVersion2HasExponentsOfAllKinds) {
    read("version2");
    EXPECT_EQ(calibration.version, 2);
    EXPECT_EQ(serial(), "SN 20250017");
    EXPECT_EQ(calibration.matrix[0], 15.0);
    EXPECT_EQ(calibration.matrix[2], 0.01);
    EXPECT_EQ(calibration.matrix[5], 0.01);
    EXPECT_EQ(calibration.matrix[35], 0.62);
    EXPECT_THAT(date(), ElementsAre(2025, 11, 21));
}

TEST_F(Sample, OfVersion3HasThreeForces) {
    read("version3-forces");
    EXPECT_EQ(calibration.version, 3);
    EXPECT_EQ(calibration.formatWord(), 0x22002);
    EXPECT_THAT(calibration.maxima, ElementsAre(1000, 1000, 250, 0, 0, 0));
    EXPECT_EQ(calibration.matrix[2], 0.75);
    EXPECT_EQ(calibration.matrix[8], 125.0625);
    EXPECT_EQ(calibration.matrix[9], 0.0);
    EXPECT_EQ(calibration.units.outputs[2], "lbs");
    EXPECT_THAT(date(), ElementsAre(2025, 11, 21));
}

TEST_F(Sample, OfVersion3HasAForceAndTwoTorques) {
    read("version3-force-and-torques");
    EXPECT_EQ(calibration.formatWord(), 0x32002);
    EXPECT_THAT(calibration.maxima, ElementsAre(2000, 100, 100, 0, 0, 0));
    EXPECT_EQ(calibration.matrix[0], 251.5);
    EXPECT_EQ(calibration.matrix[11], -12.375);
    EXPECT_EQ(calibration.units.outputs[0], "kN");
}

TEST_F(Sample, OfVersion4HasMatrixBAndAModelName) {
    read("version4-matrix-b");
    EXPECT_EQ(calibration.version, 4);
    EXPECT_EQ(calibration.formatWord(), 1);
    EXPECT_EQ(calibration.model, "SIX-200N-8Nm");
    ASSERT_TRUE(calibration.matrixB);
    EXPECT_EQ(calibration.matrixB->elements[0], 1.1e-4);
    EXPECT_EQ(calibration.matrixB->elements[35], 6.0e-6);
    EXPECT_THAT(calibration.matrixB->firstFactors, ElementsAre(0U, 1U, 2U, 3U, 4U, 5U));
    EXPECT_THAT(calibration.matrixB->secondFactors, ElementsAre(3U, 4U, 5U, 0U, 1U, 2U));
    EXPECT_EQ(calibration.units.outputs[5], "Nm");
}

TEST_F(Sample, OfVersion4HasASingleOutput) {
    read("version4-single-axis");
    EXPECT_EQ(calibration.formatWord(), 0x10002);
    EXPECT_EQ(calibration.model, "ONE-50N");
    EXPECT_THAT(calibration.maxima, ElementsAre(50, 0, 0, 0, 0, 0));
    EXPECT_EQ(calibration.matrix[1], 0.125);
    EXPECT_EQ(calibration.units.outputs[0], "N");
}

TEST(Samples, AreAllReadHere) {
    std::set<std::string> found;
    for (const auto& [name, text] : sampleTexts()) {
        EXPECT_LT(text.size(), 2000U) << name;
        if (name.ends_with(".ini")) found.insert(name.substr(0, name.size() - 4));
    }
    EXPECT_EQ(found, std::set<std::string>(std::begin(sampleNames), std::end(sampleNames)));
}

void expectSane(const std::string& name, const SampleTexts& texts) {
    CalibrationFile calibration;
    const std::uint32_t result = readSample(name, texts, calibration);
    ASSERT_STREQ(brokenRule(result, calibration, missingFile), nullptr) << result;
}

class DamagedSample : public testing::TestWithParam<const char*> {
  protected:
    // Calls `change` for each text that the sample is made of.
    template <class Change>
    void forEachText(Change change) {
        const SampleTexts texts = sampleTexts();
        const std::string main = GetParam() + std::string(".ini");
        for (const auto& [name, text] : texts) {
            if (name == main || texts.at(main).find("=" + name) != std::string::npos) change(name, text);
        }
    }
};

TEST_P(DamagedSample, MayEndAnywhere) {
    forEachText([](const std::string& name, const std::string& text) {
        SampleTexts texts = sampleTexts();
        for (std::size_t length = 0; length < text.size(); ++length) {
            texts[name] = text.substr(0, length);
            SCOPED_TRACE(name + " ends at " + std::to_string(length));
            ASSERT_NO_FATAL_FAILURE(expectSane(GetParam(), texts));
        }
    });
}

TEST_P(DamagedSample, MayHaveAnyByteAnywhere) {
    constexpr char bytes[] = {'7', 'a', ',', '[', '=', '\n', '\0', '\xFF'};
    forEachText([&](const std::string& name, const std::string& text) {
        SampleTexts texts = sampleTexts();
        for (std::size_t place = 0; place < text.size(); ++place) {
            for (const char byte : bytes) {
                texts[name] = text;
                texts[name][place] = byte;
                SCOPED_TRACE(name + " has " + std::to_string(byte) + " at " + std::to_string(place));
                ASSERT_NO_FATAL_FAILURE(expectSane(GetParam(), texts));
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Samples, DamagedSample, testing::ValuesIn(sampleNames), [](const auto& instance) {
    std::string name = instance.param;
    std::ranges::replace(name, '-', '_');
    return name;
});

}  // namespace
}  // namespace torvik::test
