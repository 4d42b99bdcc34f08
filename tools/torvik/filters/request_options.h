// What the verbs of `torvik filter` take on the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "filters/filter_request.h"

namespace torvik::tool {

struct RequestOptions {
    FilterRequest request;
    bool secondCutoff = false;
    double rate = 0;  ///< Hz; 0: the device's

    /// The request; throws Failure when it has a cut-off frequency too many or too few.
    FilterRequest checked() const;
};

/// Adds KIND CHARACTERISTIC F1 [F2].
void addRequestOptions(CLI::App& command, RequestOptions& options);

/// Adds --rate.
void addRateOption(CLI::App& command, RequestOptions& options);

/// Adds an option that takes a number above 0.
CLI::Option* addPositiveOption(CLI::App& command, const std::string& name, double& number, const std::string& unit,
                               const std::string& description);

}  // namespace torvik::tool
