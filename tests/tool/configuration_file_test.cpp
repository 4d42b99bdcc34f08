#include "configuration_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "failure.h"

namespace torvik::tool {
namespace {

ConfigurationItem item(std::string_view name, Place place, Value value) {
    return {findParameter(name), place, std::move(value)};
}

std::string reasonFor(std::string_view text) {
    try {
        parseConfiguration(text, "file.toml");
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode, ExitCode::usage);
        return failure.reason;
    }
    return "accepted";
}

TEST(ConfigurationFile, ParametersStandInTheTableOfTheirPlace) {
    const ConfigurationItem items[] = {item("input-range", {2, 0}, Value(10.0)),
                                       item("unit", {2, 0}, Value(std::string("kN"))),
                                       item("user-text", {1, 0}, Value(std::string("a\"b"))),
                                       item("output-type", {2, 0}, Value(std::int64_t{0x1234})),
                                       item("sampling-frequency", {}, Value(62.5)),
                                       item("counter-setting", {2, 15}, Value(std::int64_t{7}))};
    EXPECT_EQ(configurationText(items),
              "# Settings of a VARDA amplifier, as 'torvik config' saves and loads them.\n"
              "\n[device]\nsampling-frequency = 62.5\n"
              "\n[channel.2]\ninput-range = 10.0\nunit = \"kN\"\noutput-type = 0x1234\n"
              "\n[user-text]\n1 = \"a\\\"b\"\n"
              "\n[counter-setting]\n\"2.15\" = 7\n");
}

TEST(ConfigurationFile, WhatIsWrittenIsReadUnchanged) {
    const ConfigurationItem written[] = {item("input-range", {1, 0}, Value(0.0025)),
                                         item("zero-signal", {1, 0}, Value(std::int64_t{-5})),
                                         item("user-scale", {1, 0}, Value(1e20)),
                                         item("user-text", {2, 0}, Value(std::string("\xC2\xB5"))),
                                         item("unit", {1, 0}, Value(std::string(" "))),
                                         item("transmit-mapping", {16, 0}, Value(std::int64_t{16})),
                                         item("can-setting", {2, 0}, Value(std::int64_t{258}))};
    const auto read = parseConfiguration(configurationText(written), "file.toml");
    ASSERT_EQ(read.size(), std::size(written));
    for (const ConfigurationItem& expected : written) {
        const bool found = std::ranges::any_of(read, [&](const ConfigurationItem& candidate) {
            return candidate.parameter == expected.parameter && candidate.place == expected.place &&
                   candidate.value == expected.value;
        });
        EXPECT_TRUE(found) << expected.parameter->name;
    }
}

TEST(ConfigurationFile, TypesAreWrittenBeforeTheRangesThatDependOnThem) {
    const auto items = parseConfiguration("[channel.1]\ninput-range = 5\ninput-type = 1\n", "file.toml");
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].parameter->name, "input-type");
    EXPECT_EQ(items[1].parameter->name, "input-range");
}

TEST(ConfigurationFile, WholeNumbersServeAsNumbersWithAFraction) {
    EXPECT_EQ(parseConfiguration("[device]\nsampling-frequency = 100\n", "file.toml").front().value, Value(100.0));
}

TEST(ConfigurationFile, AMistakeIsToldWithItsLine) {
    EXPECT_EQ(reasonFor("[device]\nsampling-frequncy = 1\n").substr(0, 12), "file.toml:2:");
    EXPECT_EQ(reasonFor("[device\n").substr(0, 12), "file.toml:1:");
}

TEST(ConfigurationFile, KeyOfFiftyThousandParts_IsRejectedWithItsPlace) {
    std::string key;
    for (int i = 0; i < 50'000; ++i)
        key += "a.";
    EXPECT_EQ(reasonFor("[device]\n" + key + "b = 1\n"), "file.toml:2:32: a key has more than 16 parts");
}

TEST(ConfigurationFile, WhatIsNotPartOfAConfigurationIsRefused) {
    EXPECT_NE(reasonFor("[device]\nserial-number = 1\n").find("not part of a configuration"), std::string::npos);
}

TEST(ConfigurationFile, ValuesOutsideTheirRangeAreRefused) {
    EXPECT_NE(reasonFor("[channel.1]\ninput-type = 256\n").find("0..255"), std::string::npos);
    EXPECT_NE(reasonFor("[channel.1]\ninput-range = -1.0\n").find("no value for input-range"), std::string::npos);
    EXPECT_NE(reasonFor("[channel.1]\nunit = \"furlong\"\n").find("torvik units"), std::string::npos);
}

TEST(ConfigurationFile, NumbersThatAreNotFiniteAreRefused) {
    EXPECT_EQ(reasonFor("[channel.1]\nuser-scale = nan\n"),
              "file.toml:2:14: nan is no value for user-scale: give a finite number up to 3.4e38");
    EXPECT_NE(reasonFor("[device]\nsampling-frequency = -inf\n").find("-inf is no value"), std::string::npos);
}

TEST(ConfigurationFile, WhatADeviceHoldsCanBeLoadedUnlessItIsNotFinite) {
    EXPECT_TRUE(canBeLoaded(item("user-scale", {1, 0}, Value(0.5))));
    EXPECT_TRUE(canBeLoaded(item("unit", {1, 0}, Value(std::string("kN")))));
    EXPECT_FALSE(canBeLoaded(item("user-scale", {1, 0}, Value(std::nan("")))));
}

TEST(ConfigurationFile, ValuesOfAnotherKindAreRefused) {
    for (const char* const text : {"[channel.1]\ninput-type = 1.0\n", "[channel.1]\nuser-scale = \"1\"\n",
                                   "[channel.1]\nunit = true\n", "device = 1\n", "[channel]\n1 = 2\n"}) {
        EXPECT_NE(reasonFor(text), "accepted") << text;
    }
}

TEST(ConfigurationFile, PlacesThatThereAreNotAreRefused) {
    for (const char* const text :
         {"[channel.9]\ninput-type = 1\n", "[channel.0]\ninput-type = 1\n", "[counter-setting]\n\"3.0\" = 1\n",
          "[channel.1]\nsampling-frequency = 1.0\n", "[device]\ninput-type = 1\n", "[user-text]\n3 = \"\"\n"}) {
        EXPECT_NE(reasonFor(text), "accepted") << text;
    }
}

}  // namespace
}  // namespace torvik::tool
