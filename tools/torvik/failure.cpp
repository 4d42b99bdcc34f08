#include "failure.h"

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <iterator>

#include "TORVIK.h"
#include "error_meanings.h"
#include "printable_text.h"

namespace torvik::tool {

LibraryError takeLastError(std::uint32_t deviceNo) {
    std::array<char, 128> text{};
    LibraryError error;
    TORVIKgetLastErrorText(static_cast<std::int32_t>(deviceNo), text.data(), &error.code);
    error.text = text.data();
    return error;
}

LibraryError takeErrorOfCall(std::uint32_t deviceNo) {
    LibraryError error = takeLastError(deviceNo);
    if (error.code != 0) return error;
    LibraryError common = takeLastError(0);
    return common.code != 0 ? common : error;
}

std::string describe(const Failure& failure) {
    std::string report = fmt::format("torvik: {} failed\n", printable(failure.tried));
    auto out = std::back_inserter(report);
    std::string advice = failure.advice;
    if (failure.error) {
        fmt::format_to(out, "  error:   {} (code {}, 0x{:X})\n", failure.error->text, failure.error->code,
                       failure.error->code);
        for (const Explanation& explanation : explain(failure.error->code)) {
            fmt::format_to(out, "  meaning: {}: {}\n", kindName(explanation.kind), explanation.meaning);
            if (advice.empty()) advice = explanation.advice;
        }
    }
    if (!failure.reason.empty()) fmt::format_to(out, "  reason:  {}\n", failure.reason);
    if (!advice.empty()) fmt::format_to(out, "  next:    {}\n", advice);
    return report;
}

void printMessage(const std::string& message) {
    std::fputs(printableLines(message).c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace torvik::tool
