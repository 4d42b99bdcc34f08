#include "bench_file.hpp"

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <span>

#include "frame.hpp"
#include "toml_file.hpp"

namespace virtual_adapter {
namespace {

// What is wrong with a description, and where.
class BenchError : public bounded_toml::Error {
  public:
    BenchError(const toml::node& node, const std::string& reason) : Error(node.source().begin, reason) {}
};

template <class Value>
struct Word {
    std::string_view word;
    Value value;
};

constexpr Word<Waveform> kWaveforms[] = {{"constant", Waveform::constant},
                                         {"sine", Waveform::sine},
                                         {"step", Waveform::step},
                                         {"ramp", Waveform::ramp},
                                         {"noise", Waveform::noise}};
constexpr Word<ValueType> kValueTypes[] = {
    {"int16", ValueType::int16}, {"int24", ValueType::int24}, {"float32", ValueType::float32}};
constexpr Word<bool> kUnits[] = {{"full scale", false}, {"counts", true}};

constexpr std::uint64_t kAny32 = std::numeric_limits<std::uint32_t>::max();
constexpr double kLargestAmplitude = 1e30;
constexpr double kHighestFrequency = 1e6;

// One table of the description. Keys that are not there leave the value as it is.
class Table {
  public:
    Table(const toml::table& table, std::initializer_list<std::string_view> keys) : table_(table) {
        for (const auto& [key, node] : table) {
            if (std::ranges::find(keys, key.str()) == keys.end()) {
                throw BenchError(node, "unknown key \"" + std::string(key.str()) + "\"");
            }
        }
    }

    template <class Integer>
    void integer(std::string_view key, Integer& value, std::uint64_t lowest, std::uint64_t highest) const {
        const toml::node* const node = table_.get(key);
        if (node == nullptr) return;
        value = static_cast<Integer>(integerOf(*node, key, lowest, highest));
    }

    void number(std::string_view key, double& value, double lowest, double highest) const {
        const toml::node* const node = table_.get(key);
        if (node == nullptr) return;
        const auto given = node->value<double>();
        if (!node->is_number() || !given || !(*given >= lowest && *given <= highest)) {
            throw BenchError(*node, quoted(key) + " is not a number in its range");
        }
        value = *given;
    }

    void flag(std::string_view key, bool& value) const {
        const toml::node* const node = table_.get(key);
        if (node == nullptr) return;
        if (!node->is_boolean()) throw BenchError(*node, quoted(key) + " is neither true nor false");
        value = *node->value<bool>();
    }

    template <class Value>
    void word(std::string_view key, Value& value, std::span<const Word<Value>> words) const {
        const toml::node* const node = table_.get(key);
        if (node == nullptr) return;
        const auto given = node->value<std::string_view>();
        std::string known;
        for (const Word<Value>& row : words) {
            if (given == row.word) {
                value = row.value;
                return;
            }
            known += (known.empty() ? "" : ", ") + std::string(row.word);
        }
        throw BenchError(*node, quoted(key) + " is none of " + known);
    }

    // The numbers of an array of just so many.
    template <std::size_t Count>
    void integers(std::string_view key, std::array<std::uint32_t, Count>& values) const {
        const toml::node* const node = table_.get(key);
        if (node == nullptr) return;
        const toml::array* const given = node->as_array();
        if (given == nullptr || given->size() != Count) {
            throw BenchError(*node, quoted(key) + " is not an array of " + std::to_string(Count) + " numbers");
        }
        for (std::size_t i = 0; i < Count; ++i) {
            values[i] = static_cast<std::uint32_t>(integerOf(*given->get(i), key, 0, kAny32));
        }
    }

    // The numbers of an array of arrays of just so many: at most `most` of them.
    template <std::size_t Count>
    [[nodiscard]] std::optional<std::vector<std::array<std::uint32_t, Count>>> rows(
        std::string_view key, std::size_t most, const std::array<std::uint64_t, Count>& highest) const {
        const toml::node* const node = table_.get(key);
        if (node == nullptr) return std::nullopt;
        const toml::array* const given = node->as_array();
        if (given == nullptr || given->size() > most) {
            throw BenchError(*node, quoted(key) + " is not an array of at most " + std::to_string(most));
        }
        std::vector<std::array<std::uint32_t, Count>> found;
        for (const toml::node& element : *given) {
            const toml::array* const row = element.as_array();
            if (row == nullptr || row->size() != Count) {
                throw BenchError(element,
                                 quoted(key) + " does not consist of " + std::to_string(Count) + " numbers each");
            }
            auto& numbers = found.emplace_back();
            for (std::size_t i = 0; i < Count; ++i)
                numbers[i] = static_cast<std::uint32_t>(integerOf(*row->get(i), key, 0, highest[i]));
        }
        return found;
    }

