#include "show_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace torvik::tool {

namespace {

constexpr std::size_t nameWidth = 28;
constexpr std::size_t columnWidth = 12;

std::string cellText(const Parameter& parameter, const PlaceReading& reading) {
    if (!reading.value) return "-";
    const std::string text = shownText(parameter.kind, *reading.value);
    return text.find_first_not_of(' ') == std::string::npos ? fmt::format("'{}'", text) : text;
}

/// fmt counts the columns of UTF-8 texts, not their bytes.
std::string paddedCell(const std::string& text, std::size_t width) {
    return fmt::format("{:<{}}", text, width);
}

class PageWriter {
  public:
    explicit PageWriter(std::uint32_t channels) : channels_(channels) {}

    void add(const ParameterReading& reading) {
        const Parameter& parameter = *reading.parameter;
        beginGroup(parameter.group);
        if (const LibraryError* const refusal = refusalOfAll(reading)) {
            line(std::string(parameter.name), fmt::format("not told ({}, code 0x{:X})", refusal->text, refusal->code),
                 "");
        } else if (!parameter.whenAllZero.empty() && allZero(reading)) {
            line(std::string(parameter.name), std::string(parameter.whenAllZero), "");
        } else if (parameter.places.paired()) {
            addPairs(reading);
        } else if (parameter.places.channels() && fitsColumns(reading)) {
            addColumns(reading);
        } else {
            addLines(reading);
        }
    }

    const std::string& text() const { return text_; }

  private:
    static const LibraryError* refusalOfAll(const ParameterReading& reading) {
        const bool all = !reading.places.empty() && std::ranges::all_of(reading.places, [](const auto& place) {
            return place.refusal.has_value();
        });
        return all ? &*reading.places.front().refusal : nullptr;
    }

    /// Places where the device keeps nothing do not count.
    static bool allZero(const ParameterReading& reading) {
        const auto isZero = [](const PlaceReading& place) {
            return !place.refusal && (!place.value || place.value == Value(0.0));
        };
        return std::ranges::all_of(reading.places, isZero);
    }

    static bool fitsColumns(const ParameterReading& reading) {
        return std::ranges::all_of(reading.places, [&](const PlaceReading& place) {
            return cellText(*reading.parameter, place).size() < columnWidth;
        });
    }

    void line(const std::string& name, std::string values, std::string_view unit) {
        while (values.ends_with(' '))
            values.pop_back();
        fmt::format_to(std::back_inserter(text_), "  {:<{}}{}{}{}{}\n", name, nameWidth, values,
                       unit.empty() ? "" : " (", unit, unit.empty() ? "" : ")");
    }

    void beginGroup(Group group) {
        if (group_ == group) return;
        const bool first = !group_;
        group_ = group;
        headed_ = false;
        fmt::format_to(std::back_inserter(text_), "{}{}\n", first ? "" : "\n", groupName(group));
    }

    void addColumns(const ParameterReading& reading) {
        if (!headed_) {
            std::string numbers;
            for (std::uint32_t channel = 1; channel <= channels_; ++channel)
                numbers += paddedCell(fmt::format("{}", channel), columnWidth);
            line("channel", numbers, "");
            headed_ = true;
        }
        std::string cells;
        for (const PlaceReading& place : reading.places)
            cells += paddedCell(cellText(*reading.parameter, place), columnWidth);
        line(std::string(reading.parameter->name), cells, reading.parameter->unit);
    }

    void addLines(const ParameterReading& reading) {
        const Parameter& parameter = *reading.parameter;
        for (const PlaceReading& place : reading.places) {
            const std::string where = placeText(parameter.places, place.place);
            line(fmt::format("{}{}{}", parameter.name, where.empty() ? "" : " ", where), cellText(parameter, place),
                 parameter.unit);
        }
    }

    /// One line for each first number of the pair; none where the device keeps nothing.
    void addPairs(const ParameterReading& reading) {
        const Parameter& parameter = *reading.parameter;
        auto begin = reading.places.begin();
        while (begin != reading.places.end()) {
            const auto end = std::find_if(begin, reading.places.end(), [begin](const PlaceReading& place) {
                return place.place.major != begin->place.major;
            });
            const bool any =
                std::any_of(begin, end, [](const PlaceReading& place) { return place.value || place.refusal; });
            std::string cells;
            for (auto place = begin; place != end; ++place)
                cells += cellText(parameter, *place) + "  ";
            if (any) line(fmt::format("{} {}", parameter.name, begin->place.major), cells, parameter.unit);
            begin = end;
        }
    }

    std::uint32_t channels_;
    std::optional<Group> group_;
    bool headed_ = false;
    std::string text_;
};

}  // namespace

std::string showPage(std::span<const ParameterReading> readings, std::uint32_t channels) {
    PageWriter page(channels);
    for (const ParameterReading& reading : readings)
        page.add(reading);
    return page.text();
}

}  // namespace torvik::tool
