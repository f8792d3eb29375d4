#ifndef TOOL_LOAD_LOAD_SINKS_H
#define TOOL_LOAD_LOAD_SINKS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/load/held_news.h"
#include "tool/load/load_sink.h"

namespace tool {

// Passes what happens in a load on to its sinks, one after the other, and keeps the totals.
class LoadSinks {
  public:
    // The load begins now, with sinks that stay the caller's and get everything in this order.
    explicit LoadSinks(std::vector<LoadSink*> sinks);

    void Say(std::string_view line);
    void Warn(std::string_view line);
    void Configure(const ImportConfiguration& configuration);

    void AddRead(std::uint64_t records = 1) { m_totals.read += records; }
    // Counts records that an earlier load has dealt with.
    void PassOver(std::uint64_t records);
    void AddImported(const LoadTotals& done) { Add(m_totals, done); }
    void Reject(const RejectedRecord& record);

    // Keeps rejects, and what is lost, from the sinks until TellHeld: they may be taken back. To be
    // called before the records, with the ordinal of each, which need not ascend.
    void Hold(std::uint64_t ordinal) { m_held.Hold(ordinal); }
    // Tells the sinks what was held, in the order of the ordinals. What comes then is told at once.
    void TellHeld();
    // Forgets the rejects that are held.
    void TakeBackRejects() { m_held.DropRejects(); }
    // To be called before a transaction ends that says that records were rejected.
    void Secure();
    void Lose(const Loss& loss);
    void LeaveRejected(std::uint64_t records);
    void EndEarly(const std::string& why);

    // Says how many bytes of the sources have been read.
    void Advance(std::uint64_t bytes);

    const LoadTotals& Totals() const { return m_totals; }
    // Rejected records, those that are held included.
    std::uint64_t Rejected() const { return m_totals.rejected + m_held.Rejects(); }
    // How much the sinks were told of as lost silently.
    std::uint64_t Losses() const { return m_losses; }
    // Records that earlier loads rejected, and that are still missing.
    std::uint64_t LeftRejected() const { return m_leftRejected; }

    // Ends the load. Throws WriteError when a sink cannot write what it has; the others have
    // finished then.
    void Finish();

  private:
    double Elapsed() const;
    void Tell(const RejectedRecord& record);
    void Tell(const Loss& loss);

    std::vector<LoadSink*> m_sinks;
    HeldNews m_held;
    LoadTotals m_totals;
    std::uint64_t m_losses = 0;
    std::uint64_t m_leftRejected = 0;
    std::chrono::steady_clock::time_point m_start;
};

}  // namespace tool

#endif
