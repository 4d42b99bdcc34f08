// A text file of a filter's response, written line by line.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "filter/dfilter.h"
#include "filter/text_buffer.h"
#include "platform/text_file.h"

namespace torvik {

class ResponseFile {
  public:
    // Creates or empties the file. `mustEnd`, which may be empty, ends the waiting for a pipe.
    ResponseFile(const char* fileName, const platform::StopCheck& mustEnd) : file_(fileName, mustEnd) {}

    bool opened() const { return file_.opened(); }

    // `response`: "Step" or "Frequency"; `fs` in Hz.
    void writeHeading(std::string_view response, const Dfilter& filter, std::uint32_t kind, double fs);

    void writeWords(std::string_view words) { file_.write(words); }

    void writeRow(double left, int leftDecimals, double right, int rightDecimals, std::string_view end) {
        line_.fixed(left, leftDecimals).text("\t").fixed(right, rightDecimals).text(end);
        flush();
    }

    // Result: 0, or the code of what the system could not do | 0x31000000.
    std::uint32_t close();

  private:
    void finishHeading(double fs);

    void flush() {
        file_.write(line_.view());
        line_.clear();
    }

    platform::TextFile file_;
    // The longest double has 309 digits before its point; a line has three of them at most.
    std::array<char, 1200> buffer_{};
    TextBuffer line_{buffer_};
};

}  // namespace torvik
