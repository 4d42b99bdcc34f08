#include "TORVIK.h"
#include "params/export_tables.h"

namespace torvik::test {

namespace {

using u8 = std::uint8_t;
using u32 = std::uint32_t;

Call setId(std::array<u8, 4> code) {
    return [=](std::int32_t deviceNo) {
        std::array<u8, 4> bytes = code;
        return Outcome{TORVIKsetID(deviceNo, bytes.data()), ""};
    };
}

std::vector<ExportRow> canRows() {
    return {
        getter("TORVIKgetCANSettings", reads<u32>(TORVIKgetCANSettings, u8{2}), "81 8C 02", {0xFE, 0xDC, 0xBA, 0x98},
               show(0xFEDCBA98)),
        setter("TORVIKsetCANSettings", writes(TORVIKsetCANSettings, u8{2}, 0x01020304), "85 8D 02 01 02 03 04"),
        setter("TORVIKsetID", setId({0x11, 0x22, 0x33, 0x44}), "84 19 11 22 33 44"),
        getter("TORVIKgetIDState", reads<u8>(TORVIKgetIDState), "80 1A", {0xA5, 0xFF, 0xFF}, show(0xA5)),
        getter("TORVIKgetTXMapping", reads<u32>(TORVIKgetTXMapping, u8{3}), "81 49 03", {0x01, 0x23}, show(0x00010203)),
        setter("TORVIKsetTXMapping", writes(TORVIKsetTXMapping, u8{3}, 0x1234), "83 4A 03 12 34")
            .whenUnanswered(code::answerTimeout),
    };
}

std::vector<RefusedCall> canCallsRefused() {
    return {
        beforeActivity("getCANSettingsNull", writes(TORVIKgetCANSettings, u8{0}, nullptr)),
        beforeActivity("setIDNull", writes(TORVIKsetID, nullptr)),
        beforeActivity("getIDStateNull", writes(TORVIKgetIDState, nullptr)),
        beforeActivity("getTXMappingIndex17", reads<u32>(TORVIKgetTXMapping, u8{17})),
        beforeActivity("getTXMappingIndex255", reads<u32>(TORVIKgetTXMapping, u8{255})),
        beforeActivity("getTXMappingNull", writes(TORVIKgetTXMapping, u8{0}, nullptr)),
        beforeActivity("setTXMappingIndex17", writes(TORVIKsetTXMapping, u8{17}, 1)),
        beforeActivity("setTXMappingIndex255", writes(TORVIKsetTXMapping, u8{255}, 1)),
        beforeActivity("setTXMapping0And0", writes(TORVIKsetTXMapping, u8{0}, 0)),
    };
}

std::vector<AcceptedCall> canCallsAccepted() {
    return {
        {"getCANSettingsIndex255", reads<u32>(TORVIKgetCANSettings, u8{255}), "81 8C FF"},
        {"setCANSettingsIndex255", writes(TORVIKsetCANSettings, u8{255}, -2), "85 8D FF FF FF FF FE"},
        {"setCANSettingsIndex0", writes(TORVIKsetCANSettings, u8{0}, 0), "85 8D 00 00 00 00 00"},
        {"getTXMappingIndex0", reads<u32>(TORVIKgetTXMapping, u8{0}), "81 49 00"},
        {"getTXMappingIndex16", reads<u32>(TORVIKgetTXMapping, u8{16}), "81 49 10"},
        {"setTXMappingIndex1Value0", writes(TORVIKsetTXMapping, u8{1}, 0), "83 4A 01 00 00"},
        {"setTXMappingIndex16", writes(TORVIKsetTXMapping, u8{16}, -1), "83 4A 10 FF FF"},
        {"setTXMappingIndex0Value1", writes(TORVIKsetTXMapping, u8{0}, 1), "83 4A 00 00 01"},
        {"setTXMappingOnlyLow16BitsAreSent", writes(TORVIKsetTXMapping, u8{2}, 0x12345), "83 4A 02 23 45"},
    };
}

}  // namespace

ExportFamily canExports() {
    return {canRows(), canCallsRefused(), canCallsAccepted()};
}

}  // namespace torvik::test
