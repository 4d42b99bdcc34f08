// Reads one design per line from standard input and writes one line of results for each:
//   options order alpha1 alpha2 ripple q alphaZ poleMask
//   code gain x... | y...
// Numbers are exact: the shortest text that reads back the same.
#include <array>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

#include "filter/filter_design.h"

namespace {

class Fields {
  public:
    explicit Fields(std::string_view line) : rest_(line) {}

    template <class Number>
    Number take() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size()));
        Number number{};
        const std::from_chars_result read = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        valid_ = valid_ && read.ec == std::errc();
        rest_.remove_prefix(static_cast<std::size_t>(read.ptr - rest_.data()));
        return number;
    }

    bool valid() const { return valid_; }

  private:
    std::string_view rest_;
    bool valid_ = true;
};

void append(std::string& line, double number) {
    std::array<char, 32> digits{};
    const std::to_chars_result written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    line += ' ';
    line.append(digits.data(), written.ptr);
}

std::string resultOf(const torvik::Dfilter& filter, std::uint32_t code) {
    std::string line = std::to_string(code);
    append(line, filter.gain);
    if (code != 0) return line;
    for (std::size_t i = 0; i <= filter.zZeros.count; ++i)
        append(line, filter.xCoefficients[i]);
    line += " |";
    for (std::size_t i = 0; i < filter.zPoles.count; ++i)
        append(line, filter.yCoefficients[i]);
    return line;
}

}  // namespace

int main() {
    torvik::Dfilter filter;
    for (std::string line; std::getline(std::cin, line);) {
        Fields fields(line);
        const auto options = fields.take<std::uint32_t>();
        const auto order = fields.take<std::int32_t>();
        std::array<double, 2> cutoffs{};
        for (double& cutoff : cutoffs)
            cutoff = fields.take<double>();
        torvik::DesignValues values;
        values.chebyshevRipple = fields.take<double>();
        values.qFactor = fields.take<double>();
        values.alphaZ = fields.take<double>();
        values.poleMask = fields.take<std::uint32_t>();
        if (!fields.valid()) {
            std::fprintf(stderr, "not a design: %s\n", line.c_str());
            return 1;
        }
        const std::uint32_t code = torvik::designFilter(filter, options, order, cutoffs, values);
        std::puts(resultOf(filter, code).c_str());
    }
    return 0;
}
