#include <fcntl.h>

#include "open_adapter.hpp"
#include "system_support.hpp"

namespace virtual_test {
namespace {

class ReceiveDescriptor : public QuietAdapter {
  protected:
    void SetUp() override {
        QuietAdapter::SetUp();
        ASSERT_EQ(event.attach(kUsb), kOk);
    }

    ReceiveEvent event;
};

TEST_F(ReceiveDescriptor, StaysReadableAsLongAsFramesAreWaiting) {
    const VirtualFrame frames[] = {frameOf(0x123), frameOf(0x124)};
    virtualPushFrames(frames, 2);
    EXPECT_TRUE(event.wait(0));
    EXPECT_TRUE(event.wait(0));
    readFrame();
    EXPECT_TRUE(event.wait(0));
    readFrame();
    EXPECT_FALSE(event.wait(0));
}

TEST_F(ReceiveDescriptor, IsNotReadableAfterAReset) {
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    CAN_Reset(kUsb);
    EXPECT_FALSE(event.wait(0));
}

TEST_F(ReceiveDescriptor, BecomesReadableWithoutAnybodyCalling) {
    virtualHoldStream(0, 0);
    EXPECT_TRUE(event.wait(20'000));
    EXPECT_TRUE(event.wait(0));
    EXPECT_EQ(drain().size() % 6, 0U);
}

TEST_F(ReceiveDescriptor, IsTheSameInBuffersOfFourAndEightBytes) {
    std::int32_t narrow = -1;
    std::int64_t wide = -1;
    ASSERT_EQ(CAN_GetValue(kUsb, 0x03, &narrow, sizeof narrow), kOk);
    ASSERT_EQ(CAN_GetValue(kUsb, 0x03, &wide, sizeof wide), kOk);
    EXPECT_EQ(narrow, wide);
    EXPECT_NE(fcntl(narrow, F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(ReceiveDescriptor, SettingZeroLeavesItWorking) {
    ASSERT_EQ(ReceiveEvent::detach(kUsb), kOk);
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    EXPECT_TRUE(event.wait(0));
}

}  // namespace
}  // namespace virtual_test
