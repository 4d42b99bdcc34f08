#include "calib/calibration_bench.h"

#include <bit>
#include <cstdio>

namespace torvik::test {

namespace {

std::string hex(std::initializer_list<unsigned> bytes) {
    std::string text;
    for (const unsigned byte : bytes) {
        std::array<char, 4> piece{};
        std::snprintf(piece.data(), piece.size(), "%s%02X", text.empty() ? "" : " ", byte & 0xFF);
        text += piece.data();
    }
    return text;
}

std::string written(unsigned array, unsigned index, std::uint32_t word) {
    return hex({0x86, 0x48, array, index, word >> 24, word >> 16, word >> 8, word});
}

std::uint32_t bitsOf(double value) {
    return std::bit_cast<std::uint32_t>(static_cast<float>(value));
}

}  // namespace

Frames& Frames::raw(std::string frame) {
    frames_.push_back(std::move(frame));
    return *this;
}

Frames& Frames::element(unsigned array, unsigned index, double value) {
    return raw(written(array, index, bitsOf(value)));
}

Frames& Frames::array(unsigned array, std::span<const double> values) {
    for (std::size_t i = 0; i < values.size(); ++i)
        element(array, static_cast<unsigned>(i), values[i]);
    return *this;
}

Frames& Frames::array(unsigned array, std::initializer_list<double> values) {
    return this->array(array, std::span(values.begin(), values.size()));
}

Frames& Frames::serial(std::uint32_t number) {
    return raw(written(0, 0, number));
}

Frames& Frames::store(unsigned slot) {
    return raw(hex({0x81, 0x7F, slot}));
}

Frames& Frames::model(std::string name) {
    name.resize(16, '\0');
    const auto byte = [&name](std::size_t place) {
        return static_cast<unsigned>(static_cast<unsigned char>(name[place]));
    };
    for (unsigned part = 0; part < 4; ++part) {
        const std::size_t first = 4 * std::size_t{part};
        raw(hex({0x85, 0x1C, part + 1, byte(first), byte(first + 1), byte(first + 2), byte(first + 3)}));
    }
    return *this;
}

Frames& Frames::read(unsigned array, unsigned count) {
    for (unsigned i = 0; i < count; ++i)
        raw(hex({0x82, 0x47, array, i}));
    return *this;
}

Frames& Frames::cut(std::size_t count) {
    frames_.resize(count);
    return *this;
}

void CalibrationBench::SetUp() {
    ParamsBench::SetUp();
    use(newFirmware);
}

void CalibrationBench::use(std::uint32_t firmware, bool streaming) {
    activateAs({.firmware = firmware, .streaming = streaming});
    for (const std::uint32_t command : {0x48U, 0x7DU, 0x7FU, 0x1CU, 0x55U})
        answerWith(command, {0});
}

void CalibrationBench::holdsWord(std::uint32_t word) {
    const auto byte = [word](int place) { return static_cast<std::uint8_t>(word >> (8 * place)); };
    answerWith(0x47, {0, byte(3), byte(2), byte(1), byte(0)}, 1);
}

void CalibrationBench::holds(std::span<const double> values) {
    for (const double value : values)
        holdsWord(bitsOf(value));
}

void CalibrationBench::holds(std::initializer_list<double> values) {
    holds(std::span(values.begin(), values.size()));
}

void CalibrationBench::refuseAfter(std::uint32_t good, std::uint8_t command) {
    virtualClearAnswerRules();
    if (good > 0) answerWith(command, {0}, good);
    answerWith(command, {0x52}, 1);
    for (const std::uint32_t other : {0x48U, 0x7DU, 0x7FU, 0x1CU, 0x55U})
        answerWith(other, {0});
}

void CalibrationBench::expectSent(const Frames& frames) const {
    EXPECT_THAT(takeSent(), testing::ElementsAreArray(frames.all()));
}

std::vector<double> counting(std::size_t count, double first) {
    std::vector<double> values(count);
    for (double& value : values)
        value = first++;
    return values;
}

}  // namespace torvik::test
