#include <cmath>
#include <functional>

#include "TORVIK.h"
#include "params/export_tables.h"

namespace torvik::test {

namespace {

using u8 = std::uint8_t;
using u32 = std::uint32_t;

std::vector<ExportRow> scalingRows() {
    return {
        setter("TORVIKsetZero", writes(TORVIKsetZero, 3U), "81 0C 03"),
        setter("TORVIKwriteZero", writes(TORVIKwriteZero, 3U, 0x01020304), "85 03 03 01 02 03 04"),
        getter("TORVIKreadZero", reads<u32>(TORVIKreadZero, 3U), "81 02 03", {0xFE, 0xDC, 0xBA, 0x98},
               show(0xFEDCBA98)),
        getter("TORVIKreadAoutOffset", reads<double>(TORVIKreadAoutOffset, 3U), "81 04 03", {0x40, 0x20, 0x00, 0x00},
               show(2.5)),
        restartingSetter("TORVIKwriteAoutOffset", writes(TORVIKwriteAoutOffset, 3U, -2.5), "85 05 03 C0 20 00 00"),
        getter("TORVIKreadAoutScale", reads<double>(TORVIKreadAoutScale, 3U), "81 06 03", {0x40, 0x20, 0x00, 0x00},
               show(2.5)),
        setter("TORVIKwriteAoutScale", writes(TORVIKwriteAoutScale, 3U, 1.0), "85 07 03 3F 80 00 00"),
        setter("TORVIKwriteAoutDirect", writes(TORVIKwriteAoutDirect, 3U, 0x12345), "83 08 03 23 45"),
        getter("TORVIKgetAoutType", reads<u8, u8>(TORVIKgetAoutType, 3U), "81 0D 03", {0xB0, 0xA0}, show(0xA0, 0xB0)),
        restartingSetter("TORVIKsetAoutType", writes(TORVIKsetAoutType, 3U, u8{0xA0}, u8{0xB0}), "83 0E 03 A0 B0"),
        getter("TORVIKreadUserOffset", reads<double>(TORVIKreadUserOffset, 3U), "81 9A 03", {0x40, 0x20, 0x00, 0x00},
               show(2.5)),
        setter("TORVIKwriteUserOffset", writes(TORVIKwriteUserOffset, 3U, -2.5), "85 9B 03 C0 20 00 00"),
        getter("TORVIKreadUserScale", reads<double>(TORVIKreadUserScale, 3), "81 14 03", {0x40, 0x20, 0x00, 0x00},
               show(2.5))
            .atNumberForty({0, code::none})
            .withoutActivityCheck(),
        setter("TORVIKwriteUserScale", writes(TORVIKwriteUserScale, 3U, -2.5), "85 15 03 C0 20 00 00"),
        getter("TORVIKgetNoiseCutThreshold", reads<double>(TORVIKgetNoiseCutThreshold, 3U), "81 94 03",
               {0x40, 0x20, 0x00, 0x00}, show(2.5)),
        setter("TORVIKsetNoiseCutThreshold", writes(TORVIKsetNoiseCutThreshold, 3U, -2.5), "85 95 03 C0 20 00 00"),
        {.name = "TORVIKreadMaxMinVal",
         .call = reads<double, double>(TORVIKreadMaxMinVal, 3U),
         .sent = {"81 53 03"},
         .answers = {accepts(0x53, {0x3F, 0x80, 0x00, 0x00}), accepts(0x53, {0x40, 0x20, 0x00, 0x00})},
         .output = show(2.5, 0.0)},
    };
}

using OfChannel = std::function<Call(u32 channel)>;

struct Member {
    const char* name;
    OfChannel call;
    std::string header;     // of the frame, up to the channel
    std::string rest = {};  // behind it
};

// Reading takes the channels 1..8.
const std::vector<Member>& getters() {
    static const std::vector<Member> members = {
        {"readZero", [](u32 c) { return reads<u32>(TORVIKreadZero, c); }, "81 02 "},
        {"readAoutOffset", [](u32 c) { return reads<double>(TORVIKreadAoutOffset, c); }, "81 04 "},
        {"readAoutScale", [](u32 c) { return reads<double>(TORVIKreadAoutScale, c); }, "81 06 "},
        {"getAoutType", [](u32 c) { return reads<u8, u8>(TORVIKgetAoutType, c); }, "81 0D "},
        {"readUserOffset", [](u32 c) { return reads<double>(TORVIKreadUserOffset, c); }, "81 9A "},
        {"getNoiseCutThreshold", [](u32 c) { return reads<double>(TORVIKgetNoiseCutThreshold, c); }, "81 94 "},
        {"readMaxMinVal", [](u32 c) { return reads<double, double>(TORVIKreadMaxMinVal, c); }, "81 53 "},
    };
    return members;
}

// Writing takes 0..8. TORVIKwriteUserScale refuses in its own way.
const std::vector<Member>& setters() {
    static const std::vector<Member> members = {
        {"setZero", [](u32 c) { return writes(TORVIKsetZero, c); }, "81 0C "},
        {"writeZero", [](u32 c) { return writes(TORVIKwriteZero, c, -1); }, "85 03 ", " FF FF FF FF"},
        {"writeAoutOffset", [](u32 c) { return writes(TORVIKwriteAoutOffset, c, 1.0); }, "85 05 ", " 3F 80 00 00"},
        {"writeAoutScale", [](u32 c) { return writes(TORVIKwriteAoutScale, c, 1.0); }, "85 07 ", " 3F 80 00 00"},
        {"writeAoutDirect", [](u32 c) { return writes(TORVIKwriteAoutDirect, c, -2); }, "83 08 ", " FF FE"},
        {"setAoutType", [](u32 c) { return writes(TORVIKsetAoutType, c, u8{1}, u8{2}); }, "83 0E ", " 01 02"},
        {"writeUserOffset", [](u32 c) { return writes(TORVIKwriteUserOffset, c, 1.0); }, "85 9B ", " 3F 80 00 00"},
        {"setNoiseCutThreshold", [](u32 c) { return writes(TORVIKsetNoiseCutThreshold, c, 1.0); }, "85 95 ",
         " 3F 80 00 00"},
    };
    return members;
}

std::vector<RefusedCall> scalingCallsRefused() {
    std::vector<RefusedCall> calls;
    for (const Member& member : getters()) {
        for (const u32 channel : {0U, 9U, 257U})
            calls.push_back(afterActivity(member.name + ("Channel" + show(channel)), member.call(channel)));
    }
    for (const Member& member : setters()) {
        for (const u32 channel : {9U, 256U})
            calls.push_back(afterActivity(member.name + ("Channel" + show(channel)), member.call(channel)));
    }
    const std::vector<RefusedCall> others = {
        afterActivity("readZeroNull", writes(TORVIKreadZero, 1U, nullptr)),
        afterActivity("readAoutOffsetNull", writes(TORVIKreadAoutOffset, 1U, nullptr)),
        afterActivity("readAoutScaleNull", writes(TORVIKreadAoutScale, 1U, nullptr)),
        afterActivity("getAoutTypeFirstNull", reads<u8>(TORVIKgetAoutType, 1U, nullptr)),
        afterActivity("getAoutTypeSecondNull",
                      [](std::int32_t deviceNo) {
                          u8 typeA = 0xEE;
                          const auto result = TORVIKgetAoutType(deviceNo, 1, &typeA, nullptr);
                          return Outcome{result, "", typeA == 0xEE};
                      }),
        afterActivity("readUserOffsetNull", writes(TORVIKreadUserOffset, 1U, nullptr)),
        afterActivity("getNoiseCutThresholdNull", writes(TORVIKgetNoiseCutThreshold, 1U, nullptr)),
        afterActivity("readMaxMinValFirstNull", reads<double>(TORVIKreadMaxMinVal, 1U, nullptr)),
        afterActivity("readMaxMinValSecondNull",
                      [](std::int32_t deviceNo) {
                          double value = -77.25;
                          const auto result = TORVIKreadMaxMinVal(deviceNo, 1, &value, nullptr);
                          return Outcome{result, "", value == -77.25};
                      }),
    };
    calls.insert(calls.end(), others.begin(), others.end());
    // Reading the user scale does not know of activity; both give 0.
    constexpr Refusal zero{0, code::parameterExceedance};
    for (const std::int32_t channel : {0, 9, 257, -1}) {
        calls.push_back({"readUserScaleChannel" + std::string(channel < 0 ? "Minus1" : show(channel)),
                         reads<double>(TORVIKreadUserScale, channel), zero, zero});
    }
    calls.push_back({"readUserScaleNull", writes(TORVIKreadUserScale, 1, nullptr), zero, zero});
    for (const u32 channel : {9U, 256U}) {
        calls.push_back({"writeUserScaleChannel" + show(channel),
                         writes(TORVIKwriteUserScale, channel, 1.0),
                         zero,
                         {-1, code::notActive}});
    }
    return calls;
}

std::vector<AcceptedCall> scalingCallsAccepted() {
    std::vector<AcceptedCall> calls;
    for (const Member& member : getters()) {
        for (const u32 channel : {1U, 8U}) {
            const std::string number = show(channel);
            calls.push_back({member.name + ("Channel" + number), member.call(channel), member.header + "0" + number});
        }
    }
    for (const Member& member : setters()) {
        for (const u32 channel : {0U, 8U}) {
            const std::string number = show(channel);
            calls.push_back(
                {member.name + ("Channel" + number), member.call(channel), member.header + "0" + number + member.rest});
        }
    }
    const std::vector<AcceptedCall> others = {
        {"readUserScaleChannel1", reads<double>(TORVIKreadUserScale, 1), "81 14 01"},
        {"readUserScaleChannel8", reads<double>(TORVIKreadUserScale, 8), "81 14 08"},
        {"writeUserScaleChannel0", writes(TORVIKwriteUserScale, 0U, 1.0), "85 15 00 3F 80 00 00"},
        {"writeUserScaleChannel8", writes(TORVIKwriteUserScale, 8U, 1.0), "85 15 08 3F 80 00 00"},
        {"writeUserScaleRoundedToSingle", writes(TORVIKwriteUserScale, 1U, 0.1), "85 15 01 3D CC CC CD"},
        {"writeUserOffsetInfinite", writes(TORVIKwriteUserOffset, 1U, HUGE_VAL), "85 9B 01 7F 80 00 00"},
        {"writeUserOffsetBeyondSingle", writes(TORVIKwriteUserOffset, 1U, -1e300), "85 9B 01 FF 80 00 00"},
    };
    calls.insert(calls.end(), others.begin(), others.end());
    return calls;
}

}  // namespace

ExportFamily scalingExports() {
    return {scalingRows(), scalingCallsRefused(), scalingCallsAccepted()};
}

}  // namespace torvik::test
