// Memory, services of the system and files fail under every export. Each time: the documented code, nothing left
// behind, no lock held, and the next calls right.
#include <cerrno>

#include "TORVIK.h"
#include "faults/sweep_bench.h"

namespace torvik::test {
namespace {

constexpr std::uint32_t outOfMemory = 0x300000F3;
constexpr std::uint32_t eventCreation = 0xF4;
constexpr std::uint32_t mutexStart = 0x30000111;
constexpr std::uint32_t fileContent = 0x30000108;
constexpr std::uint32_t responseFileMark = 0x31000000;
constexpr std::uint32_t calibrationFileMark = 0x20000000;

class SweptExport : public SweepBench {
  protected:
    static bool activates() { return row().start != Start::active; }
    static bool usesDesigner() {
        return row().exportName == "TORVIKcalcSetDfilterParams" || row().exportName == "TORVIKsimulateDfilter";
    }
    static bool makesDesigner() { return usesDesigner() && !row().prepare; }
    static bool writesFile() { return row().exportName == "TORVIKsimulateDfilter" && row().variant != "ofNoDesign"; }
    static bool readsFile() { return row().exportName == "TORVIKwriteFTSensorCalFromFile"; }

    // A device's filter designer has a code of its own.
    static std::uint32_t codeOfNoMemory() { return usesDesigner() ? expected_code::internalCallFailed : outOfMemory; }

    void expectSystemFailure(const SweptOutcome& outcome) {
        if (outcome.what == "eventCreate" || outcome.what == "eventfd") return expectFailure(outcome, eventCreation);
        if (outcome.what == "mutexCreate") return expectFailure(outcome, mutexStart);
        if (outcome.what == "threadStart" || outcome.what == "pthread_create") return expectThreadFailure(outcome);
        EXPECT_EQ(outcome.what, "allocation");
        expectFailure(outcome, codeOfNoMemory());
    }

    void expectFileFailure(const SweptOutcome& outcome, int systemError) {
        const auto number = static_cast<std::uint32_t>(systemError);
        // What is not known to be a regular file is rejected like one that is not.
        if (outcome.what == "fileStatus") return expectFailure(outcome, fileContent);
        expectFailure(outcome, (writesFile() ? responseFileMark : calibrationFileMark) | number);
    }
};

TEST_P(SweptExport, SurvivesEveryFailedAllocation) {
    const std::uint32_t cases = sweep("allocation", [this](std::uint32_t nth, bool fromThenOn) {
        const SweptOutcome outcome = meetFailing(Service::allocation, nth, fromThenOn, ENOMEM);
        // What a thread needs is the first that opening the adapter allocates.
        if (outcome.struck && opensAdapter() && nth == 1) {
            expectThreadFailure(outcome);
        } else if (outcome.struck) {
            expectFailure(outcome, codeOfNoMemory());
        } else {
            expectUndisturbed(outcome);
        }
        return outcome.struck;
    });
    EXPECT_EQ(cases > 0, activates() || makesDesigner() || readsFile());
}

TEST_P(SweptExport, SurvivesEveryFailedServiceOfTheSystem) {
    std::uint32_t cases = 0;
    for (const Service service : {Service::faultPoint, Service::operatingSystem}) {
        cases += sweep("system", [this, service](std::uint32_t nth, bool fromThenOn) {
            const SweptOutcome outcome = meetFailing(service, nth, fromThenOn, EAGAIN);
            if (outcome.struck) {
                expectSystemFailure(outcome);
            } else {
                expectUndisturbed(outcome);
            }
            return outcome.struck;
        });
    }
    EXPECT_EQ(cases > 0, activates() || makesDesigner());
}

TEST_P(SweptExport, SurvivesEveryFailedFileOperation) {
    std::uint32_t cases = 0;
    for (const int systemError : {ENOSPC, EACCES, EIO}) {
        cases += sweep("file", [this, systemError](std::uint32_t nth, bool fromThenOn) {
            const SweptOutcome outcome = meetFailing(Service::file, nth, fromThenOn, systemError);
            if (outcome.struck) {
                expectFileFailure(outcome, systemError);
            } else {
                expectUndisturbed(outcome);
            }
            return outcome.struck;
        });
    }
    EXPECT_EQ(cases > 0, writesFile() || readsFile());
}

INSTANTIATE_TEST_SUITE_P(Sweep, SweptExport, testing::ValuesIn(faultRows()),
                         [](const auto& instance) { return nameOf(instance.param); });

}  // namespace
}  // namespace torvik::test
