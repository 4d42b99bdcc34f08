#include "TORVIK.h"
#include "params/export_tables.h"

namespace torvik::test {

namespace {

using u8 = std::uint8_t;
using u32 = std::uint32_t;

Call commandAvailable(u8 first, u8 second) {
    return [=](std::int32_t deviceNo) {
        std::array<u8, 2> query{first, second};
        return Outcome{TORVIKgetCommandAvailable(deviceNo, query.data()), ""};
    };
}

Call switchBlocking(std::array<u8, 4> value) {
    return [=](std::int32_t deviceNo) {
        std::array<u8, 4> bytes = value;
        return Outcome{TORVIKswitchBlocking(deviceNo, bytes.data()), ""};
    };
}

// Reads one word; the bytes behind it belong to the caller.
Call tedsWord(u32 selector, std::int32_t length, u32 offset) {
    return [=](std::int32_t deviceNo) {
        constexpr std::array<u8, 5> before{0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
        std::array<u8, 5> bytes = before;
        const std::int32_t result = TORVIKreadTEDSrawData(deviceNo, selector, bytes.data(), length, offset);
        return Outcome{result, show(bytes[0], bytes[1], bytes[2], bytes[3], bytes[4]), bytes == before};
    };
}

std::vector<ExportRow> identityRows() {
    return {
        getter("TORVIKgetSerialNo", reads<u32>(TORVIKgetSerialNo), "80 1F", {0xFE, 0xDC, 0xBA, 0x98}, show(0xFEDCBA98)),
        setter("TORVIKsetSerialNo", writes(TORVIKsetSerialNo, 0x01020304), "84 20 01 02 03 04"),
        getter("TORVIKgetTXmode", reads<u32>(TORVIKgetTXmode, u8{0}), "81 80 00", {0xFE, 0xDC, 0xBA, 0x98},
               show(0xFEDC)),
        setter("TORVIKsetTXmode", writes(TORVIKsetTXmode, 1U, 0x12345), "83 81 01 23 45"),
        getter("TORVIKgetMode", reads<u32>(TORVIKgetMode), "80 26", {0xFE, 0xDC, 0xBA, 0x98}, show(0xFEDCBA98))
            .whenRefused(code::internalCallFailed),
        restartingSetter("TORVIKsetMode", writes(TORVIKsetMode, -2), "84 27 FF FF FF FE"),
        getter("TORVIKgetFirmwareVersion", reads<u32>(TORVIKgetFirmwareVersion), "80 2B", {0x00, 0x03, 0x00, 0x0B},
               show(0x0003000B))
            .atNumberForty({-1, code::wrongFrameArguments})
            .withoutActivityCheck(),
        getter("TORVIKgetHardwareVersion", reads<u32>(TORVIKgetHardwareVersion), "80 36", {0xFE, 0xDC, 0xBA, 0x98},
               show(0xFEDCBA98)),
        getter("TORVIKgetSoftwareConfiguration", reads<u32>(TORVIKgetSoftwareConfiguration), "80 2A",
               {0xFE, 0xDC, 0xBA, 0x98}, show(0xFEDCBA98)),
        setter("TORVIKgetCommandAvailable", commandAvailable(0xA3, 0x01), "82 93 A3 01"),
        setter("TORVIKswitchBlocking", switchBlocking({0x44, 0x33, 0x22, 0x11}), "84 92 11 22 33 44"),
        restartingSetter("TORVIKloadSettings", writes(TORVIKloadSettings, 2U), "81 09 02")
            .atNumberForty({-1, code::none})
            .whenInactive({-1, code::none}),
        setter("TORVIKstoreSettings", writes(TORVIKstoreSettings, u8{3}), "81 0A 03"),
        {.name = "TORVIKresetDevice",
         .call = writes(TORVIKresetDevice),
         .sent = {"80 78", "80 24"},
         .answers = {accepts(0x24)},
         .output = "",
         .answered = false},
        getter("TORVIKreadDeviceHours", reads<double>(TORVIKreadDeviceHours, u8{1}), "81 56 01",
               {0x44, 0x9A, 0x50, 0x00}, show(1234.5)),
        setter("TORVIKwriteDeviceHours", writes(TORVIKwriteDeviceHours, 1234.5), "84 57 44 9A 50 00"),
        getter("TORVIKgetTEDSactive", reads<u32>(TORVIKgetTEDSactive, 0U), "80 68", {0xFE, 0xDC, 0xBA, 0x98},
               show(0xFEDCBA98)),
        getter("TORVIKreadTEDSrawData", tedsWord(0x1FE, 4, 0x408), "83 65 FE 01 02", {1, 2, 3, 4, 5, 6},
               show(1, 2, 3, 4, 0xEE)),
    };
}

std::vector<RefusedCall> identityCallsRefused() {
    const auto teds = [](const char* name, std::int32_t length, u32 offset) {
        return beforeActivity(name, tedsWord(0, length, offset));
    };
    return {
        afterActivity("getSerialNoNull", writes(TORVIKgetSerialNo, nullptr)),
        afterActivity("setSerialNo0", writes(TORVIKsetSerialNo, 0)),
        afterActivity("getTXmodeNull", writes(TORVIKgetTXmode, u8{0}, nullptr)),
        afterActivity("setTXmodeIndex2", writes(TORVIKsetTXmode, 2U, 1)),
        afterActivity("setTXmodeIndex256", writes(TORVIKsetTXmode, 256U, 1)),
        afterActivity("getModeNull", writes(TORVIKgetMode, nullptr)),
        beforeActivity("getFirmwareVersionNull", writes(TORVIKgetFirmwareVersion, nullptr)),
        afterActivity("getHardwareVersionNull", writes(TORVIKgetHardwareVersion, nullptr)),
        afterActivity("getSoftwareConfigurationNull", writes(TORVIKgetSoftwareConfiguration, nullptr)),
        afterActivity("getCommandAvailableNull", writes(TORVIKgetCommandAvailable, nullptr)),
        afterActivity("switchBlockingNull", writes(TORVIKswitchBlocking, nullptr)),
        afterActivity("readDeviceHoursNull", writes(TORVIKreadDeviceHours, u8{0}, nullptr)),
        {"getTEDSactiveNullGives0",
         writes(TORVIKgetTEDSactive, 0U, nullptr),
         {0, code::parameterExceedance},
         {-1, code::notActive}},
        beforeActivity("readTEDSrawDataNull", writes(TORVIKreadTEDSrawData, 0U, nullptr, 4, 0U)),
        teds("readTEDSrawDataLength0", 0, 0),
        teds("readTEDSrawDataLengthMinus1", -1, 0),
        teds("readTEDSrawDataOffset1", 4, 1),
        teds("readTEDSrawDataOffset2", 4, 2),
        teds("readTEDSrawDataOffset3", 4, 3),
        teds("readTEDSrawDataOffsetMinus4", 4, 0xFFFFFFFC),
        teds("readTEDSrawDataSmallestOffset", 4, 0x80000000),
    };
}

std::vector<AcceptedCall> identityCallsAccepted() {
    return {
        {"setSerialNo1", writes(TORVIKsetSerialNo, 1), "84 20 00 00 00 01"},
        {"setSerialNoMinus1", writes(TORVIKsetSerialNo, -1), "84 20 FF FF FF FF"},
        {"getTXmodeIndex2", reads<u32>(TORVIKgetTXmode, u8{2}), "81 80 02"},
        {"getTXmodeIndex255", reads<u32>(TORVIKgetTXmode, u8{255}), "81 80 FF"},
        {"setTXmodeIndex0", writes(TORVIKsetTXmode, 0U, -1), "83 81 00 FF FF"},
        {"setMode0", writes(TORVIKsetMode, 0), "84 27 00 00 00 00"},
        {"loadSettings0", writes(TORVIKloadSettings, 0U), "81 09 00"},
        {"loadSettings255", writes(TORVIKloadSettings, 255U), "81 09 FF"},
        {"loadSettings0x103", writes(TORVIKloadSettings, 0x103U), "81 09 03"},
        {"storeSettings0", writes(TORVIKstoreSettings, u8{0}), "81 0A 00"},
        {"storeSettings255", writes(TORVIKstoreSettings, u8{255}), "81 0A FF"},
        {"readDeviceHoursIndex255", reads<double>(TORVIKreadDeviceHours, u8{255}), "81 56 FF"},
        {"writeDeviceHoursMinus1", writes(TORVIKwriteDeviceHours, -1.0), "84 57 BF 80 00 00"},
        {"getTEDSactiveBit33", reads<u32>(TORVIKgetTEDSactive, 33U), "80 68"},
        {"readTEDSrawDataLength1", tedsWord(0, 1, 0), "83 65 00 00 00"},
        {"readTEDSrawDataLargestOffset", tedsWord(0, 4, 0x7FFFFFFC), "83 65 00 FF FF"},
    };
}

}  // namespace

ExportFamily identityExports() {
    return {identityRows(), identityCallsRefused(), identityCallsAccepted()};
}

}  // namespace torvik::test
