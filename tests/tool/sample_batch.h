#pragma once

#include <vector>

#include "set_reader.h"

namespace torvik::tool {

/// Sets as a test gives them; keeps the numbers that the batch refers to.
class SampleBatch {
  public:
    SampleBatch(std::vector<double> values, std::size_t channels, std::vector<std::uint32_t> statuses = {})
        : values_(std::move(values)), statuses_(std::move(statuses)), channels_(channels) {
        statuses_.resize(values_.size());
    }

    SetBatch batch(std::size_t waiting = 0) const {
        return {.values = values_, .statuses = statuses_, .sets = values_.size() / channels_, .waiting = waiting};
    }

  private:
    std::vector<double> values_;
    std::vector<std::uint32_t> statuses_;
    std::size_t channels_;
};

}  // namespace torvik::tool
