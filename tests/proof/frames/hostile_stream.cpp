#include "hostile_stream.h"

#include <algorithm>

#include "value_stream.h"

namespace torvik::proof {

namespace {

// Signalling and quiet NaN, infinities, denormals, the largest, the smallest, both zeros.
constexpr std::array<std::uint32_t, 14> oddFloats = {0x7F800001, 0xFFBFFFFF, 0x7FC00000, 0xFFFFFFFF, 0x7F800000,
                                                     0xFF800000, 0x00000001, 0x807FFFFF, 0x00400000, 0x7F7FFFFF,
                                                     0xFF7FFFFF, 0x00800000, 0x00000000, 0x80000000};

}  // namespace

std::uint32_t HostileStream::next(PcanMessage& message) {
    // A set that the healthy device has begun is sent to its end.
    if (framesLeft_ == 0 && healthyChannel_ == 0) {
        ended_.store(true, std::memory_order_release);
        return pcan::queueEmpty;
    }
    if (waitsForReader()) return pcan::queueEmpty;
    if (!afterStatus_ && random_.below(256) == 0) return giveStatus();
    if (framesLeft_ == 0 || random_.below(4) == 0) {
        writeHealthy(message);
        return pcan::ok;
    }
    makeHostile(message);
    cutToLength(message);
    keepReadable(message);
    afterStatus_ = false;
    --framesLeft_;
    return pcan::ok;
}

bool HostileStream::waitsForReader() {
    if (!devices_.anyFull()) return false;
    waiting_ = true;
    // Some may have been read before that was to be seen.
    return devices_.anyFull();
}

void HostileStream::writeHealthy(PcanMessage& message) {
    writeValueFrame(healthyDevice, healthyChannel_, healthySets_, message);
    afterStatus_ = false;
    if (framesLeft_ > 0) --framesLeft_;
    if (++healthyChannel_ == channelCount) {
        healthyChannel_ = 0;
        ++healthySets_;
    }
}

std::uint32_t HostileStream::giveStatus() {
    afterStatus_ = true;
    const std::uint32_t status = anyStatus();
    if (status != pcan::queueEmpty) ++faults_[status];
    ProofAdapter::instance().signal();
    return status;
}

void HostileStream::makeHostile(PcanMessage& message) {
    const std::uint64_t data = random_.next();
    for (unsigned i = 0; i < 8; ++i)
        message.data[i] = static_cast<std::uint8_t>(data >> (8 * i));
    const std::uint64_t shape = random_.next();
    message.type = static_cast<std::uint8_t>(shape);
    message.length = static_cast<std::uint8_t>(shape >> 8);
    switch (shape >> 16 & 15) {
        case 0:
            return addressHealthy(message);
        case 1:
        case 2:
            message.id = answerIdOf(static_cast<std::uint8_t>(2 + random_.below(lastVictim - 1)));
            return;
        case 3:
        case 4:
        case 5:
            message.id = anyIdentifier();
            return;
        default:
            return makeValueFrame(message);
    }
}

// A set of a victim goes on most of the time, so that many sets are completed, with any numbers in them.
void HostileStream::makeValueFrame(PcanMessage& message) {
    const auto deviceNo = static_cast<std::uint8_t>(2 + random_.below(lastVictim - 1));
    Victim& victim = victims_[deviceNo];
    message.id = valueIdOf(deviceNo);
    const std::uint32_t fault = random_.below(64);
    if (fault >= 2) {
        if (fault >= 4) message.length = static_cast<std::uint8_t>(message.length | 8);
        message.data[0] = static_cast<std::uint8_t>(victim.channel | (fault & 0x30));
        message.data[2] = static_cast<std::uint8_t>(victim.sequence >> 8);
        message.data[3] = static_cast<std::uint8_t>(victim.sequence & 0xFF);
        const std::uint32_t value = anyValue();
        for (unsigned i = 0; i < 4; ++i)
            message.data[4 + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
        if (fault != 5 && ++victim.channel >= channelCount + (fault == 6 ? 1 : 0)) {
            victim.channel = 0;
            victim.sequence = static_cast<std::uint16_t>(fault == 7 ? random_.next() : victim.sequence + 1U);
        }
    }
}

// What the healthy device's identifiers can carry: mostly what does not touch its sets; now and then a frame so short
// that it begins a set or does not belong to the one under way.
void HostileStream::addressHealthy(PcanMessage& message) {
    message.id = random_.below(2) == 0 ? valueIdOf(healthyDevice) : answerIdOf(healthyDevice);
    if (random_.below(2) == 0) message.length %= 8;
    const std::uint32_t kind = random_.below(16);
    const auto bits = static_cast<std::uint8_t>(message.data[0] & 0x3F);
    if (kind == 0) {
        message.length %= 4;
        message.data[0] = static_cast<std::uint8_t>(bits & 0x37);
    } else {
        // An answer, a command, or a value frame of a channel from 8 on.
        message.data[0] = static_cast<std::uint8_t>(bits | (kind < 6 ? 0x40 : kind < 11 ? 0x80 : 0x08));
    }
}

// The library scales all values of a device by the type of the last channel's: where values are compared, it is always
// the same.
void HostileStream::keepReadable(PcanMessage& message) {
    const std::optional<std::uint8_t> deviceNo = ExpectedDevices::deviceOf(message.id);
    if (!deviceNo || *deviceNo > lastComparedDevice || message.data[0] >= 0x40) return;
    if ((message.data[0] & 0x0F) != channelCount - 1) return;
    const auto type = static_cast<std::uint8_t>(static_cast<unsigned>(encodingOf(*deviceNo)) << 4U);
    if (message.length < 2) {
        --message.data[0];
    } else {
        message.data[1] = static_cast<std::uint8_t>((message.data[1] & 0x8F) | type);
    }
}

std::uint32_t HostileStream::anyIdentifier() {
    constexpr std::uint32_t standardBits = 0x7FF;
    for (;;) {
        auto id = static_cast<std::uint32_t>(random_.next() >> 32);
        if (random_.below(2) == 0) id &= standardBits;
        if (id != valueIdOf(healthyDevice) && id != answerIdOf(healthyDevice)) return id;
    }
}

std::uint32_t HostileStream::anyStatus() {
    if (random_.below(4) != 0) return adapterStatuses[random_.below(adapterStatuses.size())];
    for (;;) {
        const auto status = static_cast<std::uint32_t>(random_.next() >> 32);
        if (status != pcan::ok && status != pcan::queueEmpty) return status;
    }
}

std::uint32_t HostileStream::anyValue() {
    if (random_.below(2) == 0) return oddFloats[random_.below(oddFloats.size())];
    return static_cast<std::uint32_t>(random_.next() >> 32);
}

// As an adapter delivers a short frame.
void HostileStream::cutToLength(PcanMessage& message) {
    if (message.length < message.data.size()) std::fill(message.data.begin() + message.length, message.data.end(), 0);
}

}  // namespace torvik::proof
