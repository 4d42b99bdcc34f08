// What holds for all exports, line by line of their tables.
#include <algorithm>
#include <set>

#include "params/export_tables.h"
#include "params/params_bench.h"

namespace torvik::test {

// For the names of the cases.
void PrintTo(const ExportRow& row, std::ostream* out) {
    *out << row.name;
}
void PrintTo(const RefusedCall& call, std::ostream* out) {
    *out << call.name;
}
void PrintTo(const AcceptedCall& call, std::ostream* out) {
    *out << call.name;
}

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::vector<ExportFamily>& families() {
    static const std::vector<ExportFamily> all = {identityExports(), scalingExports(), inputExports(),
                                                  unitExports(),     rateExports(),    canExports()};
    return all;
}

template <class Row>
std::vector<Row> gather(std::vector<Row> ExportFamily::*part) {
    std::vector<Row> rows;
    for (const ExportFamily& family : families())
        rows.insert(rows.end(), (family.*part).begin(), (family.*part).end());
    return rows;
}

template <class Row>
std::vector<Row> gatherIf(std::vector<Row> ExportFamily::*part, bool Row::*property) {
    std::vector<Row> rows = gather(part);
    std::erase_if(rows, [property](const Row& row) { return !(row.*property); });
    return rows;
}

template <class Instance>
std::string nameOf(const Instance& instance) {
    return instance.param.name;
}

TEST(ExportTables, NameSixtyExportsOnce) {
    std::set<std::string> names;
    for (const ExportRow& row : gather(&ExportFamily::exports))
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
    EXPECT_EQ(names.size(), 60U);
}

class EveryExport : public ParamsBench, public testing::WithParamInterface<ExportRow> {
  protected:
    Outcome call() {
        return run([] { return GetParam().call(device); });
    }

