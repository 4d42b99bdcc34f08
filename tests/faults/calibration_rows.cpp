// Exports of six-axis calibrations. The simulated device streams and knows everything, and its elements read as 1.0,
// which is also the format word of a calibration with matrix B.
#include "TORVIK.h"
#include "calib/calibration_text.h"
#include "faults/fault_row.h"

namespace torvik::test {

namespace {

using u8 = std::uint8_t;
using u32 = std::uint32_t;

constexpr u8 readElement = 0x47;
constexpr u8 writeElement = 0x48;
constexpr u8 selectSlot = 0x7D;
constexpr u8 storeSlot = 0x7F;
constexpr int matrixElements = 36;
constexpr int axes = 6;

std::array<double, 36> ones = [] {
    std::array<double, 36> numbers{};
    numbers.fill(1);
    return numbers;
}();
std::array<double, 2> scales = {2, 4};
std::array<std::uint32_t, 6> factors = {0, 1, 2, 3, 4, 5};
char serialText[] = "SN-12345";
char modelName[] = "SIX-200N-5Nm";

int resultOf(bool complete) {
    return complete ? 0 : -1;
}

bool readsSerial(ExpectedExchange& exchange) {
    if (exchange.knows(firmware_with::channelCount) && !exchange.acknowledge(selectSlot)) return false;
    return exchange.ask(readElement);
}

std::int32_t readsStandardArrays(ExpectedExchange& exchange) {
    return withStreamPaused(exchange, [&] {
        return resultOf(readsSerial(exchange) && askAll(exchange, readElement, 2 + matrixElements + 3 + axes));
    });
}

// The format word and the zero signals, which old firmware does not know.
int lateElements(const ExpectedExchange& exchange) {
    return exchange.knows(firmware_with::allCalibrations) ? 1 + axes : 0;
}

std::int32_t readsArrays(ExpectedExchange& exchange) {
    const int elements = 2 + matrixElements + 3 + axes + lateElements(exchange);
    return withStreamPaused(exchange,
                            [&] { return resultOf(readsSerial(exchange) && askAll(exchange, readElement, elements)); });
}

// The serial number comes last.
std::int32_t writesStandardArrays(ExpectedExchange& exchange) {
    return withStreamPaused(
        exchange, [&] { return resultOf(acknowledgeAll(exchange, writeElement, 2 + matrixElements + 3 + axes + 1)); });
}

// Stored after the stream runs again.
std::int32_t writesArrays(ExpectedExchange& exchange) {
    const int elements = 2 + matrixElements + 3 + axes + lateElements(exchange) + 1;
    const std::int32_t result =
        withStreamPaused(exchange, [&] { return resultOf(acknowledgeAll(exchange, writeElement, elements)); });
    return result == 0 ? resultOf(exchange.acknowledge(storeSlot)) : result;
}

// `story`, which old firmware does not know.
Story withAllCalibrations(std::int32_t (*story)(ExpectedExchange&)) {
    return [story](ExpectedExchange& exchange) {
        if (exchange.knows(firmware_with::allCalibrations)) return story(exchange);
        return exchange.fail(expected_code::firmwareUnsupported);
    };
}

// All parts of the model name are sent, and only the last one's result counts.
std::int32_t writesExtension(ExpectedExchange& exchange) {
    return withStreamPaused(exchange, [&] {
        if (!acknowledgeAll(exchange, writeElement, 1 + matrixElements + 2 * axes)) return -1;
        if (!exchange.knows(firmware_with::modelName)) return 0;
        bool last = false;
        for (int part = 0; part < 4; ++part)
            last = exchange.acknowledge(0x1C);
        return resultOf(last);
    });
}

// The status of the model name's answers is not looked at.
std::int32_t readsExtension(ExpectedExchange& exchange) {
    return withStreamPaused(exchange, [&] {
        if (!askAll(exchange, readElement, 1 + matrixElements + 2 * axes)) return -1;
        if (!exchange.knows(firmware_with::modelName)) return 0;
        if (!exchange.send(0x1B)) return -1;
        for (int part = 0; part < 4; ++part) {
            if (exchange.take() == ExpectedExchange::Answer::missing) return -1;
        }
        return 0;
    });
}

// The format word goes before the pause; the stream is started again in any case.
std::int32_t writesInfo(ExpectedExchange& exchange) {
    bool complete = exchange.acknowledge(writeElement);
    if (complete) {
        exchange.acknowledge(0x23);
        complete = acknowledgeAll(exchange, writeElement, axes + 3) && exchange.acknowledge(storeSlot);
    }
    exchange.acknowledge(0x24);
    return resultOf(complete);
}

// Extension, date, five units of the table, one that becomes a user text of the device, and the arrays.
std::int32_t writesFile(ExpectedExchange& exchange) {
    if (exchange.knows(firmware_with::allCalibrations) && writesExtension(exchange) != 0) return -1;
    if (!acknowledgeAll(exchange, writeElement, 3 + 5)) return -1;
    if (!asksForUserText(exchange) || !asksForUserText(exchange) || !writesUserText(exchange)) return -1;
    if (!exchange.acknowledge(writeElement)) return -1;
    return writesArrays(exchange);
}

// A complete file with its two matrices, in a folder that lives as long as the program.
const std::string& calibrationFile() {
    static const CalibrationFolder folder;
    static const std::string path = [] {
        CalibrationText text = completeFile(4);
        text.set("Matrix_B", "MatrixB", "second.txt").set("SensorPara", "calibrationDate", "21.11.2025");
        for (int i = 0; i < axes; ++i) {
            const std::string number = std::to_string(i);
            text.set("Matrix_B", "FacB1_" + number, number).set("Matrix_B", "FacB2_" + number, number);
            text.set("SensorPara", "Unit_" + number, i < axes - 1 ? "kN" : "Lbs");
        }
        folder.write("matrix.txt", matrixText(axes, axes));
        folder.write("second.txt", matrixText(axes, axes));
        folder.write("sensor.ini", text.str());
        return folder.path("sensor.ini");
    }();
    return path;
}

std::vector<FaultRow> readingRows() {
    return {
        {"TORVIKreadFTSensorCalValue", "", reads<double>(TORVIKreadFTSensorCalValue, 2U, u8{7}), asks(readElement)},
        {"TORVIKsetFTarrayToRead", "", writes(TORVIKsetFTarrayToRead, u8{2}), acknowledges(selectSlot)},
        {"TORVIKreadFTSensorSerNo", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKreadFTSensorSerNo(deviceNo, 2, memory.text.data());
         }),
         [](ExpectedExchange& exchange) { return resultOf(readsSerial(exchange)); }},
        {"TORVIKreadFTSensorCalArray", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKreadFTSensorCalArray(deviceNo, 2, memory.text.data(), memory.numbers.data(),
                                               memory.numbers.data() + 1, memory.matrix.data(), memory.more.data(),
                                               memory.more.data() + 3);
         }),
         readsStandardArrays},
        {"TORVIKreadFTsensorCalArrayA", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKreadFTsensorCalArrayA(deviceNo, 2, memory.text.data(), memory.numbers.data(),
                                                memory.matrix.data(), memory.more.data(), memory.more.data() + 3,
                                                memory.more.data() + 9, memory.words.data());
         }),
         readsArrays},
        {"TORVIKreadFTsensorCalArrExt", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKreadFTsensorCalArrExt(deviceNo, memory.words.data(), memory.matrix.data(),
                                                memory.words.data() + 1, memory.moreWords.data(), memory.text.data());
         }),
         withAllCalibrations(readsExtension)},
        {"TORVIKgetFTSensorCalArrNo", "", fills([](std::int32_t deviceNo, CallerMemory& memory) {
             return TORVIKgetFTSensorCalArrNo(deviceNo, 0, memory.bytes.data());
         }),
         asks(0x54)},
    };
}

