#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace virtual_adapter {

// What a test wants to happen to answers (virtualAnswerRule).
class AnswerRules {
  public:
    struct Rule {
        std::uint32_t device;
        std::uint32_t command;
        std::uint32_t action;
        std::uint32_t times;
        std::uint32_t microseconds;
        std::array<std::uint8_t, 8> answer;
    };

    void add(const Rule& rule) { rules_.push_back(rule); }
    void clear() { rules_.clear(); }

    // The first rule that fits, used up by one.
    std::optional<Rule> take(std::uint32_t device, std::uint8_t command);

  private:
    std::vector<Rule> rules_;
};

}  // namespace virtual_adapter
