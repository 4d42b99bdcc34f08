// Responses written to what is no file.
#include <chrono>
#include <future>

#include "filter/response_bench.h"
#include "support/idle_pipe.h"

namespace torvik::test {
namespace {

using Clock = std::chrono::steady_clock;

class ResponsePipes : public FilterTest {
  protected:
    void SetUp() override { make(lowPassOf(option::butterworth, 4, 0.1)); }

    // Writes to a pipe that takes nothing more; the check ends it after a moment.
    template <class Write>
    std::uint32_t writeToFullPipe(Write write) {
        IdlePipe pipe;
        pipe.openReader();
        const auto end = Clock::now() + std::chrono::milliseconds(100);
        auto writing = std::async(std::launch::async,
                                  [&] { return write(pipe.path().c_str(), [end] { return Clock::now() >= end; }); });
        EXPECT_EQ(writing.wait_for(std::chrono::seconds(5)), std::future_status::ready);
        EXPECT_GE(Clock::now(), end);
        pipe.release();
        return writing.get();
    }
};

TEST_F(ResponsePipes, StepResponse_OnAFullPipe_EndsWhenItMust) {
    const std::uint32_t code = writeToFullPipe([this](const char* path, const StopCheck& mustEnd) {
        return writeStepResponse(filter, singlePrecision, 0, 1, fs, 1000, path, mustEnd);
    });
    EXPECT_EQ(code & 0xFF000000, 0x31000000U);
}

TEST_F(ResponsePipes, FrequencyResponse_OnAFullPipe_EndsWhenItMust) {
    const std::uint32_t code = writeToFullPipe([this](const char* path, const StopCheck& mustEnd) {
        return writeFrequencyResponse(filter, singlePrecision, 100, 400, fs, 1'000'000, path, mustEnd);
    });
    EXPECT_EQ(code, 0x30000113U);
}

TEST_F(ResponsePipes, NullDevice_TakesAResponse) {
    const std::string device = deviceFiles().front();
    EXPECT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, fs, 20, device.c_str()), 0U);
}

}  // namespace
}  // namespace torvik::test
