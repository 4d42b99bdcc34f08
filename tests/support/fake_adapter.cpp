#include "support/fake_adapter.h"

#include <chrono>
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

void FakeAdapter::onInitialize(std::function<void()> reaction) {
    const std::scoped_lock lock(mutex_);
    initializeReaction_ = std::move(reaction);
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

bool FakeAdapter::signalsTheEvent() const {
    const std::scoped_lock lock(mutex_);
    return registeredEvent_ == libraryState.receiveEvent.handle();
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
    std::unique_lock lock(mutex_);
    recording_.initialized = arguments;
    const std::uint32_t status = script_.initializeStatus;
    const std::function<void()> reaction = initializeReaction_;
    lock.unlock();
    if (reaction) reaction();
    return status;
}

std::uint32_t FakeAdapter::uninitialize(std::uint16_t channel) {
    const std::scoped_lock lock(mutex_);
    recording_.uninitialized.push_back(channel);
    registeredEvent_.reset();
    return script_.uninitializeStatus;
}

std::uint32_t FakeAdapter::setValue(const Setting& setting) {
    const std::scoped_lock lock(mutex_);
    recording_.settings.push_back(setting);
    if (setting.parameter == script_.setValueStatus.first && script_.setValueStatus.second != pcan::ok)
        return script_.setValueStatus.second;
    if (setting.parameter == pcan::receiveEvent) registeredEvent_ = setting.value;
    return pcan::ok;
}

// Linux asks for the adapter's own event, which is waited for together with the library's.
std::uint32_t FakeAdapter::getValue(std::uint8_t parameter, void* value, std::uint32_t size) {
    const std::scoped_lock lock(mutex_);
    if (parameter == pcan::receiveEvent) registeredEvent_ = libraryState.receiveEvent.handle();
    return AdapterDefaults::getValue(parameter, value, size);
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

using test::FakeAdapter;

namespace platform {

void* loadAdapterLibrary() {
    return FakeAdapter::instance().loadLibrary();
}

void* findSymbol(void*, const char* name) {
    return FakeAdapter::instance().findEntry(name) ? test::AdapterEntryPoints<FakeAdapter>::find(name) : nullptr;
}

}  // namespace platform

}  // namespace torvik
