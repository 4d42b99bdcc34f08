#include "transcript/bench.h"

#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "virtual_control.h"

namespace torvik::proof {

void openBench(Run& run, const std::string& toml, std::uint32_t protocolFlag) {
    TORVIKrelease(0);
    if (virtualReset() != 0 || virtualConfigure(toml.c_str()) != 0) throw std::runtime_error(virtualMessage());
    virtualHoldStream(0, 1);
    std::vector<std::uint32_t> channels(1);
    run.transcript.call("TORVIKactivateExtended", TORVIKactivateExtended, 1, 1, 1000000, 65534, channels, 0x100, 0x101,
                        protocolFlag);
    if (channels[0] == 0) throw std::runtime_error("the device was not activated");
}

std::string amplifier(const std::string& settings) {
    return "[[amplifier]]\n" + settings + "\n";
}

void sendSets(std::uint32_t sets) {
    std::int32_t waiting = 0;
    TORVIKreceived(1, 0, &waiting);
    if (virtualSendSets(0, sets) == 0) throw std::runtime_error("no set was sent");
    awaitSets(waiting + static_cast<std::int32_t>(sets));
}

void awaitSets(std::int32_t sets) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (std::int32_t waiting = 0; waiting < sets;) {
        TORVIKreceived(1, 0, &waiting);
        if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("sets that were sent do not arrive");
        if (waiting < sets) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace torvik::proof
