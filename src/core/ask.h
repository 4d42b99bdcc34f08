// The two verbs of nearly every command: ask, and have it acknowledged.
#pragma once

#include <cstdint>
#include <optional>

#include "core/transaction.h"
#include "core/wire.h"

namespace torvik {

// Sends a command and takes its answer, refusal or not. Nothing: lastError is set.
std::optional<AnswerView> exchangeAnswer(std::uint8_t deviceNo, Command command, const Parameters& parameters);

// The same; a refusal is stored as lastError and gives nothing too.
std::optional<AnswerView> ask(std::uint8_t deviceNo, Command command, const Parameters& parameters);

// Takes the next answer of a command that was sent before, refusal or not. Nothing: lastError is set.
std::optional<AnswerView> takeAnswer(std::uint8_t deviceNo);

// The same; a refusal as in ask.
std::optional<AnswerView> nextAnswer(std::uint8_t deviceNo);

// Sends a command whose answer carries nothing but a status. Result: 0, or -1 with lastError set.
std::int32_t acknowledge(std::uint8_t deviceNo, Command command, const Parameters& parameters);

}  // namespace torvik