std::vector<FaultRow> writingRows() {
    return {
        {"TORVIKwriteFTSensorCalArray", "",
         [](std::int32_t deviceNo) {
             return Outcome{
                 TORVIKwriteFTSensorCalArray(deviceNo, 2, serialText, 2, 4, ones.data(), nullptr, ones.data()), "",
                 true};
         },
         writesStandardArrays},
        {"TORVIKwriteFTsensorCalArrayA", "",
         [](std::int32_t deviceNo) {
             return Outcome{TORVIKwriteFTsensorCalArrayA(deviceNo, 2, serialText, scales.data(), ones.data(),
                                                         ones.data(), ones.data(), nullptr, 1),
                            "", true};
         },
         withAllCalibrations(writesArrays)},
        {"TORVIKwriteFTsensorCalArrayA", "ofTheStandardFormat",
         [](std::int32_t deviceNo) {
             return Outcome{TORVIKwriteFTsensorCalArrayA(deviceNo, 2, serialText, scales.data(), ones.data(),
                                                         ones.data(), ones.data(), nullptr, 0),
                            "", true};
         },
         writesArrays},
        {"TORVIKwriteFTsensorCalArrExt", "",
         [](std::int32_t deviceNo) {
             return Outcome{
                 TORVIKwriteFTsensorCalArrExt(deviceNo, 1, ones.data(), factors.data(), factors.data(), modelName), "",
                 true};
         },
         withAllCalibrations(writesExtension)},
        {"TORVIKwriteFTsensorCalArrInfo", "",
         [](std::int32_t deviceNo) {
             std::int32_t units[] = {3, 3, 3, 18, 18, 18};
             std::int32_t date[] = {2025, 11, 21};
             double info[] = {-3, 1};
             return Outcome{TORVIKwriteFTsensorCalArrInfo(deviceNo, units, date, info), "", true};
         },
         withAllCalibrations(writesInfo)},
        {"TORVIKstoreFTSensorCal", "", writes(TORVIKstoreFTSensorCal, u8{2}), acknowledges(storeSlot)},
        {"TORVIKsetFTSensorCalArrNo", "", writes(TORVIKsetFTSensorCalArrNo, u8{2}), acknowledges(0x55)},
        {"TORVIKwriteFTSensorCalFromFile", "",
         [](std::int32_t deviceNo) {
             return Outcome{TORVIKwriteFTSensorCalFromFile(deviceNo, 2, calibrationFile().c_str()), "", true};
         },
         writesFile},
    };
}

}  // namespace

std::vector<FaultRow> calibrationRows() {
    std::vector<FaultRow> rows = readingRows();
    for (FaultRow& row : writingRows())
        rows.push_back(std::move(row));
    return rows;
}

}  // namespace torvik::test
