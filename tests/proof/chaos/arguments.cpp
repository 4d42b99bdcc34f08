#include "arguments.h"

#include <array>
#include <climits>
#include <cmath>
#include <limits>

namespace torvik::proof {

Arguments::Arguments(std::uint64_t seed, Kind kind, std::string file, std::string calibration)
    : engine_(seed), kind_(kind), file_(std::move(file)), calibration_(std::move(calibration)) {}

std::uint32_t Arguments::below(std::uint32_t limit) {
    return static_cast<std::uint32_t>(((engine_() >> 32U) * limit) >> 32U);
}

std::int32_t Arguments::device() {
    if (!strangeOnceIn(40)) return static_cast<std::int32_t>(1 + below(deviceCount));
    constexpr std::array<std::int32_t, 8> others = {0, 40, 41, 255, 256 + 7, -1, INT_MIN, INT_MAX};
    return others[below(others.size())];
}

std::uint32_t Arguments::channel() {
    if (usual()) return 1 + below(6);
    return onceIn(20) ? number() : below(9);
}

std::uint32_t Arguments::number() {
    constexpr std::array<std::uint32_t, 6> edges = {0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 0x10000, 0xFFFF, 0x100};
    if (usual()) return 1 + below(2);
    switch (below(16)) {
        case 0:
            return edges[below(edges.size())];
        case 1:
            return below(0xFFFFFFFF);
        case 2:
            return below(256);
        case 3:
        case 4:
        case 5:
        case 6:
            return 1 + below(2);
        default:
            return below(17);
    }
}

double Arguments::real() {
    using Limits = std::numeric_limits<double>;
    constexpr std::array<double, 10> edges = {0.0,
                                              -1.0,
                                              1e-310,
                                              1e-30,
                                              1e30,
                                              1e300,
                                              Limits::infinity(),
                                              -Limits::infinity(),
                                              Limits::quiet_NaN(),
                                              Limits::signaling_NaN()};
    if (strangeOnceIn(8)) return edges[below(edges.size())];
    return (1 + below(100'000)) / 1000.0;
}

double* Arguments::reals(std::size_t count) {
    double* const values = array<double>(count);
    for (std::size_t i = 0; values != nullptr && i < count; ++i)
        values[i] = real();
    return values;
}

std::uint32_t* Arguments::numbers(std::size_t count) {
    std::uint32_t* const values = array<std::uint32_t>(count);
    for (std::size_t i = 0; values != nullptr && i < count; ++i)
        values[i] = strangeOnceIn(8) ? number() : below(6);
    return values;
}

char* Arguments::text(std::uint32_t longest) {
    const std::uint32_t length = below(longest + 1);
    char* const characters = array<char>(length + 1);
    if (characters == nullptr) return nullptr;
    for (std::uint32_t i = 0; i < length; ++i)
        characters[i] = static_cast<char>(usual() || onceIn(2) ? '0' + below(10) : 1 + below(255));
    characters[length] = '\0';
    return characters;
}

const char* Arguments::outputFile() {
    if (strangeOnceIn(16)) return nullptr;
    return strangeOnceIn(8) ? "no-such-folder/response.txt" : file_.c_str();
}

const char* Arguments::calibrationFile() {
    if (strangeOnceIn(8)) return nullptr;
    return strangeOnceIn(4) ? "no-such-file.ini" : calibration_.c_str();
}

std::byte* Arguments::memory(std::size_t size) {
    memory_.push_back(std::make_unique<std::byte[]>(size));
    std::byte* const begin = memory_.back().get();
    for (std::byte& place : std::span(begin, size))
        place = static_cast<std::byte>(below(256));
    return begin;
}

}  // namespace torvik::proof