    // The tables of an array of tables: at most so many.
    [[nodiscard]] std::vector<const toml::table*> tables(std::string_view key, std::size_t most) const {
        std::vector<const toml::table*> found;
        const toml::node* const node = table_.get(key);
        if (node == nullptr) return found;
        if (!node->is_array_of_tables()) throw BenchError(*node, quoted(key) + " is not an array of tables");
        for (const toml::node& element : *node->as_array())
            found.push_back(element.as_table());
        if (found.size() > most) {
            throw BenchError(*found[most], "more than " + std::to_string(most) + " of " + quoted(key));
        }
        return found;
    }

  private:
    static std::string quoted(std::string_view key) { return "\"" + std::string(key) + "\""; }

    static std::uint64_t integerOf(const toml::node& node, std::string_view key, std::uint64_t lowest,
                                   std::uint64_t highest) {
        const auto given = node.is_integer() ? node.value<std::int64_t>() : std::nullopt;
        if (!given || *given < 0 || static_cast<std::uint64_t>(*given) < lowest ||
            static_cast<std::uint64_t>(*given) > highest) {
            throw BenchError(node, quoted(key) + " is not a whole number of " + std::to_string(lowest) + ".." +
                                       std::to_string(highest));
        }
        return static_cast<std::uint64_t>(*given);
    }

