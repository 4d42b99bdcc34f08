// Loading a calibration file into an amplifier whose answers the test gives.
#pragma once

#include "calib/calibration_bench.h"
#include "calib/calibration_text.h"

namespace torvik::test {

inline constexpr std::uint32_t contentError = 0x30000108;

// What a calibration file has beside its matrix and maxima.
enum class UnitKeys { none, byOutput, byKind };
struct FileShape {
    int version = 4;
    int inputs = 6;
    int outputs = 6;
    bool matrixB = false;
    bool date = false;
    UnitKeys units = UnitKeys::none;
};

class FromFileBench : public CalibrationBench {
  protected:
    void SetUp() override;

    static CalibrationText fileOf(const FileShape& shape);

    // All frames of its loading into slot 2.
    static Frames framesOf(const FileShape& shape, std::uint32_t firmware, bool streaming = false);

    // The two parts of it: before the arrays, and the arrays.
    static Frames& extension(Frames& frames, const FileShape& shape, std::uint32_t firmware, bool streaming = false);
    static Frames& arrays(Frames& frames, const FileShape& shape, std::uint32_t firmware, bool streaming = false);

    std::int32_t load(const CalibrationText& text);

    CalibrationFolder folder;
};

}  // namespace torvik::test
