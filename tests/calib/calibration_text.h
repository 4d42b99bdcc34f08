// Calibration files that tests write: a complete one of each version, of which a test changes what it is about.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/temporary_folder.h"

namespace torvik::test {

// Sections and keys in the order in which they were set first.
class CalibrationText {
  public:
    CalibrationText& set(std::string_view section, std::string_view key, std::string_view value);
    CalibrationText& remove(std::string_view section, std::string_view key);
    std::string str() const;

  private:
    struct Line {
        std::string key;
        std::string value;
    };
    struct Section {
        std::string name;
        std::vector<Line> lines;
    };
    std::vector<Section> sections_;
};

// With all that the version knows except zero signals, offsets, matrix B, date and units. Its matrix file is
// "matrix.txt"; the maxima are 10, 20, ... Version 0 has no section for its version.
CalibrationText completeFile(int version, int inputs = 6, int outputs = 6);

// Lines of numbers: element (row, column) is row + 1 and column + 1 as "1.1", "1.2" and so on.
std::string matrixText(int inputs, int outputs);

// A folder of its own for files, which is removed with all that is in it.
class CalibrationFolder {
  public:
    // With the system's own separators.
    std::string path(std::string_view name) const;

    // Writes the bytes as they are.
    void write(std::string_view name, std::string_view text) const;

  private:
    TemporaryFolder folder_;
};

}  // namespace torvik::test
