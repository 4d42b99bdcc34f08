// The factory calibration values: which index carries which kind of number.
#include "core/library_state.h"
#include "params/calibration_values.h"
#include "params/params_bench.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// By index: F a float, I a signed integer, a point nothing.
struct Formats {
    const char* name;
    std::uint32_t protocolKind;
    std::uint32_t protocolFlag;
    std::string_view byIndex;
};

constexpr Formats kinds[] = {
    //                                            0-7     8-15    16-23   24-31   32-39   40-47   48
    {"Kind16", 16, TORVIK_FLAG_PROTOCOL_KIND_16, "FFFFFF..IIIIII..F.......I.......FFFFFF..IIIIII..F"},
    {"Kind32", 32, TORVIK_FLAG_PROTOCOL_KIND_32, "FFFFFFFFIIIIIIIIFFFFFFFFIIIIIIII................."},
};

CalibrationFormat formatOf(char letter) {
    if (letter == 'F') return CalibrationFormat::floating;
    return letter == 'I' ? CalibrationFormat::integer : CalibrationFormat::none;
}

TEST(CalibrationFormats, AreThoseOfTheTable) {
    for (const Formats& kind : kinds) {
        ASSERT_EQ(kind.byIndex.size(), 49U);
        for (std::uint32_t index = 0; index < kind.byIndex.size(); ++index)
            EXPECT_EQ(calibrationFormat(kind.protocolKind, index), formatOf(kind.byIndex[index])) << index;
    }
}

class Calibration : public ParamsBench, public testing::WithParamInterface<Formats> {
  protected:
    void SetUp() override {
        ParamsBench::SetUp();
        activateAs({.protocolFlag = GetParam().protocolFlag});
    }

    static std::string frame(const char* begin, std::uint32_t index, const char* rest) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%s %02X 05%s", begin, static_cast<unsigned>(index), rest);
        return text.data();
    }
};

TEST_P(Calibration, IsReadInTheFormatOfItsIndex) {
    answerWith(0x17, {0, 0xC0, 0x20, 0, 0});
    for (std::uint32_t index = 0; index < GetParam().byIndex.size(); ++index) {
        double value = 77;
        EXPECT_EQ(TORVIKreadCal(device, static_cast<std::int32_t>(index), 5, &value), 0) << index;
        const CalibrationFormat format = formatOf(GetParam().byIndex[index]);
        const double expected = format == CalibrationFormat::floating  ? -2.5
                                : format == CalibrationFormat::integer ? -1071644672.0
                                                                       : 77;
        EXPECT_EQ(value, expected) << index;
        EXPECT_THAT(takeSent(), ElementsAre(frame("82 17", index, "")));
    }
    EXPECT_EQ(takeCode(), code::none);
}

TEST_P(Calibration, IsWrittenInTheFormatOfItsIndexOrRefused) {
    answerWith(0x18, {0});
    for (std::uint32_t index = 0; index < GetParam().byIndex.size(); ++index) {
        const std::int32_t result = TORVIKFABwriteCal(device, index, 5, -2.7);
        const CalibrationFormat format = formatOf(GetParam().byIndex[index]);
        if (format == CalibrationFormat::none) {
            EXPECT_EQ(result, -1) << index;
            EXPECT_EQ(takeCode(), code::parameterExceedance) << index;
            EXPECT_THAT(takeSent(), IsEmpty()) << index;
            continue;
        }
        EXPECT_EQ(result, 0) << index;
        const char* const bytes = format == CalibrationFormat::floating ? " C0 2C CC CD" : " FF FF FF FE";
        EXPECT_THAT(takeSent(), ElementsAre(frame("86 18", index, bytes)));
    }
}

TEST_P(Calibration, OfAnIndexThatCarriesNothingStillReportsARefusal) {
    const std::size_t index = GetParam().byIndex.rfind('.');
    answerWith(0x17, {0x52});
    double value = 77;
    EXPECT_EQ(TORVIKreadCal(device, static_cast<std::int32_t>(index), 5, &value), -1);
    EXPECT_EQ(takeCode(), 0x52U);
}

INSTANTIATE_TEST_SUITE_P(Params, Calibration, testing::ValuesIn(kinds),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(ParamsBench, ReadCalTakesAnAnswerEvenThoughItsCommandCouldNotBeWritten) {
    arrive({0, 0x40, 0x20, 0, 0});
    failWriteAfter(0);
    double value = 77;
    EXPECT_EQ(TORVIKreadCal(device, 0, 0, &value), 0);
    EXPECT_EQ(value, 2.5);
    EXPECT_EQ(takeCode(), code::deviceWrite);
    expectFree();
}

// As no activation leaves it.
class CalibrationOfAnUnknownProtocol : public ParamsBench {
  protected:
    void SetUp() override {
        ParamsBench::SetUp();
        libraryState.protocolKind = 8;
    }
    void TearDown() override {
        libraryState.protocolKind = 16;
        ParamsBench::TearDown();
    }
};

TEST_F(CalibrationOfAnUnknownProtocol, IsNotRead) {
    double value = 7.0;
    EXPECT_EQ(TORVIKreadCal(device, 0, 0, &value), -1);
    EXPECT_EQ(takeCode(), 0x30000100U);
    EXPECT_EQ(value, 7.0);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(CalibrationOfAnUnknownProtocol, IsNotWritten) {
    EXPECT_EQ(TORVIKFABwriteCal(device, 0, 0, 1.0), -1);
    EXPECT_EQ(takeCode(), 0x30000105U);
    EXPECT_THAT(takeSent(), IsEmpty());
}

}  // namespace
}  // namespace torvik::test
