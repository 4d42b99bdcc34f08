#include "set_reader.h"

#include <algorithm>

namespace torvik::tool {

SetReader::SetReader(const Connection& connection, std::size_t bufferSize)
    : connection_(connection),
      bufferSize_(bufferSize),
      values_(mostSets * connection.channelCount()),
      statuses_(values_.size()) {}

std::chrono::milliseconds SetReader::pollInterval() const {
    constexpr std::size_t smallBuffer = 1000;
    return std::chrono::milliseconds(bufferSize_ < smallBuffer ? 1 : 10);
}

SetBatch SetReader::read(std::size_t limit) {
    std::int32_t waiting = 0;
    if (TORVIKreceived(connection_.deviceNo(), 0, &waiting) != 0) {
        connection_.fail(ExitCode::streamFailed, "asking how many values wait");
    }
    SetBatch batch;
    batch.waiting = static_cast<std::size_t>(std::max(waiting, 0));
    // What a full buffer holds is not in order any more. A buffer of one value is full in normal operation.
    if (batch.waiting >= bufferSize_ && bufferSize_ > 1) {
        TORVIKclearDLLbuffer(connection_.deviceNo());
        batch.overflowed = true;
        return batch;
    }
    const std::size_t sets = std::min({limit, batch.waiting, mostSets});
    if (sets == 0) return batch;

    const std::size_t channels = connection_.channelCount();
    std::int32_t taken = 0;
    if (TORVIKreadMultiple(connection_.deviceNo(), 0, values_.data(), static_cast<std::int32_t>(sets * channels),
                           &taken, statuses_.data()) < 0) {
        connection_.fail(ExitCode::streamFailed, "reading measured values");
    }
    batch.sets = static_cast<std::size_t>(taken) / channels;
    batch.values = std::span(values_).first(batch.sets * channels);
    batch.statuses = std::span(statuses_).first(batch.sets * channels);
    return batch;
}

}  // namespace torvik::tool
