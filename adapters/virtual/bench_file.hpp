#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "bench.hpp"

namespace virtual_adapter {

struct BenchResult {
    std::optional<BenchConfig> bench;
    std::string message;  // why there is no bench: "name:line:column: reason"
};

// Short enough to need no memory.
[[nodiscard]] inline BenchResult outOfMemory() noexcept {
    return {std::nullopt, "out of memory"};
}

// Bench descriptions in TOML; docs/virtual-adapter.md says what they consist of. Throw std::bad_alloc.
[[nodiscard]] BenchResult parseBench(std::string_view text, const std::string& name);
[[nodiscard]] BenchResult readBenchFile(const std::string& path);

}  // namespace virtual_adapter
