// Writes down what a program that calls the exports sees: for each call its arguments, its result, what it delivered,
// the last error that it left and the frames that it put on the wire. Floating-point numbers are written as their bits.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "TORVIK.h"

namespace torvik::proof {

class Transcript {
  public:
    explicit Transcript(const char* fileName);
    ~Transcript();
    Transcript(const Transcript&) = delete;
    Transcript& operator=(const Transcript&) = delete;

    void section(std::string_view title);

    // Calls `function` and notes everything. Arguments: numbers, texts, and vectors for arrays, which are noted as they
    // are after the call; a vector without elements stands for null. Text arrays are noted up to their zero.
    template <class... Parameters, class... Arguments>
    std::int32_t call(const char* name, std::int32_t (*function)(std::int32_t, Parameters...), std::int32_t deviceNo,
                      Arguments&&... arguments) {
        begin(name, deviceNo);
        (writeArgument(arguments), ...);
        const std::int32_t result = function(deviceNo, pass<Parameters>(arguments)...);
        writeResult(result);
        (writeOutput(arguments), ...);
        end(deviceNo);
        return result;
    }

    // Notes a call that was made otherwise.
    void note(std::string_view name, std::int32_t deviceNo, std::int32_t result, std::string_view output);

    // Notes what has been counted.
    void finish();

  private:
    template <class Parameter, class Argument>
    static Parameter pass(Argument& argument) {
        if constexpr (std::is_arithmetic_v<Argument>) {
            return static_cast<Parameter>(argument);
        } else if constexpr (std::is_convertible_v<Argument, const char*>) {
            return argument;
        } else {
            return argument.empty() ? nullptr : argument.data();
        }
    }

    template <class Argument>
    void writeArgument(const Argument& argument) {
        if constexpr (std::is_arithmetic_v<Argument>) {
            write(", ");
            writeNumber(argument);
        } else if constexpr (std::is_convertible_v<Argument, const char*>) {
            write(", ");
            writeText(argument);
        }
    }

    template <class Argument>
    void writeOutput(const Argument& argument) {
        if constexpr (std::is_same_v<Argument, std::vector<char>>) {
            write("\n  out ");
            writeText(std::string_view(argument.begin(), argument.end()));
        } else if constexpr (!std::is_arithmetic_v<Argument> && !std::is_convertible_v<Argument, const char*>) {
            write("\n  out");
            for (const auto element : argument) {
                write(" ");
                writeNumber(element);
            }
        }
    }

    template <class Number>
    void writeNumber(Number number) {
        if constexpr (std::is_floating_point_v<Number>) {
            writeBits(number);
        } else {
            writeInteger(static_cast<std::int64_t>(number));
        }
    }

    void begin(std::string_view name, std::int32_t deviceNo);
    void end(std::int32_t deviceNo);
    void writeResult(std::int32_t result);
    void writeBits(double number);
    void writeInteger(std::int64_t number);
    // Up to its zero, with what is no printable ASCII as bytes.
    void writeText(std::string_view text);
    void writeFrames();
    void write(std::string_view text);

    std::FILE* file_;
    std::uint64_t calls_ = 0;
    std::uint64_t frames_ = 0;
    std::uint64_t values_ = 0;
};

}  // namespace torvik::proof
