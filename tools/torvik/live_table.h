#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "set_reader.h"

namespace torvik::tool {

/// What a channel has delivered so far.
struct ChannelSummary {
    double latest = 0.0;
    double smallest = std::numeric_limits<double>::infinity();
    double largest = -std::numeric_limits<double>::infinity();
    double sum = 0.0;
    std::uint32_t latestStatus = 0;
};

/// The live table: per channel the latest value, minimum, maximum, mean and a bar; below it rate and buffer fill.
/// Only makes text, so that it can be drawn to any terminal.
class LiveTable {
  public:
    LiveTable(std::string title, std::size_t channels, std::size_t bufferSize, bool utf8);

    void add(const SetBatch& batch, double seconds);
    void setNotice(std::string notice) { notice_ = std::move(notice); }

    /// The table's lines as they stand now, without line ends; bars use what is left of the width.
    std::vector<std::string> lines(int columns) const;

    std::uint64_t sets() const { return sets_; }

  private:
    void updateRate(double seconds);
    std::string channelLine(std::size_t channel, double fullBar, std::size_t barWidth) const;
    std::string bar(double value, double fullBar, std::size_t width) const;
    double largestMagnitude() const;

    std::string title_;
    std::string notice_;
    std::vector<ChannelSummary> channels_;
    std::size_t bufferSize_;
    std::size_t waiting_ = 0;
    std::uint64_t sets_ = 0;
    double seconds_ = 0.0;
    double rate_ = 0.0;
    double rateSince_ = 0.0;
    std::uint64_t rateSets_ = 0;
    bool utf8_;
};

/// The smallest of 1, 2 and 5 times a power of ten that is not below the magnitude.
double roundScaleUp(double magnitude);

/// Draws lines in place of those drawn before, in one piece and without clearing the screen, so that nothing flickers.
class Redraw {
  public:
    /// The bytes that put these lines on the terminal; lines beyond its height are left out.
    std::string frame(std::vector<std::string> lines, int rows);

    /// The bytes that put the terminal into its usual state again.
    static std::string end();

  private:
    std::size_t drawnLines_ = 0;
};

}  // namespace torvik::tool
