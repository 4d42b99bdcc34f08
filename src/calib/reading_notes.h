// What the reading of a calibration file has to say: to a report, or by ending it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "calib/calibration_report.h"
#include "calib/ucf_parser.h"
#include "core/error_codes.h"

namespace torvik {

// Ends the reading with a code.
struct ReadingFailure {
    std::uint32_t code;
};

struct Key {
    std::string_view section;
    std::string_view name;
};

// Without a report, nothing is told, and the first refusal ends the reading; with one, the reading goes on.
class ReadingNotes {
  public:
    // `file` and `report` must outlive this.
    ReadingNotes(const UCFparser& file, const char* path, CalibrationReport* report)
        : file_(file), path_(path), report_(report) {}

    bool wanted() const { return report_ != nullptr; }

    // What is taken for a key. `fault`: why that is not what stands in the file; empty when it is.
    void tell(Key key, const std::string& taken, std::string_view fault = {});

    // A key that the file is refused for.
    void refuse(Key key, std::string_view fault, std::uint32_t code = error::fileContent);

    // The same for what ends a loading only after the reading: nothing happens without a report.
    void refuseLater(Key key, std::string_view fault, std::uint32_t code);

    // The same of a matrix file, of which a row is a line or missing (line 0).
    void tellRow(const std::string& path, std::size_t line, std::size_t row, std::span<const double> numbers,
                 std::string_view fault);
    void refuseRow(const std::string& path, std::size_t line, std::size_t row, std::string_view fault);
    void refuseFile(const std::string& path, std::uint32_t code);

  private:
    void add(Finding finding);

    const UCFparser& file_;
    std::string path_;
    CalibrationReport* report_;
};

}  // namespace torvik
