// Step and frequency response of a designed filter as text files with tab-separated columns.
#pragma once

#include <cstdint>

#include "filter/dfilter.h"
#include "platform/file_stream.h"

namespace torvik {

// The bit of a kind word that chooses single precision; the kind proper is then the low byte, else the whole word: 128
// FIR, any other IIR.
inline constexpr std::uint32_t singlePrecision = 0x8000;

// Asked between two points of a long response and while a pipe takes nothing; once it is true, the response ends.
using platform::StopCheck;

// The levels are those of a step in fixed point (full scale is 1). `fs` in Hz, at least 1. `points`: at least 20; not
// more than 1000 lines are written. `fileName`: narrow, as the system takes it.
// Result: 0; 0x30000202 an argument, 0x30000201 no filter of that kind, the system's error code | 0x31000000 when the
// file cannot be written.
std::uint32_t writeStepResponse(Dfilter& filter, std::uint32_t kindWord, double levelBefore, double levelAfter,
                                double fs, std::int32_t points, const char* fileName, const StopCheck& mustEnd = {});

// From fStart (below fs) to fStop (at most fs), in Hz. `points`: at least 1. The rest as above; 0x30000113 when
// `mustEnd`, which may be empty, ended it: the file then has the points up to there.
std::uint32_t writeFrequencyResponse(Dfilter& filter, std::uint32_t kindWord, double fStart, double fStop, double fs,
                                     std::int32_t points, const char* fileName, const StopCheck& mustEnd = {});

}  // namespace torvik