    // All answers, with another status where they are no refusals.
    static void scriptWithStatus(std::uint8_t status) {
        std::vector<Answer> answers = GetParam().answers;
        for (Answer& answer : answers) {
            if (answer.statusAndData.front() == 0) answer.statusAndData.front() = status;
        }
        script(answers);
    }
};

TEST_P(EveryExport, SendsExactlyItsFramesAndDeliversTheAnswer) {
    script(GetParam().answers);
    const Outcome outcome = call();
    EXPECT_EQ(outcome.result, GetParam().result);
    EXPECT_EQ(outcome.output, GetParam().output);
    EXPECT_THAT(takeSent(), ElementsAreArray(GetParam().sent));
    EXPECT_EQ(takeCode(), GetParam().stored);
    expectFree();
}

TEST_P(EveryExport, TakesAnyStatusBelow0x40AsASuccess) {
    scriptWithStatus(0x3F);
    const Outcome outcome = call();
    EXPECT_EQ(outcome.result, GetParam().result);
    EXPECT_EQ(outcome.output, GetParam().output);
}

TEST_P(EveryExport, ReportsAFirstFrameThatCouldNotBeWritten) {
    virtualFailCalls(VIRTUAL_WRITE, 0x80, 0, 1);
    // No answer can come that the time-out might race with.
    const Outcome outcome = runWithTimeouts(clock, [] { return GetParam().call(device); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_TRUE(outcome.unchanged);
    EXPECT_EQ(takeCode(), GetParam().unwritten);
    EXPECT_THAT(takeSent(), IsEmpty());
    expectFree();
}

TEST_P(EveryExport, SharesTheLastErrorOfNumbersAboveThirtyNine) {
    for (const std::int32_t number : {40, 255, 0x7FFFFF28}) {
        const Outcome outcome = GetParam().call(number);
        EXPECT_EQ(outcome.result, GetParam().numberForty.result) << number;
        EXPECT_TRUE(outcome.unchanged);
        EXPECT_EQ(takeCode(40), GetParam().numberForty.code) << number;
    }
    EXPECT_THAT(takeSent(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Params, EveryExport, testing::ValuesIn(gather(&ExportFamily::exports)),
                         nameOf<testing::TestParamInfo<ExportRow>>);

class AnsweredExport : public EveryExport {
  protected:
    void expectRefusal(std::uint8_t status) {
        script({Answer{commandOf(GetParam().sent.front()), {status}}});
        const Outcome outcome = call();
        EXPECT_EQ(outcome.result, -1);
        EXPECT_TRUE(outcome.unchanged);
        EXPECT_EQ(takeCode(), GetParam().refused != code::none ? GetParam().refused : status);
        EXPECT_THAT(takeSent(), ElementsAre(GetParam().sent.front()));
        expectFree();
    }
};

TEST_P(AnsweredExport, StoresTheSmallestStatusOfARefusal) {
    expectRefusal(0x40);
}

TEST_P(AnsweredExport, StoresTheLargestStatusOfARefusal) {
    expectRefusal(0xFF);
}

TEST_P(AnsweredExport, GivesUpOnAMissingAnswer) {
    drop(commandOf(GetParam().sent.front()));
    const Outcome outcome = call();
    EXPECT_EQ(outcome.result, -1);
    EXPECT_TRUE(outcome.unchanged);
    EXPECT_EQ(takeCode(), GetParam().unanswered);
    EXPECT_THAT(takeSent(), ElementsAre(GetParam().sent.front()));
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(2));
    expectFree();
}

INSTANTIATE_TEST_SUITE_P(Params, AnsweredExport,
                         testing::ValuesIn(gatherIf(&ExportFamily::exports, &ExportRow::answered)),
                         nameOf<testing::TestParamInfo<ExportRow>>);

class CheckedExport : public EveryExport {};

TEST_P(CheckedExport, RefusesAnInactiveDevice) {
    const Outcome outcome = run([] { return GetParam().call(inactiveDevice); });
    EXPECT_EQ(outcome.result, GetParam().inactive.result);
    EXPECT_TRUE(outcome.unchanged);
    EXPECT_EQ(takeCode(inactiveDevice), GetParam().inactive.code);
    EXPECT_THAT(takeSent(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Params, CheckedExport,
                         testing::ValuesIn(gatherIf(&ExportFamily::exports, &ExportRow::checksActivity)),
                         nameOf<testing::TestParamInfo<ExportRow>>);

// Three exports do not look whether the device is active: they write with what its record holds.
class UncheckedExport : public EveryExport {
  protected:
    void expectFailure(std::uint32_t code) {
        const Outcome outcome = runWithTimeouts(clock, [] { return GetParam().call(inactiveDevice); });
        EXPECT_EQ(outcome.result, -1);
        EXPECT_TRUE(outcome.unchanged);
        EXPECT_EQ(takeCode(inactiveDevice), code);
    }
};

TEST_P(UncheckedExport, FailsWhenTheAdapterRefusesAnInactiveDevicesHandle) {
    expectFailure(code::deviceWrite);
    EXPECT_THAT(takeWritten(), IsEmpty());
}

TEST_P(UncheckedExport, FailsWhenTheAdapterIsClosed) {
    TORVIKrelease(0);
    expectFailure(code::deviceWrite);
    EXPECT_THAT(takeWritten(), IsEmpty());
}

TEST_P(UncheckedExport, WaitsInVainForAnInactiveDeviceWhenTheAdapterTakesTheFrame) {
    deviceRecord(inactiveDevice).channelHandle = record().channelHandle.load();
    expectFailure(code::answerTimeout);
    EXPECT_THAT(takeWritten(), ElementsAre("0: " + GetParam().sent.front()));
    EXPECT_EQ(clock.elapsed(), std::chrono::seconds(2));
}

std::vector<ExportRow> uncheckedExports() {
    std::vector<ExportRow> rows = gather(&ExportFamily::exports);
    std::erase_if(rows, &ExportRow::checksActivity);
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Params, UncheckedExport, testing::ValuesIn(uncheckedExports()),
                         nameOf<testing::TestParamInfo<ExportRow>>);

class RefusedArguments : public ParamsBench, public testing::WithParamInterface<RefusedCall> {
  protected:
    void expectRefusal(std::int32_t deviceNo, const Refusal& refusal) {
        const Outcome outcome = run([deviceNo] { return GetParam().call(deviceNo); });
        EXPECT_EQ(outcome.result, refusal.result);
        EXPECT_TRUE(outcome.unchanged);
        EXPECT_EQ(takeCode(deviceNo), refusal.code);
        EXPECT_THAT(takeSent(), IsEmpty());
        EXPECT_EQ(clock.elapsed(), std::chrono::milliseconds(0));
    }
};

TEST_P(RefusedArguments, SendNothing) {
    expectRefusal(device, GetParam().active);
    expectFree();
}

TEST_P(RefusedArguments, AreCheckedInTheirPlaceOnAnInactiveDevice) {
    expectRefusal(inactiveDevice, GetParam().inactive);
}

INSTANTIATE_TEST_SUITE_P(Params, RefusedArguments, testing::ValuesIn(gather(&ExportFamily::refused)),
                         nameOf<testing::TestParamInfo<RefusedCall>>);

class AcceptedArguments : public ParamsBench, public testing::WithParamInterface<AcceptedCall> {};

TEST_P(AcceptedArguments, GoOutAsTheyAre) {
    const std::uint8_t command = commandOf(GetParam().sent);
    script({accepts(command), accepts(command), accepts(command), accepts(0x49, {0, 6}), accepts(0x24)});
    const Outcome outcome = run([] { return GetParam().call(device); });
    EXPECT_EQ(outcome.result, 0);
    const std::vector<std::string> sent = takeSent();
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent.front(), GetParam().sent);
}

INSTANTIATE_TEST_SUITE_P(Params, AcceptedArguments, testing::ValuesIn(gather(&ExportFamily::accepted)),
                         nameOf<testing::TestParamInfo<AcceptedCall>>);

}  // namespace
}  // namespace torvik::test
