#include <algorithm>
#include <climits>

#include "TORVIK.h"
#include "params/export_tables.h"

namespace torvik::test {

namespace {

using u32 = std::uint32_t;

Call unitText(u32 channel, std::int32_t mode) {
    return [=](std::int32_t deviceNo) {
        std::array<char, 10> text{};
        text.fill('~');
        const std::array<char, 10> before = text;
        const std::int32_t result = TORVIKgetUnitText(deviceNo, channel, mode, text.data());
        const std::string delivered(text.begin(), std::find(text.begin(), text.end(), '\0'));
        return Outcome{result, delivered, text == before};
    };
}

std::vector<ExportRow> unitRows() {
    return {
        getter("TORVIKgetUnitNo", reads<u32>(TORVIKgetUnitNo, 3), "81 0F 03", {33, 0xFF, 0xFF, 0xFF}, show(33)),
        setter("TORVIKsetUnitNo", writes(TORVIKsetUnitNo, 3U, 33U), "82 10 03 21"),
        getter("TORVIKgetUnitText", unitText(3, 0), "81 0F 03", {9}, "kN"),
        setter("TORVIKsetUnitText", writes(TORVIKsetUnitText, 3U, 0, "kN"), "82 10 03 09"),
    };
}

std::vector<RefusedCall> unitCallsRefused() {
    const auto setText = [](const char* name, u32 channel, std::int32_t mode, const char* text) {
        return beforeActivity(name, writes(TORVIKsetUnitText, channel, mode, text));
    };
    std::vector<RefusedCall> calls = {
        beforeActivity("getUnitNoChannel0", reads<u32>(TORVIKgetUnitNo, 0)),
        beforeActivity("getUnitNoChannel8", reads<u32>(TORVIKgetUnitNo, 8)),
        beforeActivity("getUnitNoChannelMinus1", reads<u32>(TORVIKgetUnitNo, -1)),
        beforeActivity("getUnitNoChannel257", reads<u32>(TORVIKgetUnitNo, 257)),
        beforeActivity("getUnitNoNull", writes(TORVIKgetUnitNo, 1, nullptr)),
        beforeActivity("setUnitNoChannel9", writes(TORVIKsetUnitNo, 9U, 1U)),
        beforeActivity("setUnitNoChannel256", writes(TORVIKsetUnitNo, 256U, 1U)),
        beforeActivity("setUnitNo256", writes(TORVIKsetUnitNo, 1U, 256U)),
        // The channel is looked at only when the device is to be asked for its unit.
        afterActivity("getUnitTextChannel0", unitText(0, 0)),
        afterActivity("getUnitTextChannel8", unitText(8, 0)),
        afterActivity("getUnitTextChannel257", unitText(257, 0)),
        beforeActivity("getUnitTextNull", writes(TORVIKgetUnitText, 1U, 0, nullptr)),
        beforeActivity("getUnitTextModeMinus1", unitText(1, -1)),
        beforeActivity("getUnitTextSmallestMode", unitText(1, INT_MIN)),
        beforeActivity("getUnitTextRequest3", unitText(1, 3)),
        beforeActivity("getUnitTextRequest16", unitText(1, 16)),
        beforeActivity("getUnitTextRequest255", unitText(1, 0x01FF)),
        setText("setUnitTextChannel9", 9, 0, "kN"),
        setText("setUnitTextChannel256", 256, 0, "kN"),
        setText("setUnitTextNull", 1, 0, nullptr),
        setText("setUnitTextModeMinus1", 1, -1, "kN"),
        setText("setUnitTextRequest19", 1, 19, "kN"),
        setText("setUnitTextRequest32", 1, 32, "kN"),
        setText("setUnitTextElevenCharacters", 1, 0, "elevenchars"),
        setText("setUnitTextElevenCharactersForUserText", 1, 1, "elevenchars"),
        // A text that is no unit, where only units will do.
        afterActivity("setUnitTextTableOnlyLbs", writes(TORVIKsetUnitText, 1U, 16, "Lbs")),
    };
    for (int request = 3; request <= 15; ++request) {
        const std::string name = "setUnitTextRequest" + show(request);
        calls.push_back(beforeActivity(name, writes(TORVIKsetUnitText, 1U, request, "kN")));
    }
    return calls;
}

std::vector<AcceptedCall> unitCallsAccepted() {
    return {
        {"getUnitNoChannel1", reads<u32>(TORVIKgetUnitNo, 1), "81 0F 01"},
        {"getUnitNoChannel7", reads<u32>(TORVIKgetUnitNo, 7), "81 0F 07"},
        {"setUnitNoChannel0", writes(TORVIKsetUnitNo, 0U, 0U), "82 10 00 00"},
        {"setUnitNoChannel8", writes(TORVIKsetUnitNo, 8U, 255U), "82 10 08 FF"},
        {"getUnitTextChannel1", unitText(1, 0), "81 0F 01"},
        {"getUnitTextChannel7", unitText(7, 0x7FFFFF00), "81 0F 07"},
        {"setUnitTextChannel0", writes(TORVIKsetUnitText, 0U, 0, "mV/V"), "82 10 00 00"},
        {"setUnitTextChannel8", writes(TORVIKsetUnitText, 8U, 0, "kWh"), "82 10 08 2E"},
        {"setUnitTextRequest16OfATableUnit", writes(TORVIKsetUnitText, 1U, 16, "kN"), "82 10 01 09"},
        {"setUnitTextTenCharacters", writes(TORVIKsetUnitText, 1U, 1, "abcdefghij"), "86 12 00 01 61 62 63 64"},
        {"setUnitTextEmpty", writes(TORVIKsetUnitText, 1U, 0, ""), "86 12 00 01 00 00 00 00"},
    };
}

}  // namespace

ExportFamily unitExports() {
    return {unitRows(), unitCallsRefused(), unitCallsAccepted()};
}

}  // namespace torvik::test
