// The calibration exports against an amplifier whose answers the test gives.
#pragma once

#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "calib/calibration_format.h"
#include "params/params_bench.h"

namespace torvik::test {

inline constexpr std::uint32_t wrongAnswer = 0x30000060;

inline constexpr std::uint32_t newFirmware = firmwareWithModelName;
inline constexpr std::uint32_t oldFirmware = firmwareWithFormatWord - 1;

// Frames as they are to go out.
class Frames {
  public:
    // One element, or a whole array.
    Frames& element(unsigned array, unsigned index, double value);
    Frames& array(unsigned array, std::span<const double> values);
    Frames& array(unsigned array, std::initializer_list<double> values);
    Frames& serial(std::uint32_t number);
    Frames& store(unsigned slot);
    // Four frames; at most 16 characters.
    Frames& model(std::string name);
    // A request to read `count` elements.
    Frames& read(unsigned array, unsigned count);
    Frames& raw(std::string frame);
    Frames& stopStream() { return raw("80 23"); }
    Frames& startStream() { return raw("80 24"); }

    // The first frames only.
    Frames& cut(std::size_t count);

    const std::vector<std::string>& all() const { return frames_; }
    std::size_t size() const { return frames_.size(); }

  private:
    std::vector<std::string> frames_;
};

class CalibrationBench : public ParamsBench {
  protected:
    void SetUp() override;

    // Activates the device anew, without a stream unless told; it acknowledges whatever is written from then on.
    static void use(std::uint32_t firmware, bool streaming = false);

    // The amplifier answers the next readings of elements with these values, one after the other.
    static void holds(std::initializer_list<double> values);
    static void holds(std::span<const double> values);
    static void holdsWord(std::uint32_t word);

    // It acknowledges `good` commands of this code, refuses the next with 0x52, and acknowledges all others.
    static void refuseAfter(std::uint32_t good, std::uint8_t command);

    void expectSent(const Frames& frames) const;
};

// 1, 2, 3, ... as many as asked for, beginning with `first`.
std::vector<double> counting(std::size_t count, double first = 1);

}  // namespace torvik::test
