#include "stream_sinks.h"

#include <fmt/format.h>

#include "failure.h"
#include "printable_text.h"

namespace torvik::tool {

CsvSink::CsvSink(Session& session, std::size_t channels, bool withStatus)
    : session_(session), format_(channels, withStatus) {
    writeData(session_, format_.header());
}

void CsvSink::take(const SetBatch& batch, double seconds) {
    if (batch.sets > 0) writeData(session_, format_.lines(batch, seconds));
}

void CsvSink::notice(const std::string& text) {
    printMessage(fmt::format("torvik: {}\n", text));
}

void CsvSink::finish(double) {}

TableSink::TableSink(Session& session, LiveTable table) : session_(session), table_(std::move(table)) {}

TableSink::~TableSink() {
    session_.output.write(Redraw::end());
}

void TableSink::take(const SetBatch& batch, double seconds) {
    constexpr double drawingInterval = 0.1;
    table_.add(batch, seconds);
    if (seconds < nextDrawing_) return;
    nextDrawing_ = seconds + drawingInterval;
    draw();
}

void TableSink::notice(const std::string& text) {
    table_.setNotice(text);
}

void TableSink::finish(double) {
    draw();
}

void TableSink::draw() {
    const platform::TerminalSize size = session_.output.terminalSize();
    std::vector<std::string> lines = table_.lines(size.columns);
    for (std::string& line : lines)
        line = printable(line);
    writeBytes(session_, redraw_.frame(std::move(lines), size.rows));
}

}  // namespace torvik::tool
