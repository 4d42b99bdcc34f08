#include "connection.h"

#include <fmt/format.h>

#include <span>

#include "TORVIKcommand.h"
#include "error_meanings.h"
#include "platform/adapter_library.h"
#include "simulation.h"

namespace torvik::tool {

namespace {

void checkIdentifiers(const ConnectionOptions& options) {
    if (options.commandId != options.answerId) return;
    throw Failure{.exitCode = ExitCode::usage,
                  .tried = fmt::format("using 0x{:X} for commands and answers alike", options.commandId),
                  .reason = "commands and answers need different identifiers",
                  .advice = "give the identifiers the device is set to with --command-id and --answer-id"};
}

std::uint32_t activationFlags(const ConnectionOptions& options) {
    std::uint32_t flags = options.protocolKind == 32 ? TORVIK_FLAG_PROTOCOL_KIND_32 : TORVIK_FLAG_PROTOCOL_KIND_16;
    if (options.debug) flags |= TORVIK_FLAG_DEBUG_OUTPUT;
    if (options.adapterLog) flags |= TORVIK_FLAG_PCAN_LOG;
    return flags;
}

std::string adviceFor(const LibraryError& error) {
    constexpr std::uint32_t noAdapterLibrary = 0x10000;
    if (error.code != noAdapterLibrary) return {};
    return fmt::format("install the adapter's driver, which brings {}, or try --simulate",
                       platform::adapterLibraryName());
}

Failure activationFailure(const ConnectionOptions& options) {
    const LibraryError error = takeErrorOfCall(options.deviceNo);
    return Failure{
        .exitCode = concernsAdapter(error.code) ? ExitCode::noAdapter : ExitCode::deviceFailed,
        .tried = fmt::format("opening device {} (adapter {}{}, {} bit/s, identifiers 0x{:X} and 0x{:X})",
                             options.deviceNo, adapterName(options.adapterType), options.simulate ? ", simulated" : "",
                             options.baudRate, options.commandId, options.answerId),
        .error = error,
        .advice = adviceFor(error)};
}

}  // namespace

Connection::Connection(const ConnectionOptions& options) : deviceNo_(static_cast<std::int32_t>(options.deviceNo)) {
    checkIdentifiers(options);
    if (options.simulate) loadVirtualAdapter(options.benchFile);
    if (TORVIKactivateExtended(deviceNo_, static_cast<std::uint8_t>(options.adapterType), options.baudRate,
                               options.bufferSize, &channelCount_, options.commandId, options.answerId,
                               activationFlags(options)) == 0) {
        return;
    }
    const Failure failure = activationFailure(options);
    TORVIKrelease(0);
    throw failure;
}

Connection::~Connection() {
    TORVIKrelease(0);
}

AnswerView Connection::ask(Command command, const Parameters& parameters, const std::string& tried) const {
    std::array<std::uint8_t, 8> answer{};
    if (sendCommand(command, parameters, answer) != 0) fail(ExitCode::deviceFailed, tried);
    return AnswerView(answer);
}

std::optional<AnswerView> Connection::askUnlessRefused(Command command, const Parameters& parameters,
                                                       const std::string& tried) const {
    std::array<std::uint8_t, 8> answer{};
    if (sendCommand(command, parameters, answer) == 0) return AnswerView(answer);
    if (!AnswerView(answer).refused()) fail(ExitCode::deviceFailed, tried);
    takeLastError(static_cast<std::uint32_t>(deviceNo_));
    return std::nullopt;
}

std::int32_t Connection::sendCommand(Command command, const Parameters& parameters,
                                     std::array<std::uint8_t, 8>& answer) const {
    const std::span<const std::uint8_t> bytes = parameters.bytes();
    return TORVIKcommand(deviceNo_, static_cast<std::uint8_t>(command), bytes.data(),
                         static_cast<std::uint32_t>(bytes.size()), answer.data());
}

void Connection::fail(ExitCode exitCode, const std::string& tried) const {
    throw Failure{
        .exitCode = exitCode, .tried = tried, .error = takeErrorOfCall(static_cast<std::uint32_t>(deviceNo_))};
}

}  // namespace torvik::tool
