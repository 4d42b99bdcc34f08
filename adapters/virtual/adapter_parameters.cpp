#include "adapter.hpp"
#include "baud_rates.hpp"

// CAN_GetValue and CAN_SetValue.
namespace virtual_adapter {

Status Adapter::getValue(std::uint16_t channel, std::uint8_t number, void* buffer, std::uint32_t length) {
    return entry(VIRTUAL_GET_VALUE, [&]() -> Status {
        const ParameterRow* const row = findParameter(number);
        if (row == nullptr || !row->readable) return kIllegalParameter;
        if (const Status status = checkPlace(*row, channel); status != kOk) return status;
        if (row->text != nullptr) return textToBuffer(row->text, buffer, length);
        if (number != parameter::kReceiveEvent) return numberToBuffer(numberOf(*row, channel), buffer, length);
        std::uint64_t value = 0;
        if (const Status status = notifier_.get(value); status != kOk) return status;
        arrived_ = true;
        notify();
        return numberToBuffer(value, buffer, length);
    });
}

Status Adapter::setValue(std::uint16_t channel, std::uint8_t number, const void* buffer, std::uint32_t length) {
    return entry(VIRTUAL_SET_VALUE, [&]() -> Status {
        const ParameterRow* const row = findParameter(number);
        if (row == nullptr || !row->writable) return kIllegalParameter;
        if (const Status status = checkPlace(*row, channel); status != kOk) return status;
        // Texts name places in the file system or lines of a log, which this adapter does not write.
        if (row->text != nullptr) return buffer == nullptr ? kIllegalValue : kOk;
        std::uint64_t value = 0;
        if (const Status status = numberFromBuffer(buffer, length, value); status != kOk) return status;
        return value > row->highest ? kIllegalValue : storeNumber(*row, value);
    });
}

Status Adapter::checkPlace(const ParameterRow& row, std::uint16_t channel) const {
    using Place = ParameterRow::Place;
    if (row.place == Place::library) return channel == 0 ? kOk : kIllegalHandle;
    const Status status = checkOpen(channel);
    return row.place == Place::channel && status == kNotInitialised ? kOk : status;
}

std::uint64_t Adapter::numberOf(const ParameterRow& row, std::uint16_t channel) const {
    constexpr std::uint64_t available = 1;
    constexpr std::uint64_t occupied = 2;
    switch (row.number) {
        case parameter::kMessageFilter:
            return static_cast<std::uint64_t>(filter_.state());
        case parameter::kChannelCondition:
            return channel == channel_ ? occupied : available;
        case parameter::kBitRateCode:
            return bitRateCode_;
        case parameter::kBitRate:
            return bitRateOf(bitRateCode_);
        default:
            return parameters_.get(row.number);
    }
}

Status Adapter::storeNumber(const ParameterRow& row, std::uint64_t value) {
    // What was due until now came under the old settings.
    advance();
    if (row.number == parameter::kReceiveEvent) {
        const Status status = notifier_.set(value);
        arrived_ = true;
        notify();
        return status;
    }
    if (row.number == parameter::kMessageFilter) {
        // The ranges themselves are set by CAN_FilterMessages.
        if (value > 1) return kIllegalValue;
        filter_.set(static_cast<Filter::State>(value));
    } else {
        parameters_.set(row.number, value);
    }
    notify();
    return kOk;
}

}  // namespace virtual_adapter
