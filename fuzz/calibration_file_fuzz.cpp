// The reader of calibration files and of the matrix files they name. An input is up to three texts with a record
// separator (0x1E) between them: the calibration file, and the files it asks for in their order.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "calibration_invariants.h"

namespace {

constexpr char separator = '\x1E';
constexpr std::uint32_t missing = 0x20000002;

std::vector<std::string> split(std::string_view input) {
    std::vector<std::string> texts;
    for (;;) {
        const std::size_t end = input.find(separator);
        texts.emplace_back(input.substr(0, end));
        if (end == std::string_view::npos) return texts;
        input.remove_prefix(end + 1);
    }
}

void check(const std::vector<std::string>& texts, bool extended) {
    std::size_t asked = 0;
    torvik::CalibrationFile calibration;
    const auto files = [&](const std::string&, std::string& text) {
        if (asked >= texts.size()) return missing;
        text = texts[asked++];
        return std::uint32_t{0};
    };
    const std::uint32_t result = torvik::readCalibrationFile("folder/file.ini", extended, calibration, files);
    if (const char* const rule = torvik::brokenRule(result, calibration, missing); rule != nullptr) {
        std::fprintf(stderr, "broken: %s\n", rule);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> texts = split({reinterpret_cast<const char*>(data), size});
    check(texts, true);
    check(texts, false);
    return 0;
}
