#include "support/fake_adapter.h"

#include <string_view>

#include "core/library_state.h"
#include "platform/dynamic_library.h"

namespace torvik {

namespace test {

FakeAdapter& FakeAdapter::instance() {
    static FakeAdapter adapter;
    return adapter;
}

void FakeAdapter::forget() {
    const std::scoped_lock lock(mutex_);
    writeStatus_ = 0;
    initializeStatus_ = 0;
    setValueStatus_ = {};
    readings_.clear();
    written_.clear();
    resets_ = 0;
    initialized_ = {};
}

void FakeAdapter::open() {
    forget();
    loadPcanApi();
    libraryState.adapterOpen = true;
}

void FakeAdapter::failWrites(std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    writeStatus_ = status;
}

void FakeAdapter::failInitialize(std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    initializeStatus_ = status;
}

void FakeAdapter::failSetValue(std::uint8_t parameter, std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    setValueStatus_ = {parameter, status};
}

void FakeAdapter::queueFrame(std::uint32_t identifier, std::array<std::uint8_t, 8> data) {
    const std::scoped_lock lock(mutex_);
    PcanMessage message;
    message.id = identifier;
    message.length = 8;
    message.data = data;
    readings_.push_back({pcan::ok, message});
}

void FakeAdapter::queueStatus(std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    readings_.push_back({status, {}});
}

std::vector<PcanMessage> FakeAdapter::written() const {
    const std::scoped_lock lock(mutex_);
    return written_;
}

std::uint32_t FakeAdapter::resets() const {
    const std::scoped_lock lock(mutex_);
    return resets_;
}

std::pair<std::uint16_t, std::uint16_t> FakeAdapter::initialized() const {
    const std::scoped_lock lock(mutex_);
    return initialized_;
}

std::uint32_t FakeAdapter::initialize(std::uint16_t channel, std::uint16_t baudCode) {
    const std::scoped_lock lock(mutex_);
    initialized_ = {channel, baudCode};
    return initializeStatus_;
}

std::uint32_t FakeAdapter::setValue(std::uint8_t parameter) const {
    const std::scoped_lock lock(mutex_);
    return parameter == setValueStatus_.first ? setValueStatus_.second : pcan::ok;
}

std::uint32_t FakeAdapter::reset() {
    const std::scoped_lock lock(mutex_);
    ++resets_;
    return pcan::ok;
}

std::uint32_t FakeAdapter::read(PcanMessage& message) {
    const std::scoped_lock lock(mutex_);
    if (readings_.empty()) return pcan::queueEmpty;
    const Reading reading = readings_.front();
    readings_.pop_front();
    if (reading.status == pcan::ok) message = reading.message;
    return reading.status;
}

std::uint32_t FakeAdapter::write(const PcanMessage& message) {
    const std::scoped_lock lock(mutex_);
    if (writeStatus_ == pcan::ok) written_.push_back(message);
    return writeStatus_;
}

}  // namespace test

namespace {

using test::FakeAdapter;

std::uint32_t initialize(std::uint16_t channel, std::uint16_t baudCode, std::uint8_t, std::uint32_t, std::uint16_t) {
    return FakeAdapter::instance().initialize(channel, baudCode);
}

std::uint32_t uninitialize(std::uint16_t) {
    return pcan::ok;
}

std::uint32_t reset(std::uint16_t) {
    return FakeAdapter::instance().reset();
}

std::uint32_t getStatus(std::uint16_t) {
    return pcan::ok;
}

std::uint32_t read(std::uint16_t, PcanMessage* message, PcanTimestamp*) {
    return FakeAdapter::instance().read(*message);
}

std::uint32_t write(std::uint16_t, PcanMessage* message) {
    return FakeAdapter::instance().write(*message);
}

std::uint32_t filterMessages(std::uint16_t, std::uint32_t, std::uint32_t, std::uint8_t) {
    return pcan::ok;
}

std::uint32_t getValue(std::uint16_t, std::uint8_t, void*, std::uint32_t) {
    return pcan::unknownError;
}

std::uint32_t setValue(std::uint16_t, std::uint8_t parameter, void*, std::uint32_t) {
    return FakeAdapter::instance().setValue(parameter);
}

std::uint32_t getErrorText(std::uint32_t, std::uint16_t, char* text) {
    *text = '\0';
    return pcan::ok;
}

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace

namespace platform {

void* loadAdapterLibrary() {
    return &FakeAdapter::instance();
}

void* findSymbol(void*, const char* name) {
    const std::pair<std::string_view, void*> entries[] = {
        {"CAN_Initialize", address(initialize)},
        {"CAN_Uninitialize", address(uninitialize)},
        {"CAN_Reset", address(reset)},
        {"CAN_GetStatus", address(getStatus)},
        {"CAN_Read", address(read)},
        {"CAN_Write", address(write)},
        {"CAN_FilterMessages", address(filterMessages)},
        {"CAN_GetValue", address(getValue)},
        {"CAN_SetValue", address(setValue)},
        {"CAN_GetErrorText", address(getErrorText)},
    };
    for (const auto& [entry, function] : entries) {
        if (entry == name) return function;
    }
    return nullptr;
}

}  // namespace platform

}  // namespace torvik
