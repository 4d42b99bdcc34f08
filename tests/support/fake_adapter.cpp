#include "support/fake_adapter.h"

#include <chrono>
#include <cstring>
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
    script_ = {};
    recording_ = {};
}

void FakeAdapter::open() {
    forget();
    loadPcanApi();
    libraryState.adapterOpen = true;
}

void FakeAdapter::loseLibrary() {
    const std::scoped_lock lock(mutex_);
    script_.libraryLost = true;
}

void FakeAdapter::loseEntry(std::string_view name) {
    const std::scoped_lock lock(mutex_);
    script_.lostEntries.emplace(name);
}

void FakeAdapter::failWrites(std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    script_.writeStatus = status;
}

void FakeAdapter::failInitialize(std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    script_.initializeStatus = status;
}

void FakeAdapter::failUninitialize(std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    script_.uninitializeStatus = status;
}

void FakeAdapter::failSetValue(std::uint8_t parameter, std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    script_.setValueStatus = {parameter, status};
}

void FakeAdapter::setErrorText(std::string text) {
    const std::scoped_lock lock(mutex_);
    script_.errorText = std::move(text);
}

void FakeAdapter::failErrorText() {
    const std::scoped_lock lock(mutex_);
    script_.errorText.reset();
}

void FakeAdapter::onWrite(std::function<void(const PcanMessage&)> reaction) {
    const std::scoped_lock lock(mutex_);
    reaction_ = std::move(reaction);
}

void FakeAdapter::queueFrame(std::uint32_t identifier, std::array<std::uint8_t, 8> data, PcanTimestamp timestamp) {
    const std::scoped_lock lock(mutex_);
    PcanMessage message;
    message.id = identifier;
    message.length = 8;
    message.data = data;
    script_.readings.push_back({pcan::ok, message, timestamp});
}

void FakeAdapter::queueStatus(std::uint32_t status) {
    const std::scoped_lock lock(mutex_);
    script_.readings.push_back({status, {}, {}});
}

void FakeAdapter::holdReads() {
    const std::scoped_lock lock(mutex_);
    readsHeld_ = true;
}

bool FakeAdapter::untilReadIsHeld() {
    std::unique_lock lock(mutex_);
    return readsChanged_.wait_for(lock, std::chrono::seconds(10), [this] { return heldReads_ > 0; });
}

void FakeAdapter::releaseReads() {
    std::unique_lock lock(mutex_);
    readsHeld_ = false;
    readsChanged_.notify_all();
    readsChanged_.wait(lock, [this] { return heldReads_ == 0; });
}

std::vector<PcanMessage> FakeAdapter::written() const {
    const std::scoped_lock lock(mutex_);
    return recording_.written;
}

std::vector<FakeAdapter::Setting> FakeAdapter::settings() const {
    const std::scoped_lock lock(mutex_);
    return recording_.settings;
}

std::uint32_t FakeAdapter::resets() const {
    const std::scoped_lock lock(mutex_);
    return recording_.resets;
}

std::vector<std::uint16_t> FakeAdapter::uninitialized() const {
    const std::scoped_lock lock(mutex_);
    return recording_.uninitialized;
}

std::uint32_t FakeAdapter::libraryLoads() const {
    const std::scoped_lock lock(mutex_);
    return recording_.libraryLoads;
}

std::vector<std::string> FakeAdapter::lookedUp() const {
    const std::scoped_lock lock(mutex_);
    return recording_.lookedUp;
}

std::optional<std::uint16_t> FakeAdapter::errorTextLanguage() const {
    const std::scoped_lock lock(mutex_);
    return recording_.errorTextLanguage;
}

FakeAdapter::Initialization FakeAdapter::initialized() const {
    const std::scoped_lock lock(mutex_);
    return recording_.initialized;
}

void* FakeAdapter::loadLibrary() {
    const std::scoped_lock lock(mutex_);
    ++recording_.libraryLoads;
    return script_.libraryLost ? nullptr : this;
}

bool FakeAdapter::findEntry(std::string_view name) {
    const std::scoped_lock lock(mutex_);
    recording_.lookedUp.emplace_back(name);
    return !script_.lostEntries.contains(name);
}

std::uint32_t FakeAdapter::initialize(const Initialization& arguments) {
    const std::scoped_lock lock(mutex_);
    recording_.initialized = arguments;
    return script_.initializeStatus;
}

