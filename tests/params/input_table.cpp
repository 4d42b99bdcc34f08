#include <cmath>
#include <limits>

#include "TORVIK.h"
#include "params/export_tables.h"

namespace torvik::test {

namespace {

using u8 = std::uint8_t;
using u32 = std::uint32_t;

// Delivers the first two entries.
Call allInTypesRanges(u32 channel) {
    return [=](std::int32_t deviceNo) {
        u32 count = untouched<u32>();
        std::array<u32, 10> types{};
        std::array<double, 10> ranges{};
        types.fill(untouched<u32>());
        ranges.fill(untouched<double>());
        const std::int32_t result = TORVIKgetAllInTypesRanges(deviceNo, channel, &count, types.data(), ranges.data());
        const bool unchanged =
            count == untouched<u32>() && types[0] == untouched<u32>() && ranges[0] == untouched<double>();
        return Outcome{result, show(count, types[0], ranges[0], types[1], ranges[1], types[2]), unchanged};
    };
}

const Answer endOfList{0xA2, {0x55}};

std::vector<ExportRow> inputRows() {
    std::vector<ExportRow> list = {
        getter("TORVIKgetInTypeRange", reads<u32, double>(TORVIKgetInTypeRange, 3U), "82 A2 03 00",
               {0x02, 0x00, 0x03, 0xE8}, show(2, 10.0)),
        {.name = "TORVIKgetAllInTypesRanges",
         .call = allInTypesRanges(3),
         .sent = {"82 A2 03 01", "82 A2 03 02", "82 A2 03 03"},
         .answers = {accepts(0xA2, {0x02, 0x00, 0x03, 0xE8}), accepts(0xA2, {0x03, 0x03, 0xD0, 0x90}), endOfList},
         .output = show(2, 2, 10.0, 3, 2.5, untouched<u32>()),
         .stored = 0x55},
        restartingSetter("TORVIKsetInType", writes(TORVIKsetInType, 3U, u8{7}), "82 A3 03 07"),
        restartingSetter("TORVIKFABwriteInputRange", writes(TORVIKFABwriteInputRange, 3U, 5U, 12.34),
                         "86 34 03 05 00 00 04 D2"),
        {.name = "TORVIKreadInputSensitivity",
         .call = reads<double>(TORVIKreadInputSensitivity, 3U),
         .sent = {"82 A2 03 00", "81 06 03"},
         .answers = {accepts(0xA2, {0x02, 0x00, 0x03, 0xE8}), accepts(0x06, {0x40, 0x20, 0x00, 0x00})},
         .output = show(4.0),
         .result = 2},
        {.name = "TORVIKwriteInputSensitivity",
         .call = writes(TORVIKwriteInputSensitivity, 3U, 0, 3.0),
         .sent = {"82 A2 03 01", "82 A2 03 02", "82 A2 03 03", "82 A2 03 04", "82 A2 03 05", "86 34 03 00 00 00 01 F4",
                  "80 78", "80 24", "85 07 03 3F D5 55 55"},
         .answers = {accepts(0xA2, {1, 0x00, 0x03, 0xE8}), accepts(0xA2, {1, 0x00, 0x01, 0xF4}),
                     accepts(0xA2, {1, 0x00, 0x00, 0xFA}), accepts(0xA2, {1, 0x00, 0x00, 0x64}), endOfList,
                     accepts(0x34), accepts(0x24), accepts(0x07)},
         .output = "",
         .stored = 0x55},
        getter("TORVIKreadCal", reads<double>(TORVIKreadCal, 0, 3U), "82 17 00 03", {0x40, 0x20, 0x00, 0x00},
               show(2.5)),
        setter("TORVIKFABwriteCal", writes(TORVIKFABwriteCal, 0U, 3U, 1.5), "86 18 00 03 3F C0 00 00"),
    };
    // What its command could not send, its answer tells.
    list[6].unwritten = code::answerTimeout;
    return list;
}

std::vector<RefusedCall> refusedRanges() {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const auto range = [](const char* name, u32 channel, u32 entry, double value) {
        return afterActivity(name, writes(TORVIKFABwriteInputRange, channel, entry, value));
    };
    return {
        afterActivity("getInTypeRangeChannel9", reads<u32, double>(TORVIKgetInTypeRange, 9U)),
        afterActivity("getInTypeRangeChannel256", reads<u32, double>(TORVIKgetInTypeRange, 256U)),
        afterActivity("getInTypeRangeTypeNull", reads<double>(TORVIKgetInTypeRange, 1U, nullptr)),
        afterActivity("getInTypeRangeRangeNull",
                      [](std::int32_t deviceNo) {
                          u32 type = untouched<u32>();
                          const auto result = TORVIKgetInTypeRange(deviceNo, 1, &type, nullptr);
                          return Outcome{result, "", type == untouched<u32>()};
                      }),
        afterActivity("getAllInTypesRangesChannel0", allInTypesRanges(0)),
        afterActivity("getAllInTypesRangesChannel9", allInTypesRanges(9)),
        afterActivity("getAllInTypesRangesChannel257", allInTypesRanges(257)),
        afterActivity("setInTypeChannel9", writes(TORVIKsetInType, 9U, u8{1})),
        afterActivity("setInTypeChannel256", writes(TORVIKsetInType, 256U, u8{1})),
        range("writeInputRangeChannel9", 9, 0, 1),
        range("writeInputRangeChannel256", 256, 0, 1),
        range("writeInputRangeEntry6", 1, 6, 1),
        range("writeInputRangeEntry256", 1, 256, 1),
        range("writeInputRangeNegative", 1, 0, -0.01),
        range("writeInputRangeSmallestNegative", 1, 0, -std::numeric_limits<double>::denorm_min()),
        range("writeInputRangeMinusInfinity", 1, 0, -HUGE_VAL),
        range("writeInputRangeInfinity", 1, 0, HUGE_VAL),
        range("writeInputRangeNan", 1, 0, nan),
        range("writeInputRangeBeyond31Bits", 1, 0, 21474836.48),
        range("writeInputRangeHuge", 1, 0, 1e308),
    };
}

std::vector<RefusedCall> refusedSensitivities() {
    constexpr double epsilon = std::numeric_limits<double>::epsilon();
    const auto sensitivity = [](const char* name, std::int32_t mode, double value) {
        return beforeActivity(name, writes(TORVIKwriteInputSensitivity, 1U, mode, value));
    };
    return {
        beforeActivity("readInputSensitivityChannel0", reads<double>(TORVIKreadInputSensitivity, 0U)),
        beforeActivity("readInputSensitivityChannel9", reads<double>(TORVIKreadInputSensitivity, 9U)),
        beforeActivity("readInputSensitivityChannel257", reads<double>(TORVIKreadInputSensitivity, 257U)),
        afterActivity("writeInputSensitivityChannel9", writes(TORVIKwriteInputSensitivity, 9U, 0, 1.0)),
        afterActivity("writeInputSensitivityChannel257", writes(TORVIKwriteInputSensitivity, 257U, 0, 1.0)),
        sensitivity("writeInputSensitivityModeMinus1", -1, 1),
        sensitivity("writeInputSensitivity0", 0, 0),
        sensitivity("writeInputSensitivityEpsilon", 0, epsilon),
        sensitivity("writeInputSensitivityMinus1", 0, -1),
        sensitivity("writeInputSensitivityNan", 0, std::numeric_limits<double>::quiet_NaN()),
        sensitivity("writeInputSensitivityMode1Of0", 1, 0),
        {"writeInputSensitivityMode1",
         writes(TORVIKwriteInputSensitivity, 1U, 1, 1.0),
         {-1, code::firmwareUnsupported},
         {-1, code::firmwareUnsupported}},
    };
}

std::vector<RefusedCall> refusedCalibration() {
    return {
        beforeActivity("readCalIndexMinus1", reads<double>(TORVIKreadCal, -1, 0U)),
        beforeActivity("readCalIndex49", reads<double>(TORVIKreadCal, 49, 0U)),
        beforeActivity("readCalIndex256", reads<double>(TORVIKreadCal, 256, 0U)),
        beforeActivity("readCalChannel8", reads<double>(TORVIKreadCal, 0, 8U)),
        beforeActivity("readCalChannel256", reads<double>(TORVIKreadCal, 0, 256U)),
        beforeActivity("readCalNull", writes(TORVIKreadCal, 0, 0U, nullptr)),
        afterActivity("writeCalIndex49", writes(TORVIKFABwriteCal, 49U, 0U, 1.0)),
        afterActivity("writeCalIndex256", writes(TORVIKFABwriteCal, 256U, 0U, 1.0)),
        afterActivity("writeCalChannel8", writes(TORVIKFABwriteCal, 0U, 8U, 1.0)),
        afterActivity("writeCalChannel256", writes(TORVIKFABwriteCal, 0U, 256U, 1.0)),
        afterActivity("writeCalIntegerAbove", writes(TORVIKFABwriteCal, 8U, 0U, 2147483648.0)),
        afterActivity("writeCalIntegerBelow", writes(TORVIKFABwriteCal, 8U, 0U, -2147483649.0)),
        afterActivity("writeCalIntegerInfinity", writes(TORVIKFABwriteCal, 8U, 0U, HUGE_VAL)),
        afterActivity("writeCalIntegerMinusInfinity", writes(TORVIKFABwriteCal, 8U, 0U, -HUGE_VAL)),
        afterActivity("writeCalIntegerNan",
                      writes(TORVIKFABwriteCal, 8U, 0U, std::numeric_limits<double>::quiet_NaN())),
    };
}

std::vector<AcceptedCall> inputCallsAccepted() {
    const auto range = [](u32 channel, u32 entry, double value) {
        return writes(TORVIKFABwriteInputRange, channel, entry, value);
    };
    const auto calibration = [](u32 index, u32 channel, double value) {
        return writes(TORVIKFABwriteCal, index, channel, value);
    };
    return {
        {"getInTypeRangeChannel1", reads<u32, double>(TORVIKgetInTypeRange, 1U), "82 A2 01 00"},
        {"getInTypeRangeChannel8", reads<u32, double>(TORVIKgetInTypeRange, 8U), "82 A2 08 00"},
        {"getAllInTypesRangesChannel1", allInTypesRanges(1), "82 A2 01 01"},
        {"getAllInTypesRangesChannel8", allInTypesRanges(8), "82 A2 08 01"},
        {"setInTypeChannel1", writes(TORVIKsetInType, 1U, u8{255}), "82 A3 01 FF"},
        {"setInTypeChannel8", writes(TORVIKsetInType, 8U, u8{0}), "82 A3 08 00"},
        {"writeInputRangeChannel0Entry0", range(0, 0, 0), "86 34 00 00 00 00 00 00"},
        {"writeInputRangeChannel8Entry5", range(8, 5, 0.01), "86 34 08 05 00 00 00 01"},
        {"writeInputRangeMinusZero", range(1, 0, -0.0), "86 34 01 00 00 00 00 00"},
        {"writeInputRangeHalfRoundsUp", range(1, 0, 0.125), "86 34 01 00 00 00 00 0D"},
        {"writeInputRangeBelowHalfRoundsDown", range(1, 0, 0.1249), "86 34 01 00 00 00 00 0C"},
        {"writeInputRangeLargest", range(1, 0, 21474836.47), "86 34 01 00 7F FF FF FF"},
        {"readCalIndex48Channel7", reads<double>(TORVIKreadCal, 48, 7U), "82 17 30 07"},
        {"writeCalIndex48Channel7", calibration(48, 7, 1), "86 18 30 07 3F 80 00 00"},
        {"writeCalIntegerMinus2Point7", calibration(8, 0, -2.7), "86 18 08 00 FF FF FF FE"},
        {"writeCalInteger2Point7", calibration(8, 0, 2.7), "86 18 08 00 00 00 00 02"},
        {"writeCalIntegerLargest", calibration(8, 0, 2147483647.9), "86 18 08 00 7F FF FF FF"},
        {"writeCalIntegerSmallest", calibration(8, 0, -2147483648.9), "86 18 08 00 80 00 00 00"},
        {"writeCalFloatInfinity", calibration(0, 0, HUGE_VAL), "86 18 00 00 7F 80 00 00"},
        {"writeCalFloatNan", calibration(0, 0, std::numeric_limits<double>::quiet_NaN()), "86 18 00 00 7F C0 00 00"},
    };
}

}  // namespace

ExportFamily inputExports() {
    std::vector<RefusedCall> refused = refusedRanges();
    for (const auto& calls : {refusedSensitivities(), refusedCalibration()})
        refused.insert(refused.end(), calls.begin(), calls.end());
    return {inputRows(), std::move(refused), inputCallsAccepted()};
}

}  // namespace torvik::test
