// How readers and writers of parameters call the library's exports.
#pragma once

#include <array>
#include <cstdint>

#include "failure.h"
#include "parameters/parameter.h"

namespace torvik::tool {

/// Thrown when the library or the device did not do what it was asked.
struct Refused {
    LibraryError error;
};

namespace detail {

/// Throws Refused unless the result is 0.
void expectZero(std::int32_t deviceNo, std::int32_t result);

/// Throws Refused when there is a last error.
void expectNoError(std::int32_t deviceNo);

WriteResult resultOfRestart(std::int32_t deviceNo, std::int32_t result);

}  // namespace detail

/// A call whose failures show in its result alone.
template <class Call>
void callLibrary(std::int32_t deviceNo, Call call) {
    takeLastError(static_cast<std::uint32_t>(deviceNo));
    detail::expectZero(deviceNo, call());
}

/// A call that gives 0 for some of its refusals, too: the last error tells them.
template <class Call>
void callCheckingLastError(std::int32_t deviceNo, Call call) {
    takeLastError(static_cast<std::uint32_t>(deviceNo));
    detail::expectZero(deviceNo, call());
    detail::expectNoError(deviceNo);
}

/// A call that ends with a restart of the device.
template <class Call>
WriteResult callWithRestart(std::int32_t deviceNo, Call call) {
    takeLastError(static_cast<std::uint32_t>(deviceNo));
    return detail::resultOfRestart(deviceNo, call());
}

/// A reader of one whole number of the device itself.
template <auto Export, class Number = std::uint32_t>
std::optional<Value> readDeviceNumber(std::int32_t deviceNo, Place) {
    Number number{};
    callLibrary(deviceNo, [&] { return Export(deviceNo, &number); });
    return Value(std::int64_t{number});
}

/// A reader of one whole number in each place.
template <auto Export, class Index>
std::optional<Value> readIndexedNumber(std::int32_t deviceNo, Place place) {
    std::uint32_t number = 0;
    callLibrary(deviceNo, [&] { return Export(deviceNo, static_cast<Index>(place.major), &number); });
    return Value(std::int64_t{number});
}

/// A reader of a double for each channel.
template <auto Export>
std::optional<Value> readChannelReal(std::int32_t deviceNo, Place place) {
    double number = 0;
    callLibrary(deviceNo, [&] { return Export(deviceNo, place.major, &number); });
    return Value(number);
}

/// A writer of a double for each channel.
template <auto Export>
WriteResult writeChannelReal(std::int32_t deviceNo, Place place, const Value& value) {
    callLibrary(deviceNo, [&] { return Export(deviceNo, place.major, std::get<double>(value)); });
    return WriteResult::done;
}

/// A whole number as one of the library's argument types; its low bits go out.
template <class Number>
Number wholeOf(const Value& value) {
    return static_cast<Number>(std::get<std::int64_t>(value));
}

/// The exports want pointers to bytes, too: four of them, in the order of the number's digits.
struct FourBytes {
    std::array<std::uint8_t, 4> bytes;

    static FourBytes lowestFirst(std::uint32_t number);
    static FourBytes highestFirst(std::uint32_t number);
};

}  // namespace torvik::tool
