#include "bare_loop.h"

#include <bit>

namespace torvik::bench {

namespace {

double decode(std::uint8_t status, const std::array<std::uint8_t, 8>& data) {
    const std::uint32_t bits =
        std::uint32_t{data[4]} << 24 | std::uint32_t{data[5]} << 16 | std::uint32_t{data[6]} << 8 | data[7];
    switch (status >> 4 & 7) {
        case 1:
            return static_cast<std::int32_t>(bits) >> 16;
        case 2:
            return static_cast<std::int32_t>(bits) >> 8;
        default:
            return std::bit_cast<float>(bits);
    }
}

}  // namespace

BareLoop::BareLoop() {
    for (std::uint8_t deviceNo = 0; deviceNo < deviceCount; ++deviceNo)
        devices_[valueIdOf(deviceNo)] = deviceNo;
}

void BareLoop::run(std::span<const PcanMessage> frames) {
    for (const PcanMessage& frame : frames) {
        const std::scoped_lock lock(mutex_);
        Ring& ring = rings_[devices_[frame.id]][frame.data[0] & 7U];
        if (ring.writeIndex == ringLength) ring.writeIndex = 0;
        ring.entries[ring.writeIndex++] = {frame.data[1], decode(frame.data[1], frame.data)};
        if (ring.count < ringLength) ++ring.count;
    }
}

void BareLoop::clear() {
    for (auto& channels : rings_) {
        for (Ring& ring : channels)
            ring.count = 0;
    }
}

bool BareLoop::holdsInOrder(std::uint8_t deviceNo, std::uint32_t sets) const {
    for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
        const Ring& ring = rings_[deviceNo][channel];
        if (ring.count < sets) return false;
        for (std::uint32_t set = 0; set < sets; ++set) {
            const std::uint32_t place = (ring.writeIndex - ring.count + set) % ringLength;
            if (ring.entries[place].value != countsOf(deviceNo, channel, set)) return false;
        }
    }
    return true;
}

double BareLoop::sum() const {
    double sum = 0.0;
    for (const auto& channels : rings_) {
        for (const Ring& ring : channels) {
            for (std::uint32_t i = 0; i < ring.count; ++i)
                sum += ring.entries[i].value;
        }
    }
    return sum;
}

}  // namespace torvik::bench
