#include <climits>

#include "TORVIK.h"
#include "params/export_tables.h"

namespace torvik::test {

namespace {

using u32 = std::uint32_t;

std::vector<ExportRow> rateRows() {
    return {
        getter("TORVIKgetFrequency", reads<double>(TORVIKgetFrequency), "80 8A", {0x44, 0x9A, 0x50, 0x00},
               show(1234.5)),
        restartingSetter("TORVIKsetFrequency", writes(TORVIKsetFrequency, 1234.5), "84 8B 44 9A 50 00"),
        {.name = "TORVIKgetDataRateRange",
         .call = reads<double, double>(TORVIKgetDataRateRange),
         .sent = {"81 63 00", "81 63 01"},
         .answers = {accepts(0x63, {0x3F, 0x00, 0x00, 0x00}), accepts(0x63, {0x44, 0x9A, 0x50, 0x00})},
         .output = show(0.5, 1234.5)},
        getter("TORVIKgetCounterFreqMode", reads<u32>(TORVIKgetCounterFreqMode, 2, 15U), "81 69 2F",
               {0xFE, 0xDC, 0xBA, 0x98}, show(0xFEDCBA98))
            .atNumberForty({-1, code::none})
            .withoutActivityCheck(),
        setter("TORVIKsetCounterFreqMode", writes(TORVIKsetCounterFreqMode, 1, 5U, 0xFEDCBA98U),
               "85 6A 15 FE DC BA 98"),
        getter("TORVIKreadAnalogueFilter", reads<u32>(TORVIKreadAnalogueFilter), "81 90 00", {0xFE, 0xDC, 0xFF, 0xFF},
               show(0xFEDC)),
        setter("TORVIKwriteAnalogueFilter", writes(TORVIKwriteAnalogueFilter, 0x12345), "82 91 23 45")
            .atNumberForty({0, code::parameterExceedance})
            .whenInactive({0, code::notActive}),
    };
}

std::vector<RefusedCall> rateCallsRefused() {
    return {
        beforeActivity("getFrequencyNull", writes(TORVIKgetFrequency, nullptr)),
        beforeActivity("getCounterFreqModeInput3", reads<u32>(TORVIKgetCounterFreqMode, 3, 0U)),
        beforeActivity("getCounterFreqModeInputLargest", reads<u32>(TORVIKgetCounterFreqMode, INT_MAX, 0U)),
        beforeActivity("getCounterFreqModeSub16", reads<u32>(TORVIKgetCounterFreqMode, 0, 16U)),
        beforeActivity("getCounterFreqModeSubLargest", reads<u32>(TORVIKgetCounterFreqMode, 0, UINT_MAX)),
        beforeActivity("getCounterFreqModeNull", writes(TORVIKgetCounterFreqMode, 0, 0U, nullptr)),
        beforeActivity("setCounterFreqModeInput3", writes(TORVIKsetCounterFreqMode, 3, 1U, 0U)),
        beforeActivity("setCounterFreqModeInputLargest", writes(TORVIKsetCounterFreqMode, INT_MAX, 1U, 0U)),
        beforeActivity("setCounterFreqModeSub16", writes(TORVIKsetCounterFreqMode, 0, 16U, 0U)),
        beforeActivity("setCounterFreqModeSubLargest", writes(TORVIKsetCounterFreqMode, 0, UINT_MAX, 0U)),
        beforeActivity("readAnalogueFilterNull", writes(TORVIKreadAnalogueFilter, nullptr)),
    };
}

std::vector<AcceptedCall> rateCallsAccepted() {
    return {
        {"getCounterFreqModeInput0Sub0", reads<u32>(TORVIKgetCounterFreqMode, 0, 0U), "81 69 00"},
        {"getCounterFreqModeInputMinus1", reads<u32>(TORVIKgetCounterFreqMode, -1, 3U), "81 69 F3"},
        {"getCounterFreqModeInputSmallest", reads<u32>(TORVIKgetCounterFreqMode, INT_MIN, 3U), "81 69 03"},
        {"setCounterFreqModeInput2Sub15", writes(TORVIKsetCounterFreqMode, 2, 15U, 1U), "85 6A 2F 00 00 00 01"},
        {"setCounterFreqModeInput0Sub0", writes(TORVIKsetCounterFreqMode, 0, 0U, 1U), "85 6A 00 00 00 00 01"},
        {"setCounterFreqModeInputMinus2", writes(TORVIKsetCounterFreqMode, -2, 1U, 1U), "85 6A E1 00 00 00 01"},
        {"setFrequency0", writes(TORVIKsetFrequency, 0.0), "84 8B 00 00 00 00"},
        {"setFrequencyMinus1", writes(TORVIKsetFrequency, -1.0), "84 8B BF 80 00 00"},
        {"writeAnalogueFilterMinus1", writes(TORVIKwriteAnalogueFilter, -1), "82 91 FF FF"},
        {"writeAnalogueFilter0", writes(TORVIKwriteAnalogueFilter, 0), "82 91 00 00"},
    };
}

}  // namespace

ExportFamily rateExports() {
    return {rateRows(), rateCallsRefused(), rateCallsAccepted()};
}

}  // namespace torvik::test
