#include "parameters/library_call.h"

namespace torvik::tool {

namespace {

constexpr std::uint32_t restartUnsupported = 0x30000062;
constexpr std::int32_t buffersKept = 229;

constexpr std::uint8_t byteOf(std::uint32_t number, unsigned index) {
    return static_cast<std::uint8_t>(number >> 8U * index);
}

}  // namespace

namespace detail {

void expectZero(std::int32_t deviceNo, std::int32_t result) {
    if (result != 0) throw Refused{takeErrorOfCall(static_cast<std::uint32_t>(deviceNo))};
}

void expectNoError(std::int32_t deviceNo) {
    if (LibraryError error = takeLastError(static_cast<std::uint32_t>(deviceNo)); error.code != 0) {
        throw Refused{std::move(error)};
    }
}

WriteResult resultOfRestart(std::int32_t deviceNo, std::int32_t result) {
    if (result == buffersKept) return WriteResult::buffersNotCleared;
    expectZero(deviceNo, result);
    const LibraryError error = takeLastError(static_cast<std::uint32_t>(deviceNo));
    return error.code == restartUnsupported ? WriteResult::restartUnknown : WriteResult::done;
}

}  // namespace detail

FourBytes FourBytes::lowestFirst(std::uint32_t number) {
    return {{byteOf(number, 0), byteOf(number, 1), byteOf(number, 2), byteOf(number, 3)}};
}

FourBytes FourBytes::highestFirst(std::uint32_t number) {
    return {{byteOf(number, 3), byteOf(number, 2), byteOf(number, 1), byteOf(number, 0)}};
}

}  // namespace torvik::tool
