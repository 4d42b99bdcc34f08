#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "parameters/parameter.h"

namespace torvik::tool {
namespace {

TEST(ParameterTable, EveryNameStandsOnce) {
    std::set<std::string_view> names;
    for (const Parameter* const parameter : allParameters()) {
        EXPECT_TRUE(names.insert(parameter->name).second) << parameter->name;
        EXPECT_EQ(findParameter(parameter->name), parameter);
    }
}

TEST(ParameterTable, NamesAreWordsOfLowerCaseLetters) {
    for (const Parameter* const parameter : allParameters())
        EXPECT_EQ(parameter->name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string_view::npos);
}

TEST(ParameterTable, EveryParameterCanBeReadOrWritten) {
    for (const Parameter* const parameter : allParameters())
        EXPECT_TRUE(parameter->read != nullptr || parameter->write != nullptr) << parameter->name;
}

TEST(ParameterTable, WhatAConfigurationContainsCanBeReadAndWritten) {
    for (const Parameter* const parameter : allParameters()) {
        if (parameter->inConfiguration == InConfiguration::no) continue;
        EXPECT_TRUE(parameter->read != nullptr && parameter->write != nullptr) << parameter->name;
    }
}

TEST(ParameterTable, WholeNumbersThatCanBeWrittenHaveLimits) {
    for (const Parameter* const parameter : allParameters()) {
        const bool whole = parameter->kind == ValueKind::whole || parameter->kind == ValueKind::word;
        if (parameter->write == nullptr || !whole) continue;
        EXPECT_GE(parameter->limits.smallest, -2147483648.0) << parameter->name;
        EXPECT_LE(parameter->limits.largest, 4294967295.0) << parameter->name;
    }
}

TEST(ParameterTable, IdentityAndFactoryCalibrationAreInNoConfiguration) {
    for (const std::string_view name : {"serial-number", "operating-hours", "new-operating-hours", "calibration",
                                        "offered-range", "output-value", "blocking", "identifier-command"}) {
        ASSERT_NE(findParameter(name), nullptr) << name;
        EXPECT_EQ(findParameter(name)->inConfiguration, InConfiguration::no) << name;
    }
}

TEST(ParameterTable, IdentifiersAreInAConfigurationOnlyOnRequest) {
    EXPECT_EQ(findParameter("can-setting")->inConfiguration, InConfiguration::onRequest);
}

TEST(ParameterTable, NamesWithAWordInCommonAreSimilar) {
    const auto similar = similarNames("scale-user");
    EXPECT_NE(std::ranges::find(similar, "user-scale"), similar.end());
    EXPECT_NE(std::ranges::find(similar, "output-scale"), similar.end());
    EXPECT_EQ(std::ranges::find(similar, "mode"), similar.end());
}

TEST(Places, AChannelIsANumberOfItsRange) {
    EXPECT_EQ(parsePlace(everyChannel, "8"), (Place{8, 0}));
    EXPECT_EQ(parsePlace(everyChannel, "0"), std::nullopt);
    EXPECT_EQ(parsePlace(everyChannel, "9"), std::nullopt);
    EXPECT_EQ(parsePlace(everyChannel, "1.1"), std::nullopt);
}

TEST(Places, APairHasAPointBetweenItsNumbers) {
    const PlaceRange& counters = findParameter("counter-setting")->places;
    EXPECT_EQ(parsePlace(counters, "2.15"), (Place{2, 15}));
    EXPECT_EQ(placeText(counters, {2, 15}), "2.15");
    EXPECT_EQ(parsePlace(counters, "2"), std::nullopt);
    EXPECT_EQ(parsePlace(counters, "3.0"), std::nullopt);
    EXPECT_EQ(parsePlace(counters, "0.16"), std::nullopt);
}

TEST(Places, ChannelsAreThoseOfTheDevice) {
    EXPECT_EQ(placesOf(everyChannel, 3), (std::vector<Place>{{1, 0}, {2, 0}, {3, 0}}));
    EXPECT_EQ(placesOf(everyChannel, 16).size(), 8U);
}

TEST(Places, UnitsAreReadOfSevenChannels) {
    EXPECT_EQ(placesOf(findParameter("unit")->places, 8).size(), 7U);
}

TEST(Places, AParameterOfTheDeviceItselfHasOne) {
    EXPECT_EQ(placesOf(onePlace, 6), std::vector<Place>{Place{}});
    EXPECT_EQ(placeText(onePlace, {}), "");
}

}  // namespace
}  // namespace torvik::tool
