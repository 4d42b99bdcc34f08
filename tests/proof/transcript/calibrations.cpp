// Calibrations of six-axis sensors: from the sample files, and with random arrays.
#include <filesystem>
#include <string>

#include "transcript/bench.h"

namespace torvik::proof {

namespace {

using Doubles = std::vector<double>;
using Words = std::vector<std::uint32_t>;
using Numbers = std::vector<std::int32_t>;
using Bytes = std::vector<std::uint8_t>;
using Text = std::vector<char>;

constexpr const char* samples[] = {
    "version0",        "version2",          "version3-force-and-torques",
    "version3-forces", "version4-matrix-b", "version4-single-axis",
};

void readBack(Run& run, std::uint32_t slot) {
    Transcript& t = run.transcript;
    Text serial(9);
    Doubles scales(2);
    Doubles matrix(256);
    Doubles offsets(3);
    Doubles maxima(64);
    Doubles zeroSignals(64);
    Words format(1);
    t.call("TORVIKreadFTsensorCalArrayA", TORVIKreadFTsensorCalArrayA, 1, slot, serial, scales, matrix, offsets, maxima,
           zeroSignals, format);
    t.call("TORVIKreadFTSensorSerNo", TORVIKreadFTSensorSerNo, 1, slot, serial);
    Doubles matrixB(36);
    Words first(6);
    Words second(6);
    Text model(16);
    t.call("TORVIKreadFTsensorCalArrExt", TORVIKreadFTsensorCalArrExt, 1, format, matrixB, first, second, model);
    Doubles value(1);
    for (const std::uint32_t array : {11U, 12U}) {
        for (std::uint32_t element = 0; element < 3; ++element)
            t.call("TORVIKreadFTSensorCalValue", TORVIKreadFTSensorCalValue, 1, array, element, value);
    }
    Bytes number(3);
    t.call("TORVIKgetFTSensorCalArrNo", TORVIKgetFTSensorCalArrNo, 1, 0, number);
}

// The path is where the files happen to be: it is no argument for the transcript.
void writeFromFile(Run& run, std::uint32_t slot, const std::string& sample) {
    // Written as the system writes it: the folder of the matrix files is taken from it.
    std::filesystem::path path = std::filesystem::path(run.sampleFolder) / (sample + ".ini");
    path.make_preferred();
    const std::int32_t result = TORVIKwriteFTSensorCalFromFile(1, slot, path.string().c_str());
    run.transcript.note("TORVIKwriteFTSensorCalFromFile", 1, result, sample);
}

Doubles randomNumbers(RandomNumbers& random, std::size_t count) {
    Doubles numbers(count);
    for (double& number : numbers)
        number = random.usual();
    return numbers;
}

void writeRandom(Run& run, std::uint32_t slot) {
    Transcript& t = run.transcript;
    RandomNumbers& random = run.random;
    const std::string digits = std::to_string(random.below(100'000'000));
    Text serial(digits.begin(), digits.end());
    serial.push_back('\0');
    Doubles matrix = randomNumbers(random, 36);
    Doubles offsets = randomNumbers(random, 3);
    Doubles maxima = randomNumbers(random, 6);
    const double outScale = random.any();
    const double inScale = random.usual();
    t.call("TORVIKwriteFTSensorCalArray", TORVIKwriteFTSensorCalArray, 1, slot, serial, outScale, inScale, matrix,
           offsets, maxima);
    t.call("TORVIKstoreFTSensorCal", TORVIKstoreFTSensorCal, 1, slot);
    Doubles scales = randomNumbers(random, 2);
    Doubles zeroSignals = randomNumbers(random, 6);
    t.call("TORVIKwriteFTsensorCalArrayA", TORVIKwriteFTsensorCalArrayA, 1, slot, serial, scales, matrix, offsets,
           maxima, zeroSignals, 0);
    Doubles matrixB = randomNumbers(random, 36);
    Words first(6);
    Words second(6);
    for (std::size_t i = 0; i < 6; ++i) {
        first[i] = random.below(6);
        second[i] = random.below(6);
    }
    Text model{'S', 'I', 'X', '-', '2', '0', '0', 'N', '\0'};
    t.call("TORVIKwriteFTsensorCalArrExt", TORVIKwriteFTsensorCalArrExt, 1, 1, matrixB, first, second, model);
    Numbers units{1, 2, 3, 9, 33, 46};
    Numbers date{2025, 11, 21};
    Doubles info{-static_cast<double>(slot) - 1, 1};
    t.call("TORVIKwriteFTsensorCalArrInfo", TORVIKwriteFTsensorCalArrInfo, 1, units, date, info);
    t.call("TORVIKsetFTarrayToRead", TORVIKsetFTarrayToRead, 1, slot);
    Text serialRead(9);
    Doubles outScaleRead(1);
    Doubles inScaleRead(1);
    t.call("TORVIKreadFTSensorCalArray", TORVIKreadFTSensorCalArray, 1, slot, serialRead, outScaleRead, inScaleRead,
           matrix, offsets, maxima);
    t.call("TORVIKsetFTSensorCalArrNo", TORVIKsetFTSensorCalArrNo, 1, slot);
}

}  // namespace

void recordCalibrations(Run& run) {
    for (const char* const firmware : {"0x00040000", "0x0003002F", "0x0003002E"}) {
        openBench(run, amplifier(std::string("firmware = ") + firmware));
        for (std::uint32_t slot = 0; const char* const sample : samples) {
            writeFromFile(run, slot, sample);
            readBack(run, slot++);
        }
        for (std::uint32_t i = 0; i < 3 * run.size; ++i) {
            writeRandom(run, i % 100);
            readBack(run, i % 100);
        }
    }
}

}  // namespace torvik::proof
