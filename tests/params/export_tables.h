// The tables of the exports that work on device parameters, family by family.
#pragma once

#include <vector>

#include "params/export_row.h"

namespace torvik::test {

struct ExportFamily {
    std::vector<ExportRow> exports;
    std::vector<RefusedCall> refused;
    std::vector<AcceptedCall> accepted;
};

ExportFamily identityExports();
ExportFamily scalingExports();
ExportFamily inputExports();
ExportFamily unitExports();
ExportFamily rateExports();
ExportFamily canExports();

}  // namespace torvik::test
