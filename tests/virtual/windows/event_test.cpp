#include "open_adapter.hpp"
#include "system_support.hpp"

namespace virtual_test {
namespace {

class RegisteredEvent : public QuietAdapter {
  protected:
    void SetUp() override {
        QuietAdapter::SetUp();
        ASSERT_EQ(event.attach(kUsb), kOk);
    }

    ReceiveEvent event;
};

TEST_F(RegisteredEvent, HandleOfFourBytesIsTakenToo) {
    ReceiveEvent other;
    auto narrow = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(other.handle()));
    ASSERT_EQ(CAN_SetValue(kUsb, 0x03, &narrow, sizeof narrow), kOk);
    const VirtualFrame frame = frameOf(0x123);
    virtualPushFrames(&frame, 1);
    EXPECT_TRUE(other.wait(20'000));
    EXPECT_FALSE(event.wait(0));
}

TEST_F(RegisteredEvent, IsHandedOutAgain) {
    std::uint64_t value = 0;
    ASSERT_EQ(CAN_GetValue(kUsb, 0x03, &value, sizeof value), kOk);
    EXPECT_EQ(value, reinterpret_cast<std::uintptr_t>(event.handle()));
    ASSERT_EQ(ReceiveEvent::detach(kUsb), kOk);
    ASSERT_EQ(CAN_GetValue(kUsb, 0x03, &value, sizeof value), kOk);
    EXPECT_EQ(value, 0U);
}

TEST_F(RegisteredEvent, IsNotSetAfterItWasTakenBack) {
    ASSERT_EQ(ReceiveEvent::detach(kUsb), kOk);
    virtualHoldStream(0, 0);
    EXPECT_FALSE(event.wait(50));
}

TEST_F(RegisteredEvent, IsSetWithEveryArrivalEvenWhenNobodyDrains) {
    virtualHoldStream(0, 0);
    EXPECT_TRUE(event.wait(20'000));
    EXPECT_TRUE(event.wait(20'000));
}

}  // namespace
}  // namespace virtual_test
