// What the reading of a calibration file met, value by value, for those who want to know.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace torvik {

enum class FindingKind : std::uint8_t {
    value,       // as the file says
    byDefault,   // the file does not say; this is taken
    passedOver,  // the file says it, but it is not taken as it stands
    problem,     // what the file is refused for
};

struct Finding {
    FindingKind kind = FindingKind::value;
    std::string file{};
    std::size_t line = 0;    // from 1; 0: in no line
    std::string section{};   // empty in matrix files
    std::string name{};      // a key, "row 0", or empty for a file as a whole
    std::string text{};      // the value that is taken; empty where there is none
    std::string reason{};    // why it is not what the file says
    std::uint32_t code = 0;  // of a problem: what loading ends with
};

// In the order of the reading.
using CalibrationReport = std::vector<Finding>;

// A file that is not there, cannot be read, or is not regular (0x30000108): a problem.
Finding unreadableFile(const std::string& path, std::uint32_t code);

// With as many digits as it takes to read the number back unchanged.
std::string shortestText(double number);

}  // namespace torvik
