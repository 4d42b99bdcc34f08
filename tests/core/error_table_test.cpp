#include "core/error_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

namespace torvik {
namespace {

struct Told {
    std::uint32_t code;
    const char* text;
};

// What a caller reads for every code there is a row for.
constexpr Told toldTexts[] = {
    {0xE1, "TORVIKLIB: error while reading device [225]"},
    {0xF1, "TORVIKLIB: wrong adapter handle [241]"},
    {0xF2, "TORVIKLIB: wrong baudrate [242]"},
    {0xF3, "TORVIKLIB: the handle for the device is already init [243]"},
    {0xF4, "TORVIKLIB: error while init the device handle [244]"},
    {0xF5, "TORVIKLIB: getting device stucture failed [245]"},
    {0xF6, "TORVIKLIB: setting active chanels failed [246]"},
    {0xF7, "TORVIKLIB: the devicetype is unknown [247]"},
    {0xF8, "TORVIKLIB: setting wrong identifier for response [248]"},
    {0xF9, "TORVIKLIB: error while getting CAN identifier [249]"},
    {0x20000000, "TORVIKLIB: wrong error mask [536870912]"},
    {0x300000F3, "TORVIKLIB: memory allocation request refused by OS [805306611]"},
    {0x30000100, "TORVIKLIB: function parameter exceedance [805306624]"},
    {0x30000060, "VARDA Device: VARDA sended wrong command answer [805306464]"},
    {0x30000062, "VARDA Device: VARDA Firmware doesn't support the request [805306466]"},
    {0x30000063, "VARDA Device: VARDA dataformat is no set [805306467]"},
    {0x30000064, "TORVIKLIB: selected frequency ist out of range [805306468]"},
    {0x30000101, "TORVIKLIB: invalid devicehandle [805306625]"},
    {0x30000105, "TORVIKLIB:  internal function call failed [805306629]"},
    {0x30000065, "VARDA Device: parameter is not stored (correctly) in the device memory [805306469]"},
    {0x30000106, "TORVIKLIB: error while reading can data buffer [805306630]"},
    {0x30000108, "TORVIKLIB: file passen by user has error in content [805306632]"},
    {0x30000109, "TORVIKLIB: error while starting thread [805306633]"},
    {0x30000110, "TORVIKLIB: error while stopping thread [805306640]"},
    {0x30000111, "TORVIKLIB: error while starting mutex [805306641]"},
    {0x30000112, "TORVIKLIB: error or timeput while acquiring mutex [805306642]"},
    {0x40, "CAN Adapter: receive queue was read too late [64]"},
    {0x41, "VARDA Device: command not implemented [65]"},
    {0x42, "VARDA Device: wrong suffix [66]"},
    {0x50, "VARDA Device: wrong parameter [80]"},
    {0x51, "VARDA Device: wrong index or adressparameter [81]"},
    {0x52, "VARDA Device: wrong dataparameter [82]"},
    {0x53, "VARDA Device: wrong bits in paramter [83]"},
    {0x54, "VARDA Device: parameter too big (in absolut) [84]"},
    {0x55, "VARDA Device: parameter too small (in absolut) [85]"},
    {0x56, "VARDA Device: wrong parameter combination [86]"},
    {0x57, "VARDA Device: parameter too big (in relation) [87]"},
    {0x58, "VARDA Device: parameter too small (in relation) [88]"},
    {0x59, "VARDA Device: paramter no implemented [89]"},
    {0x5A, "VARDA Device: wrong timeout parameter [90]"},
    {0x5B, "VARDA Device: wrong parameter number [91]"},
    {0x6E, "VARDA Device: wrong condition - memory access denied [110]"},
    {0x6F, "VARDA Device: memory access denied [111]"},
    {0x70, "VARDA Device: access denied [112]"},
    {0x71, "VARDA Device: access denied - blocking aktive [113]"},
    {0x72, "VARDA Device: access denied - password is missing or wrong [114]"},
    {0x74, "VARDA Device: access denied - max. tryouts reached [116]"},
    {0x75, "VARDA Device: access denied - no writing access for the port [117]"},
    {0x80, "CAN Adapter: transmit queue is full [128]"},
    {0x81, "VARDA Device: internal arithmetic error [129]"},
    {0x82, "VARDA Device: ADC full of mistakes [130]"},
    {0x83, "VARDA Device: measured value not qualified [131]"},
    {0x84, "VARDA Device: EEPROM full of mistakes [132]"},
    {0x91, "VARDA Device: full transmitbuffer [145]"},
    {0x92, "VARDA Device: CPU busy [146]"},
    {0x99, "VARDA Device: full receivebuffer [153]"},
    {0x1, "CAN Adapter: Transmit buffer in CAN controller is full [1]"},
    {0x2, "CAN Adapter: CAN controller was read too late [2]"},
    {0x4, "CAN Adapter: Bus error: an error counter reached the 'light' limit [4]"},
    {0x8, "CAN Adapter: Bus error: an error counter reached the 'heavy' limit [8]"},
    {0x10, "CAN Adapter: Bus error: the CAN controller is in bus-off state [16]"},
    {0x4001C, "CAN Adapter: mask for all bus errors [262172]"},
    {0x20, "CAN Adapter: receive queue is empty [32]"},
    {0x100, "CAN Adapter: test of the CAN controller hardware registers failed (no hardware found) [256]"},
    {0x200, "CAN Adapter: driver not loaded [512]"},
    {0x400, "CAN Adapter: hardware already in use by a Net [1024]"},
    {0x800, "CAN Adapter: a client is already connected to the Net [2048]"},
    {0x1400, "CAN Adapter: hardware handle is invalid [5120]"},
    {0x1800, "CAN Adapter: net handle is invalid [6144]"},
    {0x1C00, "CAN Adapter: mask for all handle errors [7168]"},
    {0x2000, "CAN Adapter: resource (FIFO, Client, timeout) cannot be created [8192]"},
    {0x4000, "CAN Adapter: invalid parameter [16384]"},
    {0x8000, "CAN Adapter: invalid parameter value [32768]"},
    {0x10000, "CAN Adapter: unknow error [65536]"},
    {0x20000, "CAN Adapter: invalid data, function, or action [131072]"},
    {0x4000000, "CAN Adapter: channel is not initialized [67108864]"},
    {0x8000000, "CAN Adapter: invalid operation [134217728]"},
    {0xD1, "TORVIKLIB: error while setting baudrate [209]"},
    {0xD2, "TORVIKLIB: error while initializing devicestack [210]"},
    {0xD3, "TORVIKLIB: error while initializing devicestack [211]"},
    {0xD4, "TORVIKLIB: error while extracting CAN messages [212]"},
    {0xD5, "TORVIKLIB: error while reading active channel count [213]"},
    {0xD6, "TORVIKLIB: error while setting active channel count [214]"},
    {0xD7, "TORVIKLIB: error while reading last error [215]"},
    {0xD8, "TORVIKLIB: error while setting last error [216]"},
    {0xD9, "TORVIKLIB: error while reading value count [217]"},
    {0xDA, "TORVIKLIB: error while reading single data [218]"},
    {0xDB, "TORVIKLIB: error while setting tranmit active [219]"},
    {0xDC, "TORVIKLIB: error while setting tranmit inactive [220]"},
    {0xDD, "TORVIKLIB: error while getting request receive [221]"},
    {0xDE, "TORVIKLIB: error while reseting device [222]"},
    {0xDF, "TORVIKLIB: error while writing device [223]"},
    {0xE2, "TORVIKLIB: error while reading formated error [226]"},
    {0xE3, "TORVIKLIB: error while initializing events [227]"},
    {0xE4, "TORVIKLIB: error while getting response [228]"},
    {0xE5, "TORVIKLIB: error while clearing buffer [229]"},
    {0xE6, "TORVIKLIB: error while setting device data type [230]"},
    {0xE7, "TORVIKLIB: error while resetting last error [231]"},
    {0xE8, "TORVIKLIB: error while getting buffer readposition [232]"},
    {0xE9, "TORVIKLIB: error while getting buffer readposition [233]"},
    {0xEB, "TORVIKLIB: timeout while waiting for other cmd to finish [235]"},
    {0x30000113, "TORVIKLIB: requested ressource not initialized [805306643]"},
    {0x30000058, "TORVIKLIB: Command response from device timed out [805306456]"},
    {0x5C, "VARDA Device: Parameter improper with respect to device settings [92]"},
    {0x5D, "VARDA Device: Function leads to hardware (connection) collision, e.g. short-circuit [93]"},
    {0x60, "VARDA Device: Requested data not available (e.g. not initiated) [96]"},
    {0x61, "VARDA Device: Data stored not consistent in itself or with parameters [97]"},
    {0x62, "VARDA Device: Command could not be executed, because device or functionality in improper state [98]"},
    {0x63, "VARDA Device: Denied, because requested functionality not supported [99]"},
    {0x64, "VARDA Device: Denied, because data rate too high for requested setting [100]"},
    {0x76, "VARDA Device: Write access not allowed [118]"},
    {0x30000114, "TORVIKLIB: CAN-ID already in use [805306644]"},
};

std::string textOf(std::uint32_t code) {
    std::array<char, 128> text{};
    formatError(code, text);
    return text.data();
}

TEST(ErrorTable, TellsTheTextOfEveryRow) {
    for (const Told& told : toldTexts)
        EXPECT_EQ(textOf(told.code), told.text);
}

TEST(ErrorTable, HasNoRowForAnyOtherCode) {
    EXPECT_EQ(errorRows().size(), 116U);
    for (const ErrorRow& row : errorRows())
        EXPECT_NE(std::ranges::find(toldTexts, row.code, &Told::code), std::end(toldTexts)) << row.text;
}

TEST(ErrorTable, TellsTheLastRowOfACodeThatStandsTwice) {
    EXPECT_EQ(textOf(0xE1), "TORVIKLIB: error while reading device [225]");
    EXPECT_EQ(textOf(0x40), "CAN Adapter: receive queue was read too late [64]");
    EXPECT_EQ(textOf(0x80), "CAN Adapter: transmit queue is full [128]");
    EXPECT_EQ(textOf(0x1C00), "CAN Adapter: mask for all handle errors [7168]");
}

TEST(ErrorTable, NamesAnUnknownCodeInHexadecimal) {
    EXPECT_EQ(textOf(0x12345678), "Unknown Error. Code: 0x12345678");
    EXPECT_EQ(textOf(0xABCDEF01), "Unknown Error. Code: 0xABCDEF01");
}

TEST(ErrorTable, CutsATextThatIsTooLongAndTerminatesIt) {
    std::array<char, 12> text{};
    text.fill('#');
    formatError(0xEB, std::span(text).first<11>());
    EXPECT_STREQ(text.data(), "TORVIKLIB:");
    EXPECT_EQ(text.back(), '#');
}

TEST(ErrorTable, CutsTheTextOfAnUnknownCodeToo) {
    std::array<char, 9> text{};
    text.fill('#');
    formatError(0x12345678, std::span(text).first<8>());
    EXPECT_STREQ(text.data(), "Unknown");
    EXPECT_EQ(text.back(), '#');
}

TEST(ErrorTable, WritesNothingButTheTerminatorWhereOnlyThatFits) {
    std::array<char, 2> text{'#', '#'};
    formatError(0xEB, std::span(text).first<1>());
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], '#');
}

}  // namespace
}  // namespace torvik
