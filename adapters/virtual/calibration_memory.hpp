#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>

namespace virtual_adapter {

// The numbers of the arrays that make up the calibration of a six-axis sensor.
namespace calibration_array {
inline constexpr std::size_t kSerial = 0;  // a whole number; all others hold floats
inline constexpr std::size_t kOutputScale = 1;
inline constexpr std::size_t kMatrix = 2;
inline constexpr std::size_t kOffsets = 3;
inline constexpr std::size_t kMaxima = 4;
inline constexpr std::size_t kInputScale = 5;
inline constexpr std::size_t kZeroSignals = 6;
inline constexpr std::size_t kFormat = 7;
inline constexpr std::size_t kMatrixB = 8;
inline constexpr std::size_t kFirstFactors = 9;
inline constexpr std::size_t kSecondFactors = 10;
inline constexpr std::size_t kUnits = 11;
inline constexpr std::size_t kDate = 12;
}  // namespace calibration_array

// One calibration. In the factory's, forces are the signals themselves.
class SensorCalibration {
  public:
    static constexpr std::size_t kAxes = 6;
    static constexpr std::array<std::size_t, 13> kElements{1, 1, 36, 3, 6, 1, 6, 1, 36, 6, 6, 6, 3};
    static constexpr std::size_t kNamePartSize = 4;
    static constexpr std::size_t kNameParts = 4;

    SensorCalibration();

    [[nodiscard]] static bool has(std::size_t array, std::size_t element) {
        return array < kElements.size() && element < kElements[array];
    }
    // An element's 32 bits.
    [[nodiscard]] std::uint32_t& word(std::size_t array, std::size_t element) {
        return words_[firstOf(array) + element];
    }
    [[nodiscard]] std::uint32_t word(std::size_t array, std::size_t element) const {
        return words_[firstOf(array) + element];
    }
    [[nodiscard]] double number(std::size_t array, std::size_t element = 0) const {
        return static_cast<double>(std::bit_cast<float>(word(array, element)));
    }
    // Nothing when the element holds no whole number of 0..highest.
    [[nodiscard]] std::optional<std::uint32_t> whole(std::size_t array, std::size_t element,
                                                     std::uint32_t highest) const;

    std::array<std::array<std::uint8_t, kNamePartSize>, kNameParts> modelName{};

  private:
    static constexpr std::size_t firstOf(std::size_t array) {
        return std::accumulate(kElements.begin(), kElements.begin() + static_cast<std::ptrdiff_t>(array),
                               std::size_t{0});
    }
    static constexpr std::size_t kWords = std::accumulate(kElements.begin(), kElements.end(), std::size_t{0});

    std::array<std::uint32_t, kWords> words_{};
};

// The numbered slots, and the arrays in work: those are read and written element by element, and come from a slot and
// go into one as a whole. The stream uses the active slot, whatever is in work.
class CalibrationMemory {
  public:
    static constexpr std::size_t kSlots = 128;

    [[nodiscard]] SensorCalibration& inWork() { return inWork_; }
    [[nodiscard]] std::uint8_t activeSlot() const { return activeSlot_; }
    [[nodiscard]] const SensorCalibration& active() const { return slots_[activeSlot_]; }

    void select(std::uint8_t slot) { inWork_ = slots_.at(slot); }
    void activate(std::uint8_t slot) { activeSlot_ = slot; }
    // What was stored last becomes the active calibration.
    void store(std::uint8_t slot) {
        slots_.at(slot) = inWork_;
        activeSlot_ = slot;
    }
    // A reset forgets what was not stored.
    void restart() { inWork_ = active(); }

  private:
    std::array<SensorCalibration, kSlots> slots_;
    SensorCalibration inWork_;
    std::uint8_t activeSlot_ = 0;
};

}  // namespace virtual_adapter
