// The n-th use of a service fails while an export runs, once or from then on, for every n until the export succeeds
// untouched. Each case begins with a closed library and ends with one, so that whatever it leaves behind shows.
#pragma once

#include "TORVIK.h"
#include "faults/failing_services.h"
#include "faults/fault_bench.h"

namespace torvik::test {

// Devices 0 and 1: the code of a thread that could not be started is stored for the former.
struct SweptOutcome {
    Observation observation;
    std::uint32_t codeOfNobody = 0;
    bool struck = false;
    std::string what;  // the first that failed
};

// What the whole program holds.
struct Holdings {
    std::int64_t blocks = 0;
    std::int64_t handles = 0;
    std::int64_t threads = 0;

    static Holdings now();
    // Nothing has been left behind since. The system may have freed more.
    bool within(const Holdings& before) const;
};
void PrintTo(const Holdings& holdings, std::ostream* out);

// A case that succeeds untouched ends a sweep; one that never does fails the test. Where cases take long, only some of
// the later ones are gone through (TORVIK_SWEEP_STRIDE).
inline constexpr std::uint32_t sweepLimit = 3000;
inline constexpr std::uint32_t firstPart = 24;

// How often each service has been failed.
void countCase(const std::string& service);

class SweepBench : public FaultBench, public testing::WithParamInterface<FaultRow> {
  protected:
    // The undisturbed call, twice: the first one also makes what the program keeps for ever.
    void SetUp() override;

    // `oneCase(nth, fromThenOn)` runs a case and tells whether anything failed in it. Result: in how many something
    // did.
    template <class Case>
    std::uint32_t sweep(const char* service, Case oneCase) {
        std::uint32_t cases = 0;
        for (const bool fromThenOn : {false, true}) {
            std::uint32_t nth = 1;
            for (; nth < sweepLimit; nth += nth < firstPart ? 1 : TORVIK_SWEEP_STRIDE) {
                SCOPED_TRACE(std::string(service) + " " + std::to_string(nth) +
                             (fromThenOn ? " and all after it" : ""));
                const bool struck = oneCase(nth, fromThenOn);
                TORVIKrelease(0);
                expectClosed();
                activateAll();
                if (HasFailure()) return cases;
                if (!struck) break;
                ++cases;
                countCase(service);
            }
            EXPECT_LT(nth, sweepLimit);
        }
        return cases;
    }

    // Calls the export with the n-th use of the service failing.
    SweptOutcome meetFailing(Service service, std::uint32_t nth, bool fromThenOn, int systemError);

    void expectUndisturbed(const SweptOutcome& outcome);
    // The export has failed with this code, and the next calls are right.
    void expectFailure(const SweptOutcome& outcome, std::uint32_t code);
    void expectThreadFailure(const SweptOutcome& outcome);

    // After an adapter that was opened only half: releasing everything closes it.
    void recover(std::uint32_t strays = 0);

    void activateAll();
    static const FaultRow& row() { return GetParam(); }
    static bool opensAdapter() { return row().start == Start::adapterClosed; }

    Observation undisturbed;

  private:
    // The program holds no more than it held before.
    void expectClosed() const;

    Holdings closed_;
};

}  // namespace torvik::test