std::uint32_t FakeAdapter::uninitialize(std::uint16_t channel) {
    const std::scoped_lock lock(mutex_);
    recording_.uninitialized.push_back(channel);
    return script_.uninitializeStatus;
}

std::uint32_t FakeAdapter::setValue(const Setting& setting) {
    const std::scoped_lock lock(mutex_);
    recording_.settings.push_back(setting);
    return setting.parameter == script_.setValueStatus.first ? script_.setValueStatus.second : pcan::ok;
}

std::uint32_t FakeAdapter::reset() {
    const std::scoped_lock lock(mutex_);
    ++recording_.resets;
    return pcan::ok;
}

std::uint32_t FakeAdapter::read(PcanMessage& message, PcanTimestamp& timestamp) {
    std::unique_lock lock(mutex_);
    if (readsHeld_) {
        ++heldReads_;
        readsChanged_.notify_all();
        readsChanged_.wait(lock, [this] { return !readsHeld_; });
        --heldReads_;
        readsChanged_.notify_all();
    }
    if (script_.readings.empty()) return pcan::queueEmpty;
    const Reading reading = script_.readings.front();
    script_.readings.pop_front();
    if (reading.status == pcan::ok) {
        message = reading.message;
        timestamp = reading.timestamp;
    }
    return reading.status;
}

std::uint32_t FakeAdapter::write(const PcanMessage& message) {
    std::function<void(const PcanMessage&)> reaction;
    {
        const std::scoped_lock lock(mutex_);
        if (script_.writeStatus != pcan::ok) return script_.writeStatus;
        recording_.written.push_back(message);
        reaction = reaction_;
    }
    if (reaction) reaction(message);
    return pcan::ok;
}

std::uint32_t FakeAdapter::getErrorText(std::uint16_t language, char* text) {
    const std::scoped_lock lock(mutex_);
    recording_.errorTextLanguage = language;
    if (!script_.errorText) return pcan::unknownError;
    text[script_.errorText->copy(text, 255)] = '\0';
    return pcan::ok;
}

}  // namespace test

namespace {

using test::FakeAdapter;

std::uint32_t initialize(std::uint16_t channel, std::uint16_t baudCode, std::uint8_t hardwareType, std::uint32_t ioPort,
                         std::uint16_t interrupt) {
    return FakeAdapter::instance().initialize({channel, baudCode, hardwareType, ioPort, interrupt});
}

std::uint32_t uninitialize(std::uint16_t channel) {
    return FakeAdapter::instance().uninitialize(channel);
}

std::uint32_t reset(std::uint16_t) {
    return FakeAdapter::instance().reset();
}

std::uint32_t getStatus(std::uint16_t) {
    return pcan::ok;
}

std::uint32_t read(std::uint16_t, PcanMessage* message, PcanTimestamp* timestamp) {
    return FakeAdapter::instance().read(*message, *timestamp);
}

std::uint32_t write(std::uint16_t, PcanMessage* message) {
    return FakeAdapter::instance().write(*message);
}

std::uint32_t filterMessages(std::uint16_t, std::uint32_t, std::uint32_t, std::uint8_t) {
    return pcan::ok;
}

// Gives -1 for everything: where it is asked for a descriptor to wait on, that means there is none.
std::uint32_t getValue(std::uint16_t, std::uint8_t, void* value, std::uint32_t size) {
    std::memset(value, 0xFF, size);
    return pcan::ok;
}

std::uint32_t setValue(std::uint16_t channel, std::uint8_t parameter, void* value, std::uint32_t size) {
    FakeAdapter::Setting setting{channel, parameter, 0, size};
    std::memcpy(&setting.value, value, size);
    return FakeAdapter::instance().setValue(setting);
}

std::uint32_t getErrorText(std::uint32_t, std::uint16_t language, char* text) {
    return FakeAdapter::instance().getErrorText(language, text);
}

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace

namespace platform {

void* loadAdapterLibrary() {
    return FakeAdapter::instance().loadLibrary();
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
    if (!FakeAdapter::instance().findEntry(name)) return nullptr;
    for (const auto& [entry, function] : entries) {
        if (entry == name) return function;
    }
    return nullptr;
}

}  // namespace platform

}  // namespace torvik
