#include "calib/from_file_bench.h"

namespace torvik::test {

namespace {

double numberAt(int row, int column) {
    return (10 * (row + 1) + column + 1) / 10.0;
}

std::vector<double> matrixOf(int inputs, int outputs) {
    std::vector<double> elements;
    for (int row = 0; row < outputs; ++row) {
        for (int column = 0; column < inputs; ++column)
            elements.push_back(numberAt(row, column));
    }
    return elements;
}

double wordOf(const FileShape& shape) {
    if (shape.inputs < 6 || shape.outputs < 6) return (shape.outputs - 1) * 0x1000 + (shape.inputs - 1) * 0x10000 + 2;
    return shape.matrixB && shape.version >= 4 ? 1 : 0;
}

}  // namespace

void FromFileBench::SetUp() {
    CalibrationBench::SetUp();
    folder.write("second.txt", matrixText(6, 6));
}

CalibrationText FromFileBench::fileOf(const FileShape& shape) {
    CalibrationText text = completeFile(shape.version, shape.inputs, shape.outputs);
    text.set("SensorPara", "ZeroSignal1", "0.125").set("GeometricalOffset", "OffsetZ", "7.5");
    if (shape.matrixB) {
        text.set("Matrix_B", "MatrixB", "second.txt");
        for (int i = 0; i < 6; ++i) {
            text.set("Matrix_B", "FacB1_" + std::to_string(i), std::to_string(i));
            text.set("Matrix_B", "FacB2_" + std::to_string(i), std::to_string(5 - i));
        }
    }
    if (shape.date) text.set("SensorPara", "calibrationDate", "21.11.2025");
    if (shape.units == UnitKeys::byOutput) {
        for (int i = 0; i < 6; ++i)
            text.set("SensorPara", "Unit_" + std::to_string(i), "kN");
    }
    if (shape.units == UnitKeys::byKind) text.set("SensorPara", "forceUnit", "N").set("SensorPara", "torqueUnit", "Nm");
    return text;
}

Frames& FromFileBench::extension(Frames& frames, const FileShape& shape, std::uint32_t firmware, bool streaming) {
    if (firmware >= firmwareWithFormatWord) {
        if (streaming) frames.stopStream();
        frames.element(7, 0, wordOf(shape));
        if (shape.matrixB && shape.version >= 4) {
            frames.array(8, matrixOf(6, 6));
            for (unsigned i = 0; i < 6; ++i)
                frames.element(9, i, i).element(10, i, 5 - i);
        }
        if (shape.version >= 4 && firmware >= firmwareWithModelName) frames.model("SIX-200N-5Nm");
        if (streaming) frames.startStream();
    }
    if (shape.date) frames.array(12, {2025, 11, 21});
    if (shape.units == UnitKeys::none || shape.version < 3) return frames;
    for (unsigned i = 0; i < static_cast<unsigned>(shape.outputs); ++i) {
        const double ofKind = i < 3 ? 3 : 18;  // N and Nm
        frames.element(11, i, shape.units == UnitKeys::byOutput ? 9 : ofKind);
    }
    return frames;
}

Frames& FromFileBench::arrays(Frames& frames, const FileShape& shape, std::uint32_t firmware, bool streaming) {
    const bool hasWord = firmware >= firmwareWithFormatWord;
    std::vector<double> matrix = matrixOf(shape.inputs, shape.outputs);
    std::vector<double> maxima;
    for (int i = 1; i <= shape.outputs; ++i)
        maxima.push_back(10 * i);
    if (!hasWord) {
        matrix.resize(36);
        maxima.resize(6);
    }
    if (streaming) frames.stopStream();
    if (hasWord) frames.element(7, 0, wordOf(shape));
    frames.element(1, 0, 4.5).element(5, 0, 1.25).array(2, matrix).array(3, {0, 0, 7.5}).array(4, maxima);
    if (hasWord) {
        std::vector<double> zeroSignals(static_cast<std::size_t>(shape.inputs));
        zeroSignals[1] = 0.125;
        frames.array(6, zeroSignals);
    }
    frames.serial(12345);
    if (streaming) frames.startStream();
    return frames.store(2);
}

Frames FromFileBench::framesOf(const FileShape& shape, std::uint32_t firmware, bool streaming) {
    Frames frames;
    return arrays(extension(frames, shape, firmware, streaming), shape, firmware, streaming);
}

std::int32_t FromFileBench::load(const CalibrationText& text) {
    folder.write("sensor.ini", text.str());
    return TORVIKwriteFTSensorCalFromFile(device, 2, folder.path("sensor.ini").c_str());
}

}  // namespace torvik::test
