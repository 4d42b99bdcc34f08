// The sample calibration files.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "calib/calibration_file.h"

namespace torvik::test {

inline const char* const sampleNames[] = {"version0",          "version2",
                                          "version3-forces",   "version3-force-and-torques",
                                          "version4-matrix-b", "version4-single-axis"};

// With the system's own separators.
inline std::string samplePath(const std::string& name) {
    return (std::filesystem::path(TORVIK_SAMPLES) / name).make_preferred().string();
}

// The texts of all files there, by their names.
using SampleTexts = std::map<std::string, std::string>;
inline SampleTexts sampleTexts() {
    SampleTexts texts;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(TORVIK_SAMPLES))) {
        std::ifstream file(entry.path(), std::ios::binary);
        texts[entry.path().filename().string()].assign(std::istreambuf_iterator<char>(file), {});
    }
    return texts;
}

inline constexpr std::uint32_t missingFile = 0x20000002;

// Reads a sample from these texts instead of the files.
inline std::uint32_t readSample(const std::string& name, const SampleTexts& texts, CalibrationFile& calibration) {
    return readCalibrationFile((name + ".ini").c_str(), true, calibration,
                               [&texts](const std::string& path, std::string& text) {
                                   const auto found = texts.find(path);
                                   if (found == texts.end()) return missingFile;
                                   text = found->second;
                                   return std::uint32_t{0};
                               });
}

}  // namespace torvik::test
