#include "bench_file.hpp"

namespace virtual_adapter {

BenchResult parseBench(std::string_view, const std::string& name) {
    return {std::nullopt, name + ":1:1: bench descriptions are not read yet"};
}

BenchResult readBenchFile(const std::string& path) {
    return parseBench({}, path);
}

}  // namespace virtual_adapter
