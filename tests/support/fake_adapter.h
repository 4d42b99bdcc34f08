// An adapter library inside the test program: linking it takes the place of loading one.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "can/pcan_api.h"
#include "support/adapter_entry_points.h"

namespace torvik::test {

class FakeAdapter : public AdapterDefaults {
  public:
    using Initialization = AdapterInitialization;
    using Setting = AdapterSetting;

    static FakeAdapter& instance();

    // As if the channel had been opened; forgets everything scripted and recorded.
    void open();
    void forget();

    // From now on the library, or one of its entries, cannot be found.
    void loseLibrary();
    void loseEntry(std::string_view name);

    void failWrites(std::uint32_t status);
    void failInitialize(std::uint32_t status);
    void failUninitialize(std::uint32_t status);
    void failSetValue(std::uint8_t parameter, std::uint32_t status);
    void setErrorText(std::string text);
    void failErrorText();

    // Runs `reaction` within every successful CAN_Write; not forgotten until it is replaced.
    void onWrite(std::function<void(const PcanMessage&)> reaction);

    // The same within CAN_Initialize.
    void onInitialize(std::function<void()> reaction);

    // What CAN_Read gives next, in this order; 0x20 (queue empty) after the last.
    void queueFrame(std::uint32_t identifier, std::array<std::uint8_t, 8> data, PcanTimestamp timestamp = {});
    void queueStatus(std::uint32_t status);

    // CAN_Read does not return until the reads are released; releasing returns when all of them have.
    void holdReads();
    bool untilReadIsHeld();
    void releaseReads();

    // Whether the adapter signals the library's present receive event when frames arrive.
    bool signalsTheEvent() const;

    std::vector<PcanMessage> written() const;
    std::vector<Setting> settings() const;
    std::uint32_t resets() const;
    std::vector<std::uint16_t> uninitialized() const;  // channels
    std::uint32_t libraryLoads() const;
    std::vector<std::string> lookedUp() const;
    std::optional<std::uint16_t> errorTextLanguage() const;

    // The last CAN_Initialize.
    Initialization initialized() const;

    // The entry points behind the library's calls.
    void* loadLibrary();
    bool findEntry(std::string_view name);
    std::uint32_t initialize(const Initialization& arguments);
    std::uint32_t uninitialize(std::uint16_t channel);
    std::uint32_t setValue(const Setting& setting);
    std::uint32_t getValue(std::uint8_t parameter, void* value, std::uint32_t size);
    std::uint32_t reset();
    std::uint32_t read(PcanMessage& message, PcanTimestamp& timestamp);
    std::uint32_t write(const PcanMessage& message);
    std::uint32_t getErrorText(std::uint16_t language, char* text);

  private:
    struct Reading {
        std::uint32_t status = 0;
        PcanMessage message;
        PcanTimestamp timestamp;
    };

    struct Script {
        bool libraryLost = false;
        std::set<std::string, std::less<>> lostEntries;
        std::uint32_t writeStatus = 0;
        std::uint32_t initializeStatus = 0;
        std::uint32_t uninitializeStatus = 0;
        std::pair<std::uint8_t, std::uint32_t> setValueStatus{};
        std::optional<std::string> errorText = "";
        std::deque<Reading> readings;
    };

    struct Recording {
        std::vector<PcanMessage> written;
        std::vector<Setting> settings;
        std::uint32_t resets = 0;
        std::vector<std::uint16_t> uninitialized;
        Initialization initialized;
        std::uint32_t libraryLoads = 0;
        std::vector<std::string> lookedUp;
        std::optional<std::uint16_t> errorTextLanguage;
    };

    mutable std::mutex mutex_;
    Script script_;
    Recording recording_;
    std::function<void(const PcanMessage&)> reaction_;
    std::function<void()> initializeReaction_;
    std::condition_variable readsChanged_;
    bool readsHeld_ = false;
    std::optional<std::uint64_t> registeredEvent_;  // Windows: the event's handle; Linux: the library asked for ours
    std::uint32_t heldReads_ = 0;
};

}  // namespace torvik::test
