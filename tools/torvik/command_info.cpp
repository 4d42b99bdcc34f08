#include <fmt/format.h>

#include <array>
#include <iterator>
#include <string>

#include "command_line.h"
#include "connection.h"

namespace torvik::tool {

namespace {

/// Codes that a device refuses a command with: it answers, but does not offer what was asked.
constexpr bool isRefusal(std::uint32_t code) {
    return code >= 0x40 && code <= 0x99;
}

class InfoPage {
  public:
    explicit InfoPage(const Connection& connection) : connection_(connection) {}

    void line(std::string_view name, std::string_view value) {
        fmt::format_to(std::back_inserter(text_), "{:<26}{}\n", name, value);
    }

    /// A line for what the device was asked: its value, or why it is not told. A device that is silent ends the page.
    void answer(std::string_view name, std::int32_t result, std::string_view value) {
        if (result == 0) {
            line(name, value);
            return;
        }
        const LibraryError error = takeErrorOfCall(static_cast<std::uint32_t>(connection_.deviceNo()));
        if (!isRefusal(error.code)) {
            throw Failure{
                .exitCode = ExitCode::deviceFailed, .tried = fmt::format("reading '{}'", name), .error = error};
        }
        line(name, fmt::format("not told ({}, code 0x{:X})", error.text, error.code));
    }

    const std::string& text() const { return text_; }

  private:
    const Connection& connection_;
    std::string text_;
};

std::string numberText(std::uint32_t number) {
    return fmt::format("{} (0x{:08X})", number, number);
}

void describeSetUp(InfoPage& page, const ConnectionOptions& options) {
    std::uint32_t version = 0;
    TORVIKDllVersion(&version);
    page.line("Tool version", TORVIK_TOOL_VERSION);
    page.line("Library version", fmt::format("{}.{}", version >> 16, version & 0xFFFF));
    page.line("Adapter", fmt::format("{}{}", adapterName(options.adapterType), options.simulate ? " (simulated)" : ""));
    page.line("Bit rate", fmt::format("{} bit/s", options.baudRate));
    page.line("Device number", fmt::format("{}", options.deviceNo));
    page.line("Command identifier", fmt::format("0x{:X}", options.commandId));
    page.line("Answer identifier", fmt::format("0x{:X}", options.answerId));
    page.line("Protocol kind", fmt::format("{}", options.protocolKind));
}

void describeIdentity(InfoPage& page, const Connection& connection) {
    constexpr std::uint8_t identCount = 4;
    std::uint32_t serial = 0;
    std::int32_t result = TORVIKgetSerialNo(connection.deviceNo(), &serial);
    page.answer("Serial number", result, fmt::format("{}", serial));
    std::uint32_t firmware = 0;
    result = TORVIKgetFirmwareVersion(connection.deviceNo(), &firmware);
    page.answer("Firmware version", result,
                fmt::format("{}.{} (0x{:08X})", firmware >> 16, firmware & 0xFFFF, firmware));
    page.line("Channels", fmt::format("{}", connection.channelCount()));
    for (std::uint8_t index = 0; index < identCount; ++index) {
        std::uint32_t ident = 0;
        result = TORVIKgetInterfaceIdent(connection.deviceNo(), index, &ident);
        page.answer(fmt::format("Interface ident {}", index), result, numberText(ident));
    }
}

void describeErrorState(InfoPage& page, const Connection& connection) {
    constexpr std::uint32_t askDevice = 2;
    std::uint32_t code = 0;
    std::int32_t result = TORVIKgetLastProtocolError(connection.deviceNo(), askDevice, 0, &code);
    page.answer("Last protocol error", result, code == 0 ? "none" : numberText(code));

    std::array<std::uint8_t, 6> data{};
    result = TORVIKgetLastValueError(connection.deviceNo(), 0, data.data());
    page.answer("Last value error", result,
                data == decltype(data){} ? "none"
                                         : fmt::format("{:02X} {:02X} {:02X} {:02X} {:02X} {:02X}", data[0], data[1],
                                                       data[2], data[3], data[4], data[5]));
}

ExitCode runInfo(Session& session, const ConnectionOptions& options) {
    const Connection connection(options);
    InfoPage page(connection);
    describeSetUp(page, options);
    describeIdentity(page, connection);
    describeErrorState(page, connection);
    writeData(session, page.text());
    return ExitCode::success;
}

}  // namespace

void addInfoCommand(CommandLine& commandLine) {
    CLI::App* const command =
        commandLine.app.add_subcommand("info", "tell the device's identity, versions, channels and error state");
    addConnectionOptions(*command, commandLine.connection);
    command->callback([&commandLine] {
        commandLine.action = [&commandLine](Session& session) { return runInfo(session, commandLine.connection); };
    });
}

}  // namespace torvik::tool