    const toml::table& table_;
};

SignalConfig readSignal(const toml::table& source) {
    const Table table(source, {"wave", "amplitude", "offset", "frequency", "noise"});
    SignalConfig signal;
    table.word<Waveform>("wave", signal.waveform, kWaveforms);
    table.number("amplitude", signal.amplitude, -kLargestAmplitude, kLargestAmplitude);
    table.number("offset", signal.offset, -kLargestAmplitude, kLargestAmplitude);
    table.number("frequency", signal.frequency, 0, kHighestFrequency);
    table.number("noise", signal.noise, 0, kLargestAmplitude);
    return signal;
}

void readSignals(const Table& table, AmplifierConfig& amplifier) {
    std::size_t channels = amplifier.signals.size();
    table.integer("channels", channels, 1, kMostChannels);
    const auto signals = table.tables("signal", channels);
    if (signals.empty()) {
        amplifier.signals = defaultSignals(channels);
        return;
    }
    amplifier.signals.assign(channels, {});
    std::ranges::transform(signals, amplifier.signals.begin(), [](const auto* signal) { return readSignal(*signal); });
}

void readRanges(const Table& table, AmplifierConfig& amplifier) {
    const auto rows = table.rows<2>("ranges", kMostRanges, {0xFF, kLargestRange});
    if (!rows) return;
    amplifier.ranges.clear();
    for (const auto& [type, hundredths] : *rows)
        amplifier.ranges.push_back({static_cast<std::uint8_t>(type), hundredths});
}

// The copies of one description: identifiers, serial numbers and seeds go up from one to the next.
void readAmplifier(const toml::table& source, std::vector<AmplifierConfig>& amplifiers) {
    const Table table(
        source,
        {"command",         "answer", "value",      "channels", "firmware",        "protocol",  "mode",
         "interface_ident", "seed",   "value_type", "unit",     "streaming",       "frequency", "answer_time_us",
         "reset_time_ms",   "serial", "ranges",     "copies",   "identifier_step", "signal",    "calibrated"});
    AmplifierConfig amplifier;
    table.integer("command", amplifier.commandId, 0, kHighestStandardId);
    table.integer("answer", amplifier.answerId, 0, kHighestStandardId);
    table.integer("value", amplifier.valueId, 0, kHighestStandardId);
    table.integer("firmware", amplifier.firmware, 0, kAny32);
    table.integer("protocol", amplifier.protocolKind, 16, 32);
    if (amplifier.protocolKind != 16 && amplifier.protocolKind != 32) {
        throw BenchError(*source.get("protocol"), "\"protocol\" is neither 16 nor 32");
    }
    table.integer("mode", amplifier.mode, 0, kAny32);
    table.integers("interface_ident", amplifier.interfaceIdent);
    table.integer("seed", amplifier.seed, 0, std::numeric_limits<std::int64_t>::max());
    table.word<ValueType>("value_type", amplifier.valueType, kValueTypes);
    table.word<bool>("unit", amplifier.counts, kUnits);
    table.flag("calibrated", amplifier.calibrated);
    table.flag("streaming", amplifier.streaming);
    table.number("frequency", amplifier.frequency, 0.001, kHighestFrequency);
    table.integer("answer_time_us", amplifier.answerTime, 0, 10'000'000);
    table.integer("reset_time_ms", amplifier.resetTime, 0, 10'000);
    table.integer("serial", amplifier.serial, 1, kAny32);
    readRanges(table, amplifier);
    readSignals(table, amplifier);

    std::uint32_t copies = 1;
    std::uint32_t step = 3;
    table.integer("copies", copies, 1, kMostAmplifiers);
    table.integer("identifier_step", step, 0, kHighestStandardId);
    for (std::uint32_t copy = 0; copy < copies; ++copy) {
        AmplifierConfig& added = amplifiers.emplace_back(amplifier);
        added.seed += copy;
        added.serial += copy;
        for (std::uint32_t* const id : {&added.commandId, &added.answerId, &added.valueId}) {
            *id += copy * step;
            if (*id > kHighestStandardId) throw BenchError(source, "the copies need identifiers above 0x7FF");
        }
        if (amplifiers.size() > kMostAmplifiers) throw BenchError(source, "more than 39 amplifiers");
    }
}

std::string hexadecimal(std::uint32_t id) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    return std::string("0x") + digits[id >> 8U & 0xFU] + digits[id >> 4U & 0xFU] + digits[id & 0xFU];
}

// `owners[n]` is the table that amplifier n was read from.
void refuseEqualIdentifiers(std::span<const AmplifierConfig> amplifiers, std::span<const toml::table* const> owners,
                            bool allowedBetweenAmplifiers) {
    std::vector<std::uint32_t> used;
    for (std::size_t i = 0; i < amplifiers.size(); ++i) {
        if (allowedBetweenAmplifiers) used.clear();
        for (const std::uint32_t id : {amplifiers[i].commandId, amplifiers[i].answerId, amplifiers[i].valueId}) {
            if (std::ranges::find(used, id) != used.end()) {
                throw BenchError(*owners[i], "identifier " + hexadecimal(id) + " is used twice");
            }
            used.push_back(id);
        }
    }
}

BenchConfig readBench(const toml::table& source) {
    const Table table(source, {"bus", "amplifier"});
    BenchConfig bench;
    bool equalIdentifiers = false;
    if (const toml::node* const node = source.get("bus")) {
        if (!node->is_table()) throw BenchError(*node, "\"bus\" is not a table");
        const Table bus(*node->as_table(), {"timing", "equal_identifiers"});
        bus.flag("timing", bench.timing);
        bus.flag("equal_identifiers", equalIdentifiers);
    }
    std::vector<const toml::table*> owners;
    for (const toml::table* const amplifier : table.tables("amplifier", kMostAmplifiers)) {
        readAmplifier(*amplifier, bench.amplifiers);
        owners.resize(bench.amplifiers.size(), amplifier);
    }
    refuseEqualIdentifiers(bench.amplifiers, owners, equalIdentifiers);
    return bench;
}

}  // namespace

BenchResult parseBench(std::string_view text, const std::string& name) {
    try {
        return {readBench(bounded_toml::parse(text)), {}};
    } catch (const bounded_toml::Error& error) {
        return {std::nullopt, error.message(name)};
    }
}

BenchResult readBenchFile(const std::string& path) {
    try {
        return parseBench(bounded_toml::readFile(path), path);
    } catch (const bounded_toml::Error& error) {
        return {std::nullopt, error.message(path)};
    }
}

}  // namespace virtual_adapter
