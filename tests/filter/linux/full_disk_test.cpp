// A file that takes nothing.
#include <cerrno>
#include <chrono>
#include <future>

#include "filter/filter_bench.h"
#include "filter/response_files.h"
#include "support/idle_pipe.h"

namespace torvik::test {
namespace {

TEST_F(FilterTest, ReportsResponsesThatCouldNotBeWritten) {
    make(lowPassOf(option::butterworth, 4, 0.1));
    constexpr std::uint32_t noSpace = 0x31000000 | ENOSPC;
    EXPECT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, 1000, 1000, "/dev/full"), noSpace);
    EXPECT_EQ(writeFrequencyResponse(filter, singlePrecision, 10, 20, 1000, 1, "/dev/full"), noSpace);
}

TEST_F(FilterTest, PipeWithoutAReader_IsAnErrorAtOnce) {
    make(lowPassOf(option::butterworth, 4, 0.1));
    IdlePipe pipe;
    auto writing = std::async(std::launch::async, [&] {
        return writeStepResponse(filter, singlePrecision, 0, 1, 1000, 20, pipe.path().c_str());
    });
    EXPECT_EQ(writing.wait_for(std::chrono::seconds(5)), std::future_status::ready);
    pipe.release();
    EXPECT_EQ(writing.get(), 0x31000000U | ENXIO);
}

TEST_F(FilterTest, ReportsAFolderInThePlaceOfAFile) {
    make(lowPassOf(option::butterworth, 4, 0.1));
    EXPECT_EQ(writeStepResponse(filter, singlePrecision, 0, 1, 1000, 20, "/"), 0x31000000U | EISDIR);
}

}  // namespace
}  // namespace torvik::test
