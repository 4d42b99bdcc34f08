#include "stream_watch.h"

#include <fmt/format.h>

namespace torvik::tool {

namespace {

/// A device that has sent nothing for so many seconds is told to.
constexpr double startAfter = 1.0;
constexpr double lookInterval = 1.0;

}  // namespace

StreamWatch::StreamWatch(const Connection& connection, SetSink& sink, double timeout)
    : connection_(connection), sink_(sink), timeout_(timeout) {}

void StreamWatch::check(const SetBatch& batch, double seconds) {
    if (batch.overflowed) {
        sink_.notice(fmt::format("values lost after {:.1f} s: the output took them too slowly and the buffer was full",
                                 seconds));
    }
    if (batch.sets > 0 || batch.overflowed) {
        latestValues_ = seconds;
        valuesSeen_ = true;
    }
    if (seconds >= nextLook_) tellErrors(seconds);
    if (!valuesSeen_ && !started_ && seconds >= startAfter) startDevice();
    if (timeout_ > 0.0 && seconds - latestValues_ >= timeout_) failWithoutValues(seconds - latestValues_);
}

void StreamWatch::tellErrors(double seconds) {
    nextLook_ = seconds + lookInterval;
    LibraryError error = takeErrorOfCall(static_cast<std::uint32_t>(connection_.deviceNo()));
    if (error.code == 0) return;
    sink_.notice(fmt::format("after {:.1f} s: {} (code {}, 0x{:X})", seconds, error.text, error.code, error.code));
    latestError_ = std::move(error);
}

void StreamWatch::startDevice() {
    started_ = true;
    sink_.notice("no values came, so the device was told to send them; it goes on sending afterwards");
    if (TORVIKstartTX(connection_.deviceNo()) != 0) {
        connection_.fail(ExitCode::streamFailed, "telling the device to send its values");
    }
}

void StreamWatch::failWithoutValues(double seconds) const {
    throw Failure{.exitCode = ExitCode::streamFailed,
                  .tried = "streaming measured values",
                  .error = latestError_,
                  .reason = fmt::format("no complete set of values came for {:.1f} s", seconds),
                  .advice = latestError_ ? std::string()
                                         : "check supply and cable and, for a slow sampling frequency, give a longer "
                                           "--timeout"};
}

}  // namespace torvik::tool
