// Random arguments of one thread's calls: usual ones mostly, but also null pointers and numbers far out of range; or
// nothing but usual ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace torvik::proof {

inline constexpr std::int32_t deviceCount = 39;

// CAN identifiers of amplifier 0..38 in the rig of the run.
constexpr std::uint32_t commandIdOf(std::uint32_t amplifier) {
    return 0x100 + 3 * amplifier;
}

class Arguments {
  public:
    enum class Kind { any, usual };

    // `file`: where files may be written; `calibration`: a calibration file that is good.
    Arguments(std::uint64_t seed, Kind kind, std::string file, std::string calibration);

    bool usual() const { return kind_ == Kind::usual; }
    // True once in so many cases.
    bool onceIn(std::uint32_t cases) { return below(cases) == 0; }
    // The same for what is not usual.
    bool strangeOnceIn(std::uint32_t cases) { return onceIn(cases) && !usual(); }
    std::uint32_t below(std::uint32_t limit);

    std::int32_t device();
    std::uint32_t channel();
    // Small as a rule; up to all their bits.
    std::uint8_t byte() { return static_cast<std::uint8_t>(below(strangeOnceIn(4) ? 256 : 4)); }
    std::uint32_t number();
    double real();

    // Memory of exactly `count` elements with random contents, until the next call begins; now and then null.
    template <class Value>
    Value* array(std::size_t count) {
        return strangeOnceIn(32) ? nullptr : reinterpret_cast<Value*>(memory(count * sizeof(Value)));
    }
    double* reals(std::size_t count);
    std::uint32_t* numbers(std::size_t count);
    // A text of up to `longest` characters, or null.
    char* text(std::uint32_t longest);
    const char* outputFile();
    const char* calibrationFile();

    // The memory of the call before is given back.
    void beginCall() { memory_.clear(); }

  private:
    std::byte* memory(std::size_t size);

    std::mt19937_64 engine_;
    Kind kind_;
    std::string file_;
    std::string calibration_;
    std::vector<std::unique_ptr<std::byte[]>> memory_;
};

}  // namespace torvik::proof
