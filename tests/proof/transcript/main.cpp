// transcript SEED SIZE SAMPLE_FOLDER: calls every export against the virtual adapter and writes what it sees to
// transcript.txt and to response files in the working folder. Equal arguments give equal files on every system.
#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "transcript/bench.h"

namespace {

std::uint32_t numberOf(const char* text) {
    std::uint32_t number = 0;
    const auto [stop, error] = std::from_chars(text, text + std::strlen(text), number);
    if (error != std::errc{} || *stop != '\0' || number == 0) throw std::runtime_error("not a number above 0");
    return number;
}

void record(const char* seed, const char* size, const char* sampleFolder) {
    torvik::proof::Transcript transcript("transcript.txt");
    torvik::proof::Run run{transcript, torvik::proof::RandomNumbers(numberOf(seed)), numberOf(size), sampleFolder};
    transcript.section("tables");
    recordTables(run);
    transcript.section("settings");
    recordSettings(run);
    transcript.section("filters");
    recordFilters(run);
    transcript.section("calibrations");
    recordCalibrations(run);
    transcript.section("values");
    recordValues(run);
    TORVIKrelease(0);
    transcript.finish();
}

}  // namespace

int main(int count, char* arguments[]) {
    if (count != 4) {
        std::fputs("usage: transcript SEED SIZE SAMPLE_FOLDER\n", stderr);
        return 2;
    }
    try {
        record(arguments[1], arguments[2], arguments[3]);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "transcript: %s\n", failure.what());
        return 1;
    }
}
