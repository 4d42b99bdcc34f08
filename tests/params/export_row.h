// One line of a table of exports: how it is called, what goes out, what the device answers, what comes back.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace torvik::test {

namespace code {
inline constexpr std::uint32_t none = 0;
inline constexpr std::uint32_t wrongFrameArguments = 48;
inline constexpr std::uint32_t deviceWrite = 223;
inline constexpr std::uint32_t answerTimeout = 0x30000058;
inline constexpr std::uint32_t firmwareUnsupported = 0x30000062;
inline constexpr std::uint32_t notStored = 0x30000065;
inline constexpr std::uint32_t parameterExceedance = 0x30000100;
inline constexpr std::uint32_t internalCallFailed = 0x30000105;
inline constexpr std::uint32_t notActive = 0x30000113;
}  // namespace code

// What a call has returned and delivered.
struct Outcome {
    std::int32_t result = 0;
    std::string output;
    bool unchanged = true;  // nothing was written to the caller's memory
};

using Call = std::function<Outcome(std::int32_t deviceNo)>;

// What stands in the caller's memory before a call.
template <class Value>
constexpr Value untouched() {
    if constexpr (std::is_floating_point_v<Value>) {
        return -77.25;
    } else {
        return static_cast<Value>(0xDEADBEEF);
    }
}

// Numbers as text, the shortest that reads back the same.
template <class... Values>
std::string show(Values... values) {
    std::string text;
    const auto append = [&text](auto value) {
        std::array<char, 40> digits{};
        const std::to_chars_result written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
        if (!text.empty()) text += ' ';
        text.append(digits.data(), static_cast<std::size_t>(written.ptr - digits.data()));
    };
    (append(values), ...);
    return text;
}

// A call with these arguments that delivers nothing.
template <class Export, class... Arguments>
Call writes(Export function, Arguments... arguments) {
    return [=](std::int32_t deviceNo) { return Outcome{function(deviceNo, arguments...), "", true}; };
}

// A call with these arguments that delivers `Values` through the pointers behind them.
template <class... Values, class Export, class... Arguments>
Call reads(Export function, Arguments... arguments) {
    return [=](std::int32_t deviceNo) {
        const std::tuple<Values...> before{untouched<Values>()...};
        std::tuple<Values...> values = before;
        const auto call = [&](auto&... value) { return function(deviceNo, arguments..., &value...); };
        const std::int32_t result = std::apply(call, values);
        const std::string output = std::apply([](auto... value) { return show(value...); }, values);
        return Outcome{result, output, values == before};
    };
}

struct Answer {
    std::uint8_t command;
    std::vector<std::uint8_t> statusAndData;
};

struct Refusal {
    std::int32_t result = -1;
    std::uint32_t code = code::parameterExceedance;
};

struct ExportRow {
    const char* name;
    Call call;
    std::vector<std::string> sent;  // data bytes of the frames
    std::vector<Answer> answers;
    std::string output;
    std::int32_t result = 0;
    std::uint32_t stored = code::none;  // as the last error of the successful call

    // What happens when something is wrong, as nearly every export does it unless a table says otherwise.
    bool answered = true;  // the first command draws an answer
    std::uint32_t unanswered = code::answerTimeout;
    std::uint32_t refused = code::none;  // stored in the place of the device's status
    std::uint32_t unwritten = code::deviceWrite;
    Refusal numberForty{};
    Refusal inactive{-1, code::notActive};
    bool checksActivity = true;

    ExportRow& atNumberForty(Refusal refusal) {
        numberForty = refusal;
        return *this;
    }
    ExportRow& whenInactive(Refusal refusal) {
        inactive = refusal;
        return *this;
    }
    ExportRow& withoutActivityCheck() {
        checksActivity = false;
        return *this;
    }
    ExportRow& whenRefused(std::uint32_t replaced) {
        refused = replaced;
        return *this;
    }
    ExportRow& whenUnanswered(std::uint32_t stores) {
        unanswered = stores;
        return *this;
    }
};

// The command code of a frame's data bytes.
inline std::uint8_t commandOf(const std::string& frame) {
    return static_cast<std::uint8_t>(std::stoul(frame.substr(3, 2), nullptr, 16));
}

inline Answer accepts(std::uint8_t command, std::initializer_list<std::uint8_t> data = {}) {
    Answer answer{command, {0}};
    answer.statusAndData.insert(answer.statusAndData.end(), data);
    return answer;
}

// One command, one answer with these data bytes.
inline ExportRow getter(const char* name, Call call, const std::string& sent, std::initializer_list<std::uint8_t> data,
                        std::string output) {
    return {.name = name,
            .call = std::move(call),
            .sent = {sent},
            .answers = {accepts(commandOf(sent), data)},
            .output = std::move(output)};
}

// One command, one acknowledgement; its failures are those of an acknowledgement.
inline ExportRow setter(const char* name, Call call, const std::string& sent) {
    return {.name = name,
            .call = std::move(call),
            .sent = {sent},
            .answers = {accepts(commandOf(sent))},
            .output = "",
            .unanswered = code::internalCallFailed};
}

// The same, followed by the restart of a device that streams.
inline ExportRow restartingSetter(const char* name, Call call, const std::string& sent) {
    ExportRow row = setter(name, std::move(call), sent);
    row.sent.insert(row.sent.end(), {"80 78", "80 24"});
    row.answers.push_back(accepts(0x24));
    return row;
}

// A call whose arguments are refused: nothing is sent, nothing delivered.
struct RefusedCall {
    std::string name;
    Call call;
    Refusal active{};
    Refusal inactive{};  // which check comes first
};

// Activity is checked before the arguments, or the arguments before activity.
inline RefusedCall afterActivity(std::string name, Call call) {
    return {std::move(name), std::move(call), {}, {-1, code::notActive}};
}
inline RefusedCall beforeActivity(std::string name, Call call) {
    return {std::move(name), std::move(call), {}, {-1, code::parameterExceedance}};
}

// A call with arguments just inside their bounds: exactly this goes out first.
struct AcceptedCall {
    std::string name;
    Call call;
    std::string sent;
};

}  // namespace torvik::test
