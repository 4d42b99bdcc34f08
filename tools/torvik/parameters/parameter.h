#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "parameters/value.h"

namespace torvik::tool {

/// Which of a parameter's values is meant: nothing, a channel, an index, or a pair such as index and channel.
struct Place {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    bool operator==(const Place&) const = default;
};

struct PlaceRange {
    std::string_view what;  ///< "channel", "index", ...; empty: there is only one value
    std::uint32_t first = 0;
    std::uint32_t last = 0;       ///< that `get` and `set` take
    std::uint32_t lastShown = 0;  ///< that `show` asks for; of channels at most those that the device has
    std::string_view minorWhat = {};
    std::uint32_t minorFirst = 0;
    std::uint32_t minorLast = 0;

    constexpr bool single() const { return what.empty(); }
    constexpr bool paired() const { return !minorWhat.empty(); }
    constexpr bool channels() const { return what == "channel"; }
    constexpr bool oneForEachChannel() const { return channels() && !paired(); }
};

inline constexpr PlaceRange onePlace{};
inline constexpr std::uint32_t mostChannels = 8;
inline constexpr PlaceRange everyChannel{.what = "channel", .first = 1, .last = mostChannels, .lastShown = 8};

enum class Group : std::uint8_t { identity, mode, input, scaling, unit, output, rate, can };

/// Whether a configuration file contains the parameter.
enum class InConfiguration : std::uint8_t {
    no,
    yes,
    onRequest,  ///< identifiers: only with --identifiers
};

/// Writing gives this to tell what came of the restart.
enum class WriteResult : std::uint8_t {
    done,
    restartUnknown,    ///< the setting was made, but the firmware knows no restart
    buffersNotCleared  ///< the device was restarted, the library's value buffers were not cleared
};

/// None: the device keeps nothing in this place. Throws Refused.
using ReadParameter = std::optional<Value> (*)(std::int32_t deviceNo, Place place);
/// Throws Refused.
using WriteParameter = WriteResult (*)(std::int32_t deviceNo, Place place, const Value& value);

/// A row of the table that list, show, get, set and config share.
struct Parameter {
    std::string_view name;
    Group group;
    std::string_view text;
    std::string_view unit;
    PlaceRange places;
    ValueKind kind;
    Limits limits = {};
    ReadParameter read = nullptr;    ///< null: write-only
    WriteParameter write = nullptr;  ///< null: read-only
    bool restarts = false;           ///< writing restarts the device
    InConfiguration inConfiguration = InConfiguration::no;
    bool shown = true;                  ///< false: `show` leaves it out, being long or derived
    std::string_view whenAllZero = {};  ///< what `show` says instead of all the zeros; empty: it shows them
};

// One family each, in the order in which they are listed.
std::span<const Parameter> identityParameters();
std::span<const Parameter> inputParameters();
std::span<const Parameter> scalingParameters();
std::span<const Parameter> unitParameters();
std::span<const Parameter> outputParameters();
std::span<const Parameter> rateParameters();
std::span<const Parameter> canParameters();

/// All of them.
std::span<const Parameter* const> allParameters();

/// Null: there is none of this name.
const Parameter* findParameter(std::string_view name);

/// Names that have a word in common with this one.
std::vector<std::string_view> similarNames(std::string_view name);

std::string_view groupName(Group group);

/// "3", or "3.1" for a pair; empty when there is only one.
std::string placeText(const PlaceRange& range, Place place);

/// None: it is not a place of this range.
std::optional<Place> parsePlace(const PlaceRange& range, std::string_view text);

/// The places that a device with so many channels has of this range.
std::vector<Place> placesOf(const PlaceRange& range, std::uint32_t channels);

/// "channel 3 of user-scale", "mode".
std::string describePlace(const Parameter& parameter, Place place);

/// "1..8", "0..48.0..7": what parsePlace takes.
std::string allowedPlaces(const PlaceRange& range);

}  // namespace torvik::tool
