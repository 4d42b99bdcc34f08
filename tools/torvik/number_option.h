#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

namespace torvik::tool {

struct NumberRange {
    std::uint32_t smallest;
    std::uint32_t largest;
};

/// Adds an option that takes a whole number, decimal or 0x and hexadecimal, and refuses what is outside the range.
/// `number` holds the default and takes the value.
CLI::Option* addNumberOption(CLI::App& app, const std::string& name, std::uint32_t& number, NumberRange range,
                             const std::string& description);

}  // namespace torvik::tool
