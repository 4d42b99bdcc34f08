// The bytes on the wire: parameters of commands, answers, big-endian numbers.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace torvik {

constexpr std::uint16_t readBigEndian16(std::span<const std::uint8_t, 2> bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

constexpr std::uint32_t readBigEndian32(std::span<const std::uint8_t, 4> bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

// The double of the same value as a float's bits. Works on the bits, so that it raises no floating-point exception even
// where the host has unmasked them; a signalling NaN becomes quiet.
constexpr double widenFloat(std::uint32_t bits) {
    constexpr std::uint32_t mantissaMask = 0x007FFFFF;
    constexpr std::uint64_t quietBit = std::uint64_t{1} << 51;
    constexpr double smallestFloat = 0x1p-149;
    const std::uint64_t sign = std::uint64_t{bits >> 31} << 63;
    const std::uint32_t exponent = bits >> 23 & 0xFF;
    const std::uint64_t mantissa = std::uint64_t{bits & mantissaMask} << 29;
    if (exponent == 0xFF) {
        const std::uint64_t quiet = mantissa != 0 ? quietBit : 0;
        return std::bit_cast<double>(sign | std::uint64_t{0x7FF} << 52 | mantissa | quiet);
    }
    if (exponent == 0) {
        const double magnitude = static_cast<double>(bits & mantissaMask) * smallestFloat;
        return std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) | sign);
    }
    return std::bit_cast<double>(sign | (std::uint64_t{exponent} + 1023 - 127) << 52 | mantissa);
}

// The bits of the float nearest to a double, ties to even, as the processor rounds. Works on the bits, for the same
// reason.
constexpr std::uint32_t narrowToFloat(double value) {
    constexpr std::uint64_t hiddenBit = std::uint64_t{1} << 52;
    constexpr std::uint32_t infinity = 0x7F800000;
    constexpr int droppedBits = 29;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::uint32_t sign = static_cast<std::uint32_t>(bits >> 63) << 31;
    const std::uint64_t mantissa = bits & (hiddenBit - 1);
    const int exponent = static_cast<int>(bits >> 52 & 0x7FF);
    if (exponent == 0x7FF) {
        const std::uint32_t quietNan = 0x00400000 | static_cast<std::uint32_t>(mantissa >> droppedBits);
        return sign | infinity | (mantissa != 0 ? quietNan : 0);
    }
    const int narrowExponent = exponent - 1023 + 127;
    if (narrowExponent >= 0xFF) return sign | infinity;
    const bool denormal = narrowExponent <= 0;
    const int shift = denormal ? droppedBits + 1 - narrowExponent : droppedBits;
    if (shift > 54) return sign;
    const std::uint64_t whole = denormal ? mantissa | hiddenBit : mantissa;
    const std::uint64_t rest = whole & ((std::uint64_t{1} << shift) - 1);
    const std::uint64_t half = std::uint64_t{1} << (shift - 1);
    auto result = static_cast<std::uint32_t>(whole >> shift);
    if (!denormal) result |= static_cast<std::uint32_t>(narrowExponent) << 23;
    // A carry out of the mantissa goes into the exponent, where it belongs.
    if (rest > half || (rest == half && (result & 1) != 0)) ++result;
    return sign | result;
}

// Collects the parameter bytes of one command, at most six.
class Parameters {
  public:
    static constexpr std::size_t limit = 6;

    constexpr Parameters& u8(std::uint8_t value) {
        bytes_[length_++] = value;
        return *this;
    }

    constexpr Parameters& u16(std::uint16_t value) {
        return u8(static_cast<std::uint8_t>(value >> 8)).u8(static_cast<std::uint8_t>(value));
    }

    constexpr Parameters& u32(std::uint32_t value) {
        return u16(static_cast<std::uint16_t>(value >> 16)).u16(static_cast<std::uint16_t>(value));
    }

    constexpr Parameters& f32(double value) { return u32(narrowToFloat(value)); }

    constexpr std::span<const std::uint8_t> bytes() const { return {bytes_.data(), length_}; }

  private:
    std::array<std::uint8_t, limit> bytes_{};
    std::size_t length_ = 0;
};

// The eight bytes of one answer frame.
class AnswerView {
  public:
    constexpr explicit AnswerView(const std::array<std::uint8_t, 8>& bytes) : bytes_(bytes) {}

    constexpr std::uint8_t status() const { return bytes_[1]; }
    constexpr bool refused() const { return status() >= 0x40; }

    // All eight.
    constexpr std::span<const std::uint8_t, 8> bytes() const { return bytes_; }

    // The six data bytes.
    constexpr std::span<const std::uint8_t, 6> data() const { return std::span(bytes_).subspan<2, 6>(); }
    constexpr std::uint8_t byte(std::size_t index) const { return bytes_[index]; }
    constexpr std::uint16_t u16() const { return readBigEndian16(std::span(bytes_).subspan<2, 2>()); }
    constexpr double f32() const { return widenFloat(u32()); }
    constexpr std::uint32_t u32() const { return readBigEndian32(std::span(bytes_).subspan<2, 4>()); }

  private:
    std::array<std::uint8_t, 8> bytes_;
};

}  // namespace torvik
