#include "error_meanings.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace torvik::tool {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Not;

std::size_t rowsOf(ErrorKind kind, std::uint32_t code) {
    return static_cast<std::size_t>(std::ranges::count_if(
        errorRows(), [=](const ErrorRow& row) { return row.text && row.kind == kind && row.code == code; }));
}

std::size_t meaningsWith(std::span<const ErrorMeaning> meanings, std::uint32_t code) {
    return static_cast<std::size_t>(std::ranges::count(meanings, code, &ErrorMeaning::code));
}

auto told(ErrorKind kind, const char* text) {
    return AllOf(Field(&Explanation::kind, kind), Field(&Explanation::text, text),
                 Field(&Explanation::meaning, Not(IsEmpty())), Field(&Explanation::advice, Not(IsEmpty())));
}

TEST(ErrorMeanings, EveryRowOfTheErrorTableIsExplained) {
    for (const ErrorRow& row : errorRows()) {
        if (row.text == nullptr) continue;
        for (const Explanation& explanation : explain(row.code)) {
            EXPECT_FALSE(explanation.meaning.empty()) << std::hex << row.code;
            EXPECT_FALSE(explanation.advice.empty()) << std::hex << row.code;
        }
        EXPECT_FALSE(explain(row.code).empty()) << std::hex << row.code;
    }
}

TEST(ErrorMeanings, NothingIsExplainedThatTheErrorTableLacks) {
    for (const ErrorMeaning& meaning : libraryMeanings()) {
        EXPECT_EQ(meaningsWith(libraryMeanings(), meaning.code), rowsOf(ErrorKind::library, meaning.code))
            << std::hex << meaning.code;
    }
    for (const ErrorMeaning& meaning : deviceMeanings()) {
        EXPECT_EQ(meaningsWith(deviceMeanings(), meaning.code), rowsOf(ErrorKind::device, meaning.code))
            << std::hex << meaning.code;
    }
    for (const ErrorMeaning& meaning : adapterMeanings()) {
        EXPECT_EQ(meaningsWith(adapterMeanings(), meaning.code), rowsOf(ErrorKind::adapter, meaning.code))
            << std::hex << meaning.code;
    }
}

TEST(ErrorMeanings, SharedNumbersTellDeviceAndAdapter) {
    EXPECT_THAT(explain(0x40), ElementsAre(told(ErrorKind::device, "unknown command"),
                                           told(ErrorKind::adapter, "receive queue was read too late")));
    EXPECT_THAT(explain(0x80), ElementsAre(told(ErrorKind::device, "internal exception error"),
                                           told(ErrorKind::adapter, "transmit queue is full")));
}

TEST(ErrorMeanings, TwoTextsOfOneKindAreToldInOrder) {
    const auto receiving = explain(0xE1);
    EXPECT_THAT(receiving, ElementsAre(told(ErrorKind::library, "errortype is unknown"),
                                       told(ErrorKind::library, "error while reading device")));
    EXPECT_NE(receiving[0].meaning, receiving[1].meaning);
    EXPECT_THAT(explain(0x1C00), ElementsAre(told(ErrorKind::adapter, "client handle is invalid"),
                                             told(ErrorKind::adapter, "mask for all handle errors")));
}

TEST(ErrorMeanings, CombinedAdapterBitsAreToldOneByOne) {
    EXPECT_THAT(explain(0x14),
                ElementsAre(told(ErrorKind::adapter, "Bus error: an error counter reached the 'light' limit"),
                            told(ErrorKind::adapter, "Bus error: the CAN controller is in bus-off state")));
}

TEST(ErrorMeanings, CodesWithoutATextAreExplained) {
    EXPECT_THAT(explain(0x30), ElementsAre(told(ErrorKind::library, "arguments of a command refused")));
    for (std::uint32_t code = 0x30000201; code <= 0x30000209; ++code) {
        const auto explanations = explain(code);
        ASSERT_EQ(explanations.size(), 1U) << std::hex << code;
        EXPECT_FALSE(explanations[0].meaning.empty() || explanations[0].advice.empty()) << std::hex << code;
    }
    EXPECT_THAT(explain(0x30000200), IsEmpty());
    EXPECT_THAT(explain(0x3000020A), IsEmpty());
}

TEST(ErrorMeanings, SystemCodesOfFilesAreToldBehindTheirMark) {
    EXPECT_THAT(explain(0x31000002), ElementsAre(told(ErrorKind::library, "response file not writable")));
    EXPECT_THAT(explain(0x20000002), ElementsAre(told(ErrorKind::library, "calibration file not readable")));
    EXPECT_THAT(explain(0x31010002), IsEmpty());
    EXPECT_THAT(explain(0x31000000), IsEmpty());
    // The mark alone has a text of its own.
    EXPECT_THAT(explain(0x20000000), ElementsAre(told(ErrorKind::library, "wrong error mask")));
}

TEST(ErrorMeanings, UnknownCodesAndZeroHaveNoMeaning) {
    EXPECT_THAT(explain(0x12345678), IsEmpty());
    EXPECT_THAT(explain(0), IsEmpty());
}

TEST(ErrorMeanings, TextsAreThoseOfTheLibrary) {
    EXPECT_EQ(errorText(0), "no error exists");
    EXPECT_EQ(errorText(235), "TORVIKLIB: timeout while waiting for other cmd to finish [235]");
    EXPECT_EQ(errorText(0x40), "CAN Adapter: receive queue was read too late [64]");
    EXPECT_EQ(errorText(0x12345678), "Unknown Error. Code: 0x12345678");
}

TEST(ErrorMeanings, ActivationFailuresOfTheAdapterAreToldFromThoseOfTheDevice) {
    for (const std::uint32_t code : {0x10000U, 0x1400U, 0x4U, 0xF4U, 0x30000109U, 0x30000111U}) {
        EXPECT_TRUE(concernsAdapter(code)) << std::hex << code;
    }
    for (const std::uint32_t code : {0U, 0x30U, 0x40U, 0x80U, 0xF6U, 0xF9U, 0x30000058U, 0x30000114U}) {
        EXPECT_FALSE(concernsAdapter(code)) << std::hex << code;
    }
}

}  // namespace
}  // namespace torvik::tool
