#include "filters/request_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "failure.h"
#include "number_text.h"

namespace torvik::tool {

namespace {

template <class Choice, std::size_t Count>
using Choices = std::array<std::pair<std::string_view, Choice>, Count>;

constexpr Choices<FilterKind, 4> filterKinds{{{"lowpass", FilterKind::lowPass},
                                              {"highpass", FilterKind::highPass},
                                              {"bandpass", FilterKind::bandPass},
                                              {"bandstop", FilterKind::bandStop}}};
constexpr Choices<Characteristic, 2> characteristics{
    {{"bessel", Characteristic::bessel}, {"butterworth", Characteristic::butterworth}}};

template <class Choice, std::size_t Count>
void addChoice(CLI::App& command, const std::string& name, Choice& choice, const Choices<Choice, Count>& choices,
               const std::string& description) {
    const auto take = [&choice, &choices, name](const std::string& text) {
        const auto found = std::ranges::find(choices, text, [](const auto& pair) { return pair.first; });
        if (found == choices.end()) {
            std::string known;
            for (const auto& [word, meant] : choices)
                known += fmt::format("{}{}", known.empty() ? "" : ", ", word);
            throw CLI::ValidationError(name, fmt::format("'{}' is none of {}", text, known));
        }
        choice = found->second;
    };
    command.add_option_function<std::string>(name, take, description)->required()->type_name("");
}

/// Any number: what cut-offs a design can be made from is the designer's affair.
CLI::Option* addFrequency(CLI::App& command, const std::string& name, double& frequency,
                          const std::string& description) {
    const auto take = [&frequency, name](const std::string& text) {
        const auto parsed = parseReal(text);
        if (!parsed) throw CLI::ValidationError(name, fmt::format("'{}' is not a frequency", text));
        frequency = *parsed;
    };
    return command.add_option_function<std::string>(name, take, description)->type_name("");
}

}  // namespace

FilterRequest RequestOptions::checked() const {
    if (request.isBand() == secondCutoff) return request;
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = fmt::format("designing a {}", kindText(request.kind)),
                  .reason = secondCutoff ? "it has one cut-off frequency" : "it has two cut-off frequencies",
                  .advice = secondCutoff ? "leave F2 out" : "give the lower and the upper one: F1 F2"};
}

void addRequestOptions(CLI::App& command, RequestOptions& options) {
    addChoice(command, "KIND", options.request.kind, filterKinds, "lowpass, highpass, bandpass or bandstop");
    addChoice(command, "CHARACTERISTIC", options.request.characteristic, characteristics, "bessel or butterworth");
    addFrequency(command, "F1", options.request.f1, "cut-off frequency in Hz, of a band the lower one")->required();
    CLI::Option* const second =
        addFrequency(command, "F2", options.request.f2, "upper cut-off frequency of a band in Hz");
    command.parse_complete_callback([&options, second] { options.secondCutoff = second->count() > 0; });
}

void addRateOption(CLI::App& command, RequestOptions& options) {
    addPositiveOption(command, "--rate", options.rate, "HZ",
                      "design for this sampling frequency, without a device; else the device's");
}

CLI::Option* addPositiveOption(CLI::App& command, const std::string& name, double& number, const std::string& unit,
                               const std::string& description) {
    const auto take = [&number, name](const std::string& text) {
        const auto parsed = parseReal(text);
        if (!parsed || !std::isfinite(*parsed) || !(*parsed > 0))
            throw CLI::ValidationError(name, fmt::format("'{}' is not a number above 0", text));
        number = *parsed;
    };
    return command.add_option_function<std::string>(name, take, description)->type_name(unit);
}

}  // namespace torvik::tool
