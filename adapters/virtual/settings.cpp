#include "settings.hpp"

#include <algorithm>

namespace virtual_adapter {

Settings factorySettings(const AmplifierConfig& config) {
    Settings settings;
    settings.mode.mode = config.mode & ~7U;
    settings.mode.transmitMode[0] = config.streaming ? 0 : 1;
    settings.rates.frequency = config.frequency;
    settings.can.numbered = {config.commandId, config.answerId, config.valueId};
    settings.can.mapping[0] = static_cast<std::uint16_t>(config.signals.size());
    for (std::size_t entry = 1; entry < CanSettings::kMappingEntries; ++entry)
        settings.can.mapping[entry] = static_cast<std::uint16_t>(entry);
    for (ChannelInput& input : settings.inputs) {
        std::ranges::copy(config.ranges, input.offered.begin());
        input.present = input.offered[0];
    }
    return settings;
}

}  // namespace virtual_adapter
