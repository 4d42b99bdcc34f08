#include "params/params_bench.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace torvik::test {

namespace {

using namespace std::chrono_literals;

// Pauses are shorter than this, the waits for answers longer; those for mutexes are longer than both.
constexpr auto longestPause = 1s;
constexpr auto longestAnswerWait = 5s;

constexpr auto patience = 10s;  // of real time

constexpr std::uint8_t answerHeader = 0x46;

std::uint64_t droppedAnswers() {
    VirtualCounters counters{};
    virtualGetCounters(&counters);
    return counters.answersDropped;
}

bool drawsTwoAnswers(std::uint8_t command) {
    return command == 0x11 || command == 0x53;
}

void replaceAnswer(std::uint8_t command, std::span<const std::uint8_t> statusAndData) {
    std::array<std::uint8_t, 8> bytes{answerHeader};
    std::ranges::copy(statusAndData, bytes.begin() + 1);
    virtualAnswerRule(amplifier, command, VIRTUAL_ANSWER_REPLACE, 1, 0, bytes.data());
}

}  // namespace

void ParamsBench::SetUp() {
    Bench::SetUp();
    ASSERT_EQ(virtualConfigure("[[amplifier]]\nreset_time_ms = 0\n"), 0) << virtualMessage();
    virtualHoldStream(amplifier, 1);
    activateAs({});
}

void ParamsBench::activateAs(const AmplifierTraits& traits) {
    TORVIKrelease(0);
    virtualClearAnswerRules();
    const auto byte = [&traits](int place) { return static_cast<std::uint8_t>(traits.firmware >> (8 * place)); };
    const std::uint8_t notStreaming = traits.streaming ? 0 : 1;
    answerWith(0x2B, {0, byte(3), byte(2), byte(1), byte(0)}, 1);
    answerWith(0x49, {0, 0, traits.channels}, 1);
    answerWith(0x26, {0, 0, 0, 0, traits.channels}, 1);
    answerWith(0x80, {0, 0, notStreaming}, 1);
    std::uint32_t count = 0;
    ASSERT_EQ(
        TORVIKactivateExtended(device, TORVIK_ADAPTER_USB, 1000000, 16, &count, 0x100, answerId, traits.protocolFlag),
        0)
        << takeLastError(device).text;
    virtualClearAnswerRules();
    takeWritten();
    ASSERT_EQ(record().firmwareVersion, traits.firmware);
    ASSERT_EQ(record().activeChannels, traits.channels);
    ASSERT_EQ(record().transmitting, traits.streaming);
}

void ParamsBench::script(std::span<const Answer> answers) {
    virtualClearAnswerRules();
    for (const Answer& answer : answers) {
        if (drawsTwoAnswers(answer.command)) {
            // A replaced answer would be the only one: both are put on the bus beforehand.
            silence(answer.command);
            arrive(answer.statusAndData);
        } else {
            replaceAnswer(answer.command, answer.statusAndData);
        }
    }
}

void ParamsBench::silence(std::uint8_t command) {
    drop(command);
}

void ParamsBench::arrive(std::span<const std::uint8_t> statusAndData) {
    const std::uint32_t waiting = record().answerCount;
    VirtualFrame frame{answerId, 0, 8, {answerHeader}};
    std::ranges::copy(statusAndData, frame.data + 1);
    push({frame});
    while (record().answerCount == waiting)
        std::this_thread::yield();
}

std::vector<std::string> ParamsBench::takeSent() {
    std::vector<std::string> frames = takeWritten();
    for (std::string& frame : frames) {
        constexpr std::string_view identifier = "100: ";
        EXPECT_TRUE(frame.starts_with(identifier)) << frame;
        frame.erase(0, identifier.size());
    }
    return frames;
}

void ParamsBench::expectFree() {
    EXPECT_FALSE(record().busy);
    EXPECT_FALSE(record().keepLock);
    EXPECT_EQ(record().answerCount, 0U);
    const auto before = clock.elapsed();
    std::uint32_t ident = 0;
    EXPECT_EQ(TORVIKgetInterfaceIdent(device, 1, &ident), 0) << takeLastError(device).text;
    EXPECT_EQ(ident, 1U);
    EXPECT_EQ(clock.elapsed(), before);
}

ParamsBench::Passing::Passing() : expiring(droppedAnswers()), begun(platform::systemNow()) {}

void ParamsBench::letPass(Passing& passing) {
    const auto distance = clock.untilEarliestDeadline();
    if (!distance || *distance <= 0s) return;
    if (*distance > longestPause && *distance < longestAnswerWait) {
        if (droppedAnswers() > passing.expiring) {
            ++passing.expiring;
        } else {
            if (platform::systemNow() - passing.begun < patience) return;
            ADD_FAILURE() << "an answer is waited for that was not dropped";
        }
    }
    clock.advanceToEarliestDeadline();
}

}  // namespace torvik::test
