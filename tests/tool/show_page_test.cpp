#include "show_page.h"

#include <gtest/gtest.h>

#include <cmath>

namespace torvik::tool {
namespace {

PlaceReading told(Place place, Value value) {
    return {place, std::move(value), {}};
}

PlaceReading refused(Place place) {
    return {place, {}, LibraryError{.code = 0x51, .text = "wrong \"index\""}};
}

TEST(ShowPage, ChannelsStandInColumns) {
    const ParameterReading readings[] = {
        {findParameter("zero-signal"), {told({1, 0}, std::int64_t{-5}), told({2, 0}, std::int64_t{7})}}};
    EXPECT_EQ(showPage(readings, 2),
              "scaling\n"
              "  channel                     1           2\n"
              "  zero-signal                 -5          7 (counts)\n");
}

TEST(ShowPage, GroupsAreSetApart) {
    const ParameterReading readings[] = {{findParameter("serial-number"), {told({}, std::int64_t{1})}},
                                         {findParameter("mode"), {told({}, std::int64_t{6})}}};
    EXPECT_EQ(showPage(readings, 1),
              "identity\n  serial-number               1\n\nmode\n  mode                        0x6\n");
}

TEST(ShowPage, WhatADeviceRefusesIsToldWithItsCode) {
    const ParameterReading readings[] = {{findParameter("mode"), {refused({})}}};
    EXPECT_EQ(showPage(readings, 1), "mode\n  mode                        not told (wrong \"index\", code 0x51)\n");
}

TEST(ShowPage, OneChannelThatIsRefusedLeavesItsColumnEmpty) {
    const ParameterReading readings[] = {{findParameter("user-scale"), {told({1, 0}, 1.0), refused({2, 0})}}};
    EXPECT_NE(showPage(readings, 2).find("user-scale                  1           -\n"), std::string::npos);
}

TEST(ShowPage, PairsWithoutAnyValueAreLeftOut) {
    const ParameterReading readings[] = {
        {findParameter("calibration"), {told({5, 0}, 2.5), told({5, 1}, 3.5), {{6, 0}, {}, {}}, {{6, 1}, {}, {}}}}};
    EXPECT_EQ(showPage(readings, 2), "input\n  calibration 5               2.5  3.5\n");
}

TEST(ShowPage, ACalibrationOfZerosIsOneLine) {
    const ParameterReading zeros[] = {
        {findParameter("calibration"), {told({0, 0}, 0.0), told({0, 1}, 0.0), {{6, 0}, {}, {}}, told({8, 0}, 0.0)}}};
    EXPECT_EQ(showPage(zeros, 2), "input\n  calibration                 none: all values are 0\n");
    const ParameterReading one[] = {{findParameter("calibration"), {told({0, 0}, 0.0), told({0, 1}, 0.5)}}};
    EXPECT_EQ(showPage(one, 2), "input\n  calibration 0               0  0.5\n");
    const ParameterReading unknown[] = {{findParameter("calibration"), {told({0, 0}, 0.0), refused({0, 1})}}};
    EXPECT_EQ(showPage(unknown, 2), "input\n  calibration 0               0  -\n");
}

TEST(ShowJson, EveryGroupIsAnObjectOfItsParameters) {
    const ParameterReading readings[] = {{findParameter("mode"), {told({}, std::int64_t{6})}},
                                         {findParameter("user-offset"), {told({1, 0}, 0.5), refused({2, 0})}}};
    EXPECT_EQ(showJson(readings),
              "{\n  \"mode\": {\n    \"mode\": {\"value\": 6}\n  },\n"
              "  \"scaling\": {\n    \"user-offset\": {\"unit\": \"of the channel\", \"places\": {"
              "\"1\": {\"value\": 0.5}, "
              "\"2\": {\"error\": {\"code\": 81, \"text\": \"wrong \\\"index\\\"\"}}}}\n  }\n}\n");
}

TEST(ShowJson, NumbersThatAreNoneAreTexts) {
    const ParameterReading readings[] = {{findParameter("sampling-frequency"), {told({}, std::nan(""))}}};
    EXPECT_NE(showJson(readings).find("\"value\": \"nan\""), std::string::npos);
}

}  // namespace
}  // namespace torvik::tool
