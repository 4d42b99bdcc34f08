// Measures the filter designer and the writing of response files, one order a line from standard input:
//   design COUNT OPTIONS ORDER ALPHA1 ALPHA2   designs so many times; prints the seconds of one and the coefficients
//   response FILE                              a frequency response of 1,000 lines; prints the seconds
//   writing FILE                               reads such a file and writes it anew; prints the seconds of the writing
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "filter/filter_design.h"
#include "filter/filter_options.h"
#include "filter/response_file.h"
#include "filter/response_files.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr double fs = 1000;
constexpr double fStart = 1;
constexpr double fStop = 499;  // at 500 Hz the test signal is nothing but rounding
constexpr std::size_t lines = 1000;

double secondsSince(Clock::time_point begun) {
    return std::chrono::duration<double>(Clock::now() - begun).count();
}

bool design(std::istream& order) {
    int count = 0;
    std::uint32_t options = 0;
    std::int32_t filterOrder = 0;
    double cutoffs[2] = {};
    order >> count >> options >> filterOrder >> cutoffs[0] >> cutoffs[1];
    if (!order || count < 1) return false;
    torvik::Dfilter filter;
    std::uint32_t failures = 0;
    const auto begun = Clock::now();
    for (int i = 0; i < count; ++i)
        failures |= torvik::designFilter(filter, options, filterOrder, cutoffs);
    std::printf("%.9g", secondsSince(begun) / count);
    if (failures != 0) return false;
    for (std::size_t i = 0; i <= filter.zZeros.count; ++i)
        std::printf(" %.17g", filter.xCoefficients[i]);
    for (std::size_t i = 0; i < filter.zPoles.count; ++i)
        std::printf(" %.17g", filter.yCoefficients[i]);
    return true;
}

bool designLowPass(torvik::Dfilter& filter) {
    using namespace torvik::option;
    constexpr std::uint32_t given = torvik::option::order | torvik::option::cutoffs;
    const double cutoffs[] = {0.1};
    return torvik::designFilter(filter, butterworth | lowPass | given, 4, cutoffs) == 0;
}

bool response(std::istream& order) {
    std::string name;
    torvik::Dfilter filter;
    if (!(order >> name) || !designLowPass(filter)) return false;
    const auto begun = Clock::now();
    const std::uint32_t code = torvik::writeFrequencyResponse(filter, torvik::singlePrecision, fStart, fStop, fs,
                                                              static_cast<std::int32_t>(lines), name.c_str());
    std::printf("%.9g", secondsSince(begun));
    return code == 0;
}

struct Row {
    double frequency;
    double amplitude;
};

bool readRows(const std::string& name, std::vector<Row>& rows) {
    std::ifstream file(name);
    std::string heading;
    std::getline(file, heading);
    std::getline(file, heading);
    for (Row row{}; file >> row.frequency >> row.amplitude;)
        rows.push_back(row);
    return rows.size() == lines;
}

bool writing(std::istream& order) {
    std::string name;
    torvik::Dfilter filter;
    if (!(order >> name) || !designLowPass(filter)) return false;
    std::vector<Row> rows;
    if (!readRows(name, rows) || std::remove(name.c_str()) != 0) return false;
    const auto begun = Clock::now();
    torvik::ResponseFile file(name.c_str(), {});
    file.writeHeading("Frequency", filter, 0, fs);
    file.writeWords("f [Hz]\tAmplitude [dB]\n");
    for (const Row& row : rows)
        file.writeRow(row.frequency, 2, row.amplitude, 2, "\n");
    const std::uint32_t code = file.close();
    std::printf("%.9g", secondsSince(begun));
    return code == 0;
}

bool carryOut(const std::string& line) {
    std::istringstream order(line);
    std::string what;
    order >> what;
    if (what == "design") return design(order);
    if (what == "response") return response(order);
    return what == "writing" && writing(order);
}

}  // namespace

int main() {
    for (std::string line; std::getline(std::cin, line);) {
        if (!carryOut(line)) {
            std::fprintf(stderr, "not carried out: %s\n", line.c_str());
            return 1;
        }
        std::puts("");
        std::fflush(stdout);
    }
    return 0;
}
