#include "calib/calibration_text.h"

#include <algorithm>
#include <array>
#include <fstream>

namespace torvik::test {

CalibrationText& CalibrationText::set(std::string_view section, std::string_view key, std::string_view value) {
    auto place = std::ranges::find(sections_, section, &Section::name);
    if (place == sections_.end()) place = sections_.insert(place, {std::string(section), {}});
    auto line = std::ranges::find(place->lines, key, &Line::key);
    if (line == place->lines.end()) line = place->lines.insert(line, {std::string(key), {}});
    line->value = value;
    return *this;
}

CalibrationText& CalibrationText::remove(std::string_view section, std::string_view key) {
    for (Section& place : sections_) {
        if (place.name == section) std::erase_if(place.lines, [key](const Line& line) { return line.key == key; });
    }
    return *this;
}

std::string CalibrationText::str() const {
    std::string text;
    for (const Section& section : sections_) {
        text += "[" + section.name + "]\n";
        for (const Line& line : section.lines)
            text += line.key + "=" + line.value + "\n";
    }
    return text;
}

CalibrationText completeFile(int version, int inputs, int outputs) {
    constexpr std::array oldMaxima = {"NxMax", "NyMax", "NzMax", "NmXMax", "NmyMax", "NmzMax"};
    constexpr std::array maxima = {"FxMax", "FyMax", "FzMax", "MxMax", "MyMax", "MzMax"};
    CalibrationText text;
    if (version > 0) text.set("ThisFile", "Version", std::to_string(version));
    text.set("SensorPara", "sn", "SN-00012345");
    text.set("SensorPara", "Matrix", "matrix.txt");
    text.set("SensorPara", "OutScaleFactor", "4.5");
    text.set("SensorPara", "InScaleFactor", "1,25");
    if (version >= 3) {
        text.set("SensorPara", "NumberOfInputs", std::to_string(inputs));
        text.set("SensorPara", "NumberOfOutputs", std::to_string(outputs));
    }
    const auto& keys = version >= 3 ? maxima : oldMaxima;
    for (std::size_t i = 0; i < static_cast<std::size_t>(outputs); ++i)
        text.set("SensorPara", keys[i], std::to_string(10 * (i + 1)));
    if (version >= 4) text.set("SensorPara", "SensorModel", "SIX-200N-5Nm");
    return text;
}

std::string matrixText(int inputs, int outputs) {
    std::string text;
    for (int row = 1; row <= outputs; ++row) {
        for (int column = 1; column <= inputs; ++column)
            text += (column > 1 ? "\t" : "") + std::to_string(row) + "." + std::to_string(column);
        text += "\n";
    }
    return text;
}

std::string CalibrationFolder::path(std::string_view name) const {
    return (folder_.path() / name).make_preferred().string();
}

void CalibrationFolder::write(std::string_view name, std::string_view text) const {
    std::ofstream file(folder_.path() / name, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace torvik::test
