#ifndef TOOL_REJECTS_REJECTS_SINK_H
#define TOOL_REJECTS_REJECTS_SINK_H

#include <filesystem>
#include <utility>

#include "tool/load/sinks/load_sink.h"
#include "tool/rejects/rejects.h"

namespace tool {

// Sets the rejected records of a load aside in a folder (RejectWriter).
class RejectsSink final : public LoadSink {
  public:
    // Throws what RejectWriter does.
    explicit RejectsSink(std::filesystem::path folder) : m_writer(std::move(folder)) {}

    void Configures(const ImportConfiguration& configuration,
                    const LoadTotals& /*soFar*/) override {
        m_writer.SetConfiguration(configuration.ToPacket());
    }
    void Rejects(const RejectedRecord& record) override { m_writer.Write(record); }
    void Secures() override { m_writer.Sync(); }
    void Finish(const LoadTotals& /*totals*/) override {}

  private:
    RejectWriter m_writer;
};

}  // namespace tool

#endif
