// What the chapters of the transcript share: a bench of simulated amplifiers that send only what is asked of them.
#pragma once

#include <cstdint>
#include <string>

#include "transcript/random_numbers.h"
#include "transcript/transcript.h"

namespace torvik::proof {

struct Run {
    Transcript& transcript;
    RandomNumbers random;
    std::uint32_t size;        // how much of everything
    std::string sampleFolder;  // where the calibration files are
};

inline constexpr std::uint32_t kind16 = TORVIK_FLAG_PROTOCOL_KIND_16;
inline constexpr std::uint32_t kind32 = TORVIK_FLAG_PROTOCOL_KIND_32;

// Closes everything and opens device 1 of this bench; its stream is held.
void openBench(Run& run, const std::string& toml, std::uint32_t protocolFlag = kind16);

// The settings of a bench's only amplifier, one "key = value" in a line.
std::string amplifier(const std::string& settings);

// Lets the device send so many sets, and waits until they can be read.
void sendSets(std::uint32_t sets);
// Waits until so many sets can be read.
void awaitSets(std::int32_t sets);

// The chapters.
void recordTables(Run& run);
void recordSettings(Run& run);
void recordFilters(Run& run);
void recordCalibrations(Run& run);
void recordValues(Run& run);

}  // namespace torvik::proof
