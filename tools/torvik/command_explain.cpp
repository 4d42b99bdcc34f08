#include <fmt/format.h>

#include <iterator>
#include <memory>
#include <string>

#include "command_line.h"
#include "error_meanings.h"
#include "failure.h"
#include "number_text.h"

namespace torvik::tool {

namespace {

constexpr std::string_view noErrorHere = "0 means that there is no error.\n";

std::string explanationPage(std::uint32_t code, const std::vector<Explanation>& explanations) {
    std::string page = fmt::format("{} (0x{:X})\n{}\n", code, code, errorText(code));
    auto out = std::back_inserter(page);
    if (explanations.front().code != code) {
        fmt::format_to(out, "\nAs a status of the adapter it says several things at once:\n");
    } else if (explanations.size() > 1) {
        fmt::format_to(out, "\nThe number stands for several things; which one depends on who told it:\n");
    }
    for (const Explanation& explanation : explanations) {
        fmt::format_to(out, "\n{}: {}\n  meaning:     {}\n  what to try: {}\n", kindName(explanation.kind),
                       explanation.text, explanation.meaning, explanation.advice);
    }
    return page;
}

ExitCode explainCode(Session& session, std::uint32_t code) {
    if (code == 0) {
        writeData(session, fmt::format("0\n{}\n\n{}", errorText(0), noErrorHere));
        return ExitCode::success;
    }
    const auto explanations = explain(code);
    if (explanations.empty()) {
        throw Failure{.exitCode = ExitCode::codeUnknown,
                      .tried = fmt::format("explaining {} (0x{:X})", code, code),
                      .reason = fmt::format("no error has this code; the library's text is \"{}\"", errorText(code)),
                      .advice = "list all codes with 'torvik explain' without a code"};
    }
    writeData(session, explanationPage(code, explanations));
    return ExitCode::success;
}

ExitCode listCodes(Session& session) {
    std::string list = fmt::format("{:<12}{:<13}{}\n", "code", "told by", "text");
    for (const ErrorRow& row : errorRows()) {
        if (row.text == nullptr) continue;
        fmt::format_to(std::back_inserter(list), "{:<12}{:<13}{}\n", fmt::format("0x{:X}", row.code),
                       kindName(row.kind), row.text);
    }
    writeData(session, list);
    return ExitCode::success;
}

}  // namespace

void addExplainCommand(CommandLine& commandLine) {
    CLI::App* const command =
        commandLine.app.add_subcommand("explain", "tell an error code's text, its meaning and what to try");
    const auto code = std::make_shared<std::optional<std::uint32_t>>();
    const auto take = [code](const std::string& text) {
        *code = parseNumber(text);
        if (!*code) {
            throw CLI::ValidationError("CODE",
                                       fmt::format("'{}' is not a code (decimal, or 0x and hexadecimal)", text));
        }
    };
    command->add_option_function<std::string>("CODE", take, "the code, decimal or 0x...; none: list all codes")
        ->type_name("");
    command->callback([&commandLine, code] {
        commandLine.action = [code](Session& session) {
            return *code ? explainCode(session, **code) : listCodes(session);
        };
    });
}

}  // namespace torvik::tool
