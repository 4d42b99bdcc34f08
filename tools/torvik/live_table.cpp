#include "live_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace torvik::tool {

namespace {

constexpr double rateInterval = 1.0;
constexpr std::size_t widestBar = 41;
constexpr std::size_t narrowestBar = 9;
constexpr std::size_t columnsBeforeBar = 65;

std::string valueText(double value) {
    const double magnitude = std::fabs(value);
    if (!std::isfinite(value)) return fmt::format("{:>13}", value);
    if (magnitude != 0.0 && (magnitude < 1e-4 || magnitude >= 1e5)) return fmt::format("{:>+13.5e}", value);
    return fmt::format("{:>+13.6f}", value);
}

/// The rate of the values is made of the rounded one of the sets, so that the two agree as they stand.
std::string rateText(double setsPerSecond, std::size_t channels) {
    const int decimals = setsPerSecond < 10.0 ? 1 : 0;
    const double step = decimals == 1 ? 10.0 : 1.0;
    const double rounded = std::round(setsPerSecond * step) / step;
    return fmt::format("{:.{}f} sets/s, {:.{}f} values/s", rounded, decimals, rounded * static_cast<double>(channels),
                       decimals);
}

}  // namespace

double roundScaleUp(double magnitude) {
    if (!std::isfinite(magnitude) || magnitude <= 0.0) return 1.0;
    const double power = std::pow(10.0, std::floor(std::log10(magnitude)));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (magnitude <= step * power) return step * power;
    }
    return 10.0 * power;
}

LiveTable::LiveTable(std::string title, std::size_t channels, std::size_t bufferSize, bool utf8)
    : title_(std::move(title)), channels_(channels), bufferSize_(bufferSize), utf8_(utf8) {}

void LiveTable::add(const SetBatch& batch, double seconds) {
    for (std::size_t index = 0; index < batch.values.size(); ++index) {
        ChannelSummary& channel = channels_[index % channels_.size()];
        const double value = batch.values[index];
        channel.latest = value;
        channel.smallest = std::min(channel.smallest, value);
        channel.largest = std::max(channel.largest, value);
        channel.sum += value;
        channel.latestStatus = batch.statuses[index];
    }
    sets_ += batch.sets;
    waiting_ = batch.waiting;
    seconds_ = seconds;
    updateRate(seconds);
}

void LiveTable::updateRate(double seconds) {
    const double elapsed = seconds - rateSince_;
    const bool first = rate_ == 0.0 && elapsed > rateInterval / 4;
    if (elapsed < rateInterval && !first) return;
    rate_ = static_cast<double>(sets_ - rateSets_) / elapsed;
    rateSince_ = seconds;
    rateSets_ = sets_;
}

double LiveTable::largestMagnitude() const {
    double magnitude = 0.0;
    for (const ChannelSummary& channel : channels_) {
        if (sets_ == 0) break;
        magnitude = std::max({magnitude, std::fabs(channel.smallest), std::fabs(channel.largest)});
    }
    return magnitude;
}

std::string LiveTable::bar(double value, double fullBar, std::size_t width) const {
    const std::size_t half = width / 2;
    const double share = std::isfinite(value) ? std::clamp(value / fullBar, -1.0, 1.0) : 0.0;
    const auto cells = static_cast<std::size_t>(std::lround(std::fabs(share) * static_cast<double>(half)));
    std::string text;
    for (std::size_t cell = 0; cell < width; ++cell) {
        const std::size_t distance = cell > half ? cell - half : half - cell;
        const bool sameSide = share < 0.0 ? cell < half : cell > half;
        if (cell == half) {
            text += utf8_ ? "│" : "|";
        } else if (sameSide && distance <= cells) {
            text += utf8_ ? "█" : "#";
        } else {
            text += utf8_ ? "·" : ".";
        }
    }
    return text;
}

std::string LiveTable::channelLine(std::size_t channel, double fullBar, std::size_t barWidth) const {
    const ChannelSummary& summary = channels_[channel];
    if (sets_ == 0) return fmt::format("{:>5} {:>13}", channel + 1, "-");
    std::string line =
        fmt::format("{:>5} {} {} {} {}", channel + 1, valueText(summary.latest), valueText(summary.smallest),
                    valueText(summary.largest), valueText(summary.sum / static_cast<double>(sets_)));
    if (barWidth >= narrowestBar) line += "  " + bar(summary.latest, fullBar, barWidth);
    if (summary.latestStatus != 0) line += fmt::format(" status {}", summary.latestStatus);
    return line;
}

std::vector<std::string> LiveTable::lines(int columns) const {
    const auto width = static_cast<std::size_t>(std::max(columns, 1));
    const std::size_t room = width > columnsBeforeBar ? width - columnsBeforeBar : 0;
    const std::size_t barWidth = std::min(widestBar, room - (room % 2 == 0 && room > 0 ? 1 : 0));
    const double fullBar = roundScaleUp(largestMagnitude());

    std::vector<std::string> text{title_};
    std::string heading = fmt::format("{:>5} {:>13} {:>13} {:>13} {:>13}", "chan", "value", "min", "max", "mean");
    if (barWidth >= narrowestBar) {
        const std::string left = fmt::format("{:g}", -fullBar);
        const std::string right = fmt::format("{:g}", fullBar);
        const std::size_t gap = barWidth > left.size() + right.size() ? barWidth - left.size() - right.size() : 1;
        heading += "  " + left + std::string(gap, ' ') + right;
    }
    text.push_back(heading);
    for (std::size_t channel = 0; channel < channels_.size(); ++channel) {
        text.push_back(channelLine(channel, fullBar, barWidth));
    }
    const double fill = 100.0 * static_cast<double>(waiting_) / static_cast<double>(bufferSize_);
    text.push_back(fmt::format("{} | {} sets in {:.1f} s | buffer {} of {} ({:.1f} %)",
                               rateText(rate_, channels_.size()), sets_, seconds_, waiting_, bufferSize_, fill));
    if (!notice_.empty()) text.push_back(notice_);
    return text;
}

std::string Redraw::frame(std::vector<std::string> lines, int rows) {
    const auto fitting = static_cast<std::size_t>(std::max(rows - 1, 1));
    if (lines.size() > fitting) lines.resize(fitting);
    // Hidden cursor and no wrapping while it is drawn over; the cursor waits below the table.
    std::string bytes = "\x1b[?25l\x1b[?7l\r";
    if (drawnLines_ > 0) fmt::format_to(std::back_inserter(bytes), "\x1b[{}A", drawnLines_);
    for (const std::string& line : lines)
        bytes += line + "\x1b[K\r\n";
    bytes += "\x1b[J";
    drawnLines_ = lines.size();
    return bytes;
}

std::string Redraw::end() {
    return "\x1b[?7h\x1b[?25h";
}

}  // namespace torvik::tool
