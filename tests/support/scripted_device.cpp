#include "support/scripted_device.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/device_table.h"
#include "core/transaction.h"
#include "support/fake_adapter.h"

namespace torvik::test {

namespace {
constexpr std::uint8_t answerHeader = 0x40;
}

ScriptedDevice::ScriptedDevice(std::uint8_t deviceNo) : deviceNo_(deviceNo) {
    answer(Command::canSetting, {0, 0, valueCanId >> 8, valueCanId & 0xFF});
    answer(Command::firmwareVersion, {0, 3, 0, 0x0B});
    answer(Command::channelCount, {0, 3});
    answer(Command::mode, {0, 0, 0, 4});
    answer(Command::transmitMode, {0, 0});
    FakeAdapter::instance().onWrite([this](const PcanMessage& message) { react(message); });
}

ScriptedDevice::~ScriptedDevice() {
    FakeAdapter::instance().onWrite(nullptr);
}

void ScriptedDevice::answer(Command command, std::array<std::uint8_t, 6> data) {
    std::array<std::uint8_t, 8> bytes{answerHeader, 0};
    std::ranges::copy(data, bytes.begin() + 2);
    answers_[command] = bytes;
}

void ScriptedDevice::refuse(Command command, std::uint8_t status) {
    answers_[command] = {answerHeader, status};
}

void ScriptedDevice::silence(Command command) {
    answers_.erase(command);
}

void ScriptedDevice::afterAnswering(Command command, std::function<void()> action) {
    actions_[command] = std::move(action);
}

std::vector<Command> ScriptedDevice::asked() const {
    return asked_;
}

void ScriptedDevice::react(const PcanMessage& message) {
    DeviceRecord& record = deviceRecord(deviceNo_);
    if (message.id != record.commandCanId) return;
    const auto command = static_cast<Command>(message.data[1]);
    asked_.push_back(command);
    if (const auto found = answers_.find(command); found != answers_.end()) {
        EXPECT_TRUE(storeAnswer(record, record.setUpCount, AnswerSlot{found->second, 0}));
    }
    if (const auto found = actions_.find(command); found != actions_.end()) found->second();
}

}  // namespace torvik::test
