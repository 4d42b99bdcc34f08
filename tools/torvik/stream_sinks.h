#pragma once

#include "command_line.h"
#include "csv_format.h"
#include "live_table.h"
#include "set_sink.h"

namespace torvik::tool {

/// CSV lines on standard output, notices on standard error.
class CsvSink : public SetSink {
  public:
    CsvSink(Session& session, std::size_t channels, bool withStatus);

    void take(const SetBatch& batch, double seconds) override;
    void notice(const std::string& text) override;
    void finish(double seconds) override;

  private:
    Session& session_;
    CsvFormat format_;
};

/// The live table on a terminal, redrawn ten times a second, with the latest notice below it.
class TableSink : public SetSink {
  public:
    TableSink(Session& session, LiveTable table);
    ~TableSink() override;
    TableSink(const TableSink&) = delete;
    TableSink& operator=(const TableSink&) = delete;

    void take(const SetBatch& batch, double seconds) override;
    void notice(const std::string& text) override;
    void finish(double seconds) override;

  private:
    void draw();

    Session& session_;
    LiveTable table_;
    Redraw redraw_;
    double nextDrawing_ = 0.0;
};

}  // namespace torvik::tool
