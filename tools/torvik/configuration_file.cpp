#include "configuration_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <tuple>

#include "failure.h"
#include "printable_text.h"
#include "toml_file.hpp"

namespace torvik::tool {

namespace {

constexpr std::string_view deviceTable = "device";
constexpr std::string_view channelTables = "channel";

std::string quotedToml(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::size_t length = std::max<std::size_t>(utf8Length(text), 1);
        if (isControl(text)) {
            fmt::format_to(std::back_inserter(quoted), "\\u{:04X}", static_cast<unsigned char>(text[length - 1]));
        } else {
            if (text.front() == '"' || text.front() == '\\') quoted += '\\';
            quoted += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return quoted + "\"";
}

/// TOML tells numbers with a fraction from whole ones by their point or exponent.
std::string tomlValue(const ConfigurationItem& item) {
    std::string text = valueText(item.parameter->kind, item.value);
    if (std::holds_alternative<std::string>(item.value)) return quotedToml(text);
    const bool looksWhole = text.find_first_not_of("-0123456789") == std::string::npos;
    if (std::holds_alternative<double>(item.value) && looksWhole) text += ".0";
    return text;
}

std::string tableOf(const ConfigurationItem& item) {
    const PlaceRange& range = item.parameter->places;
    if (range.single()) return std::string(deviceTable);
    if (range.oneForEachChannel()) return fmt::format("{}.{}", channelTables, item.place.major);
    return std::string(item.parameter->name);
}

std::string keyOf(const ConfigurationItem& item) {
    const PlaceRange& range = item.parameter->places;
    if (range.single() || (range.oneForEachChannel())) return std::string(item.parameter->name);
    const std::string place = placeText(range, item.place);
    return range.paired() ? quotedToml(place) : place;
}

class ConfigurationReader {
  public:
    explicit ConfigurationReader(std::string_view text) {
        read(bounded_toml::parse(text));
        inOrderOfWriting();
    }

    std::vector<ConfigurationItem> takeItems() { return std::move(items_); }

  private:
    [[noreturn]] static void fail(const toml::source_region& where, const std::string& reason) {
        throw bounded_toml::Error(where.begin, reason);
    }

    static const toml::table& tableIn(const toml::key& key, const toml::node& node) {
        if (node.is_table()) return *node.as_table();
        fail(key.source(), fmt::format("\"{}\" is not a table", key.str()));
    }

    void read(const toml::table& file) {
        for (const auto& [key, node] : file) {
            const toml::table& table = tableIn(key, node);
            if (key.str() == deviceTable) {
                readParameters(table, {});
            } else if (key.str() == channelTables) {
                for (const auto& [channel, channelNode] : table)
                    readParameters(tableIn(channel, channelNode), channel.str());
            } else {
                readPlaces(parameterOf(key), table);
            }
        }
    }

    /// A table whose keys are parameters, all of one channel or (empty) of the device.
    void readParameters(const toml::table& table, std::string_view channel) {
        for (const auto& [key, node] : table) {
            const Parameter& parameter = parameterOf(key);
            const bool wantsChannel = parameter.places.oneForEachChannel();
            if (channel.empty() ? !parameter.places.single() : !wantsChannel) {
                fail(key.source(), fmt::format("\"{}\" does not belong into this table", key.str()));
            }
            add(parameter, channel, key, node);
        }
    }

    void readPlaces(const Parameter& parameter, const toml::table& table) {
        for (const auto& [key, node] : table)
            add(parameter, key.str(), key, node);
    }

    static const Parameter& parameterOf(const toml::key& key) {
        const Parameter* const parameter = findParameter(key.str());
        if (parameter == nullptr) fail(key.source(), fmt::format("there is no parameter \"{}\"", key.str()));
        if (parameter->inConfiguration == InConfiguration::no) {
            fail(key.source(), fmt::format("\"{}\" is not part of a configuration", key.str()));
        }
        return *parameter;
    }

    void add(const Parameter& parameter, std::string_view placeName, const toml::key& key, const toml::node& node) {
        const auto place =
            parameter.places.single() ? std::optional<Place>(Place{}) : parsePlace(parameter.places, placeName);
        if (!place) {
            fail(key.source(), fmt::format("\"{}\" is no place of {}: {}", placeName, parameter.name,
                                           allowedPlaces(parameter.places)));
        }
        const auto value = valueOf(parameter, node);
        if (!value) {
            fail(node.source(), fmt::format("{} is no value for {}: give {}", textOf(node), parameter.name,
                                            allowedValues(parameter.kind, parameter.limits)));
        }
        items_.push_back({&parameter, *place, *value});
    }

    static std::string textOf(const toml::node& node) {
        if (node.is_floating_point()) return valueText(ValueKind::real, Value(**node.as_floating_point()));
        if (node.is_integer()) return valueText(ValueKind::whole, Value(std::int64_t{**node.as_integer()}));
        return node.is_string() ? quotedToml(**node.as_string()) : "this";
    }

    /// Every value passes the check that the command line's values pass.
    static std::optional<Value> valueOf(const Parameter& parameter, const toml::node& node) {
        const ValueKind kind = parameter.kind;
        const bool isText = kind == ValueKind::text || kind == ValueKind::unit;
        const bool isReal = kind == ValueKind::single || kind == ValueKind::real;
        if (isText && node.is_string()) return parseValue(kind, parameter.limits, **node.as_string());
        if (isReal && node.is_floating_point()) {
            return parseValue(kind, parameter.limits, valueText(ValueKind::real, Value(**node.as_floating_point())));
        }
        if (!isText && node.is_integer()) {
            const std::int64_t number = **node.as_integer();
            return parseValue(kind, parameter.limits, valueText(ValueKind::whole, Value(number)));
        }
        return std::nullopt;
    }

    /// The table of parameters has those first on which others depend.
    void inOrderOfWriting() {
        const auto all = allParameters();
        std::ranges::stable_sort(items_, {}, [all](const ConfigurationItem& item) {
            return std::tuple(std::ranges::find(all, item.parameter) - all.begin(), item.place.major, item.place.minor);
        });
    }

    std::vector<ConfigurationItem> items_;
};

Failure readingFailure(const bounded_toml::Error& error, const std::string& fileName) {
    return Failure{.exitCode = ExitCode::usage,
                   .tried = fmt::format("reading the configuration file '{}'", fileName),
                   .reason = error.message(fileName),
                   .advice = "correct the file or its path; 'torvik config save FILE' writes one from a device"};
}

}  // namespace

std::string configurationText(std::span<const ConfigurationItem> items) {
    std::vector<std::pair<std::string, std::string>> tables;
    for (const ConfigurationItem& item : items) {
        const std::string name = tableOf(item);
        auto table = std::ranges::find(tables, name, &std::pair<std::string, std::string>::first);
        if (table == tables.end()) table = tables.insert(tables.end(), {name, {}});
        fmt::format_to(std::back_inserter(table->second), "{} = {}\n", keyOf(item), tomlValue(item));
    }
    const auto rankOf = [](const auto& table) {
        if (table.first == deviceTable) return 0;
        return table.first.starts_with(fmt::format("{}.", channelTables)) ? 1 : 2;
    };
    std::ranges::stable_sort(tables, {}, rankOf);
    std::string text = "# Settings of a VARDA amplifier, as 'torvik config' saves and loads them.\n";
    for (const auto& [name, lines] : tables)
        fmt::format_to(std::back_inserter(text), "\n[{}]\n{}", name, lines);
    return text;
}

bool canBeLoaded(const ConfigurationItem& item) {
    const Parameter& parameter = *item.parameter;
    return parseValue(parameter.kind, parameter.limits, valueText(parameter.kind, item.value)).has_value();
}

std::vector<ConfigurationItem> parseConfiguration(std::string_view text, const std::string& fileName) try {
    return ConfigurationReader(text).takeItems();
} catch (const bounded_toml::Error& error) {
    throw readingFailure(error, fileName);
}

std::vector<ConfigurationItem> readConfiguration(const std::string& fileName) try {
    return ConfigurationReader(bounded_toml::readFile(fileName)).takeItems();
} catch (const bounded_toml::Error& error) {
    throw readingFailure(error, fileName);
}

}  // namespace torvik::tool
