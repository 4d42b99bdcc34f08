// The text files of a simulation, written where a test may write.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "filter/filter_bench.h"
#include "filter/response_files.h"
#include "support/temporary_folder.h"

namespace torvik::test {

inline constexpr double fs = 1000;
inline constexpr std::uint32_t iirInFixedPoint = 0;
inline constexpr std::uint32_t firWord = 128;

// In text mode: the system's own line ends are read as one character.
inline std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

class ResponseFiles : public FilterTest {
  protected:
    void SetUp() override {
        std::filesystem::remove(file);
        make(lowPassOf(option::butterworth, 4, 0.1));
    }
    void TearDown() override { std::filesystem::remove(file); }

    std::uint32_t step(std::int32_t points, std::uint32_t kindWord = singlePrecision) {
        return writeStepResponse(filter, kindWord, 0, 0.5, fs, points, file.c_str());
    }
    std::uint32_t frequency(double fStart, double fStop, std::int32_t points,
                            std::uint32_t kindWord = singlePrecision) {
        return writeFrequencyResponse(filter, kindWord, fStart, fStop, fs, points, file.c_str());
    }

    std::string content() const { return contentOf(file); }
    bool fileThere() const { return std::filesystem::exists(file); }

    std::vector<std::string> lines() const {
        std::istringstream stream(content());
        std::vector<std::string> all;
        for (std::string line; std::getline(stream, line);)
            all.push_back(line);
        return all;
    }

    // What follows the column line.
    std::string rows() const {
        const std::string all = content();
        constexpr std::string_view columns = "f [Hz]\tAmplitude [dB]\n";
        const std::size_t place = all.find(columns);
        EXPECT_NE(place, std::string::npos);
        return all.substr(place + columns.size());
    }

    const std::string file =
        temporaryFile(testing::UnitTest::GetInstance()->current_test_info()->name() + std::string(".txt"));
};

}  // namespace torvik::test
