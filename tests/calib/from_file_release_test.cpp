// What happens to a device while the files of its calibration are read.
#include <chrono>
#include <functional>
#include <future>

#include "calib/from_file_bench.h"
#include "core/library_state.h"
#include "platform/faults.h"

namespace torvik::test {
namespace {

using testing::IsEmpty;

// Calls an action at every portion that is read from a file.
class FromFileReading : public FromFileBench {
  protected:
    void SetUp() override {
        FromFileBench::SetUp();
        folder.write("matrix.txt", matrixText(6, 6));
        portions_ = 0;
    }
    void TearDown() override {
        platform::setFaultHook(nullptr);
        FromFileBench::TearDown();
    }

    std::int32_t loadDuring(std::function<void()> action) {
        action_ = std::move(action);
        platform::setFaultHook(atFault);
        const std::int32_t result = load(fileOf({}));
        platform::setFaultHook(nullptr);
        return result;
    }

    static void expectReturnsSoon(std::function<void()> call) {
        auto returned = std::async(std::launch::async, std::move(call));
        const bool soon = returned.wait_for(std::chrono::seconds(1)) == std::future_status::ready;
        EXPECT_TRUE(soon);
        // What waits for the reading must not end the test's own waiting for it.
        if (!soon) unfinished_ = std::move(returned);
    }

    static inline int portions_ = 0;

  private:
    static std::uint32_t atFault(platform::FaultPoint point) {
        if (point == platform::FaultPoint::fileRead && ++portions_ == 1) action_();
        return 0;
    }

    static inline std::function<void()> action_;
    static inline std::future<void> unfinished_;
};

TEST_F(FromFileReading, Release_DuringTheReading_ReturnsAndEndsTheLoading) {
    EXPECT_EQ(loadDuring([] { expectReturnsSoon([] { TORVIKrelease(device); }); }), -1);
    EXPECT_EQ(portions_, 1);
    EXPECT_EQ(takeCode(), code::notActive);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(FromFileReading, ReleaseOfAll_DuringTheReading_ReturnsAndEndsTheLoading) {
    EXPECT_EQ(loadDuring([] { expectReturnsSoon([] { TORVIKrelease(0); }); }), -1);
    EXPECT_EQ(portions_, 1);
    EXPECT_EQ(takeCode(), code::notActive);
}

TEST_F(FromFileReading, NewActivation_DuringTheReading_GetsNothingOfTheLoading) {
    const auto activateAnew = [] {
        TORVIKrelease(device);
        use(newFirmware);
        takeSent();
    };
    EXPECT_EQ(loadDuring([&] { expectReturnsSoon(activateAnew); }), -1);
    EXPECT_EQ(takeCode(), code::notActive);
    EXPECT_THAT(takeSent(), IsEmpty());
    EXPECT_TRUE(record().active);
}

TEST_F(FromFileReading, OtherCall_DuringTheReading_IsServed) {
    EXPECT_EQ(loadDuring([] { expectReturnsSoon([] { EXPECT_EQ(TORVIKstoreFTSensorCal(device, 9), 0); }); }), 0);
    EXPECT_EQ(takeSent().front(), "81 7F 09");
}

TEST_F(FromFileReading, Unload_DuringTheReading_EndsTheLoading) {
    EXPECT_EQ(loadDuring([] {
                  EXPECT_TRUE(libraryGate.occupied());
                  libraryGate.close();
              }),
              -1);
    libraryGate.open();
    EXPECT_EQ(portions_, 1);
    EXPECT_EQ(takeCode(), code::notActive);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(FromFileReading, Path_IsCheckedBeforeTheActivity) {
    EXPECT_EQ(TORVIKwriteFTSensorCalFromFile(40, 2, nullptr), -1);
    EXPECT_EQ(takeCode(40), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteFTSensorCalFromFile(inactiveDevice, 2, nullptr), -1);
    EXPECT_EQ(takeCode(inactiveDevice), code::parameterExceedance);
    EXPECT_EQ(TORVIKwriteFTSensorCalFromFile(inactiveDevice, 2, folder.path("absent.ini").c_str()), -1);
    EXPECT_EQ(takeCode(inactiveDevice), code::notActive);
}

}  // namespace
}  // namespace torvik::test
