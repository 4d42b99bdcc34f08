// Calls of the filter exports that are refused before anything is sent.
#include <climits>

#include "filter/export_bench.h"

namespace torvik::test {

void PrintTo(const RefusedCall& call, std::ostream* out) {
    *out << call.name;
}

namespace {

using u32 = std::uint32_t;

double someDoubles[16] = {0.1, 0.2};
double zeroFirst[2] = {0.0, 0.2};
double negativeFirst[2] = {-0.1, 0.2};
double nanFirst[2] = {NAN, 0.2};
double zeroSecond[2] = {0.1, 0.0};
double nanSecond[2] = {0.1, NAN};
u32 someWord;

constexpr const char* file = "never_written.txt";

Call setParams(u32 filterNo, std::int32_t type, double* cutoffs = someDoubles, double* x = someDoubles,
               double* y = someDoubles) {
    return writes(TORVIKsetDfilterParams, filterNo, type, cutoffs, x, y);
}

// With arguments that are right.
std::vector<RefusedCall> everyExport() {
    return {
        {"getOnOff", reads<u32>(TORVIKgetDfilterOnOff)},
        {"setOnOff", writes(TORVIKsetDfilterOnOff, 1U, 0, 1)},
        {"getInfo", writes(TORVIKgetDfilterInfo, 1U, 0, &someWord, someDoubles)},
        {"getType", reads<u32>(TORVIKgetDigiFiltType, 1U, std::int8_t{0})},
        {"getCoeff", writes(TORVIKgetDfilterCoeff, 1, 0U, someDoubles, someDoubles)},
        {"getDesignedCoeff", writes(TORVIKgetDfilterCoeff, -1, 0U, someDoubles, someDoubles)},
        {"store", writes(TORVIKstoreDigitalFilter, 1U, 1U)},
        {"setParams", setParams(1, 4)},
        {"calcSetParams", writes(TORVIKcalcSetDfilterParams, 1U, 0U, 0U, 1U, 4U, 100.0, 0.0)},
        {"calcSetParamsWithUnsupportedMode", writes(TORVIKcalcSetDfilterParams, 1U, 1U, 0U, 1U, 4U, 100.0, 0.0)},
        {"simulate", writes(TORVIKsimulateDfilter, 1, 10.0, 20.0, 1000.0, 1, file)},
        {"simulateWithoutFrequency", writes(TORVIKsimulateDfilter, 1, 10.0, 20.0, 0.0, 1, file)},
    };
}

std::vector<RefusedCall> wrongArguments() {
    std::vector<RefusedCall> calls = {
        {"getOnOffNull", writes(TORVIKgetDfilterOnOff, nullptr)},
        {"getInfoFilter0", writes(TORVIKgetDfilterInfo, 0U, 0, &someWord, someDoubles)},
        {"getInfoFilter9", writes(TORVIKgetDfilterInfo, 9U, 0, &someWord, someDoubles)},
        {"getInfoNoType", writes(TORVIKgetDfilterInfo, 1U, 0, nullptr, someDoubles)},
        {"getInfoNoCutoffs", writes(TORVIKgetDfilterInfo, 1U, 0, &someWord, nullptr)},
        {"getTypeFilter0", reads<u32>(TORVIKgetDigiFiltType, 0U, std::int8_t{0})},
        {"getTypeFilter9", reads<u32>(TORVIKgetDigiFiltType, 9U, std::int8_t{0})},
        {"getTypeNull", writes(TORVIKgetDigiFiltType, 1U, std::int8_t{0}, nullptr)},
        {"getCoeffFilter0", writes(TORVIKgetDfilterCoeff, 0, 0U, someDoubles, someDoubles)},
        {"getCoeffFilter9", writes(TORVIKgetDfilterCoeff, 9, 0U, someDoubles, someDoubles)},
        {"getCoeffFilterLargest", writes(TORVIKgetDfilterCoeff, INT_MAX, 0U, someDoubles, someDoubles)},
        {"getCoeffNoX", writes(TORVIKgetDfilterCoeff, 1, 0U, nullptr, someDoubles)},
        {"getCoeffNoY", writes(TORVIKgetDfilterCoeff, 1, 0U, someDoubles, nullptr)},
        {"getFirCoeffNoX", writes(TORVIKgetDfilterCoeff, 1, 0x80U, nullptr, someDoubles)},
        {"storeFirst9", writes(TORVIKstoreDigitalFilter, 9U, 0U)},
        {"storeSecond9", writes(TORVIKstoreDigitalFilter, 0U, 9U)},
        {"storeLargest", writes(TORVIKstoreDigitalFilter, UINT_MAX, UINT_MAX)},
        {"setParamsFilter9", setParams(9, 4)},
        {"setParamsFilterLargest", setParams(UINT_MAX, 4)},
        {"setParamsNoCutoffs", setParams(1, 4, nullptr)},
        {"setParamsNoX", setParams(1, 4, someDoubles, nullptr)},
        {"setParamsNoY", setParams(1, 4, someDoubles, someDoubles, nullptr)},
        {"setParamsNoYForFir", setParams(1, INT_MIN | 4, someDoubles, someDoubles, nullptr)},
        {"setParamsCutoff0", setParams(1, 4, zeroFirst)},
        {"setParamsCutoffNegative", setParams(1, 4, negativeFirst)},
        {"setParamsCutoffNan", setParams(1, 4, nanFirst)},
        {"setParamsBandPassUpper0", setParams(1, 0x24, zeroSecond)},
        {"setParamsBandStopUpperNan", setParams(1, 0x34, nanSecond)},
        {"simulateNoFile", writes(TORVIKsimulateDfilter, 1, 10.0, 20.0, 0.0, 1, nullptr)},
    };
    for (const std::int32_t type : {0x44, 0x54, 0x64, 0x74})
        calls.push_back({"setParamsKind" + std::to_string(type), setParams(1, type)});
    return calls;
}

class FilterCall : public FilterExports, public testing::WithParamInterface<RefusedCall> {
  protected:
    void expectRefusal(std::int32_t deviceNo, std::uint32_t expected) {
        const Outcome outcome = GetParam().call(deviceNo);
        EXPECT_EQ(outcome.result, -1);
        EXPECT_TRUE(outcome.unchanged);
        EXPECT_EQ(takeCode(deviceNo), expected);
        expectNothingSentAndNoTimePassed();
    }
};

class CallOfEveryExport : public FilterCall {};

TEST_P(CallOfEveryExport, IsRefusedForNumbersAboveThirtyNine) {
    expectRefusal(40, code::parameterExceedance);
    expectRefusal(255, code::parameterExceedance);
}

TEST_P(CallOfEveryExport, IsRefusedForAnInactiveDevice) {
    expectRefusal(inactiveDevice, code::notActive);
}

TEST_P(CallOfEveryExport, IsRefusedForAReleasedDevice) {
    TORVIKrelease(device);
    takeWritten();
    EXPECT_EQ(GetParam().call(device).result, -1);
    EXPECT_EQ(takeCode(device), code::notActive);
    EXPECT_THAT(takeWritten(), testing::IsEmpty());
}

class CallWithWrongArguments : public FilterCall {};

TEST_P(CallWithWrongArguments, IsRefused) {
    expectRefusal(device, code::parameterExceedance);
    expectFree();
}

TEST_P(CallWithWrongArguments, IsRefusedBeforeActivityIsLookedAt) {
    expectRefusal(inactiveDevice, code::parameterExceedance);
}

INSTANTIATE_TEST_SUITE_P(Filter, CallOfEveryExport, testing::ValuesIn(everyExport()),
                         [](const auto& instance) { return instance.param.name; });
INSTANTIATE_TEST_SUITE_P(Filter, CallWithWrongArguments, testing::ValuesIn(wrongArguments()),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace torvik::test
