// The exports of the device parameters, with the arguments of their tables.
#include "params/export_tables.h"
#include "transcript/bench.h"

namespace torvik::proof {

namespace {

using test::ExportFamily;
using test::ExportRow;
using test::Outcome;

constexpr std::int32_t inactiveDevice = 2;

void note(Run& run, const std::string& name, std::int32_t deviceNo, const test::Call& call) {
    const Outcome outcome = call(deviceNo);
    run.transcript.note(name, deviceNo, outcome.result, outcome.output + (outcome.unchanged ? "" : " written"));
}

// Each on a device of its own: what a call changes must not keep the next from being answered.
template <class Row>
void recordOnNewDevices(Run& run, const std::vector<Row>& rows, const std::string& bench, std::uint32_t protocolFlag) {
    for (const Row& row : rows) {
        openBench(run, bench, protocolFlag);
        note(run, row.name, 1, row.call);
    }
}

void recordFamily(Run& run, const ExportFamily& family) {
    recordOnNewDevices(run, family.exports, amplifier(""), kind16);
    // Restarts would take their time once more; older firmware has none.
    const std::string older = amplifier("firmware = 0x00030008\nprotocol = 32");
    recordOnNewDevices(run, family.exports, older, kind32);
    recordOnNewDevices(run, family.accepted, older, kind32);
    openBench(run, amplifier(""));
    for (const test::RefusedCall& row : family.refused) {
        for (const std::int32_t deviceNo : {1, inactiveDevice, 40})
            note(run, row.name, deviceNo, row.call);
    }
    for (const ExportRow& row : family.exports) {
        note(run, row.name, 40, row.call);
        // One that does not look whether the device is active waits for its answer in vain.
        if (row.checksActivity) note(run, row.name, inactiveDevice, row.call);
    }
}

}  // namespace

void recordTables(Run& run) {
    for (const ExportFamily& family : {test::identityExports(), test::scalingExports(), test::inputExports(),
                                       test::unitExports(), test::rateExports(), test::canExports()}) {
        recordFamily(run, family);
    }
}

}  // namespace torvik::proof
