#include "answer_rules.hpp"

#include <algorithm>

#include "virtual_control.h"

namespace virtual_adapter {

std::optional<AnswerRules::Rule> AnswerRules::take(std::uint32_t device, std::uint8_t command) {
    const auto fits = [&](const Rule& rule) {
        return rule.device == device && (rule.command == command || rule.command == VIRTUAL_ANY_COMMAND);
    };
    const auto found = std::ranges::find_if(rules_, fits);
    if (found == rules_.end()) return std::nullopt;
    const Rule rule = *found;
    if (rule.times != VIRTUAL_FOR_EVER && --found->times == 0) rules_.erase(found);
    return rule;
}

}  // namespace virtual_adapter
