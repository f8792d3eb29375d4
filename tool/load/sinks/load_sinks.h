#ifndef TOOL_LOAD_SINKS_LOAD_SINKS_H
#define TOOL_LOAD_SINKS_LOAD_SINKS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tool/load/sinks/held_news.h"
#include "tool/load/sinks/load_sink.h"
#include "tool/load/sinks/place.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// Passes what happens in a load on to its sinks, one after the other, and keeps the totals.
class LoadSinks {
  public:
    // The load's time begins now. The sinks outlive the object and get everything in this order.
    explicit LoadSinks(std::vector<LoadSink*> sinks);

    void Say(std::string_view line);
    void Warn(std::string_view line);
    void Find(const MapFinding& finding);
    void Configure(const ImportConfiguration& configuration);

    void AddRead(std::uint64_t records = 1) { m_totals.read += records; }
    // Counts records that an earlier load has dealt with.
    void PassOver(std::uint64_t records);
    // Counts what was done under a configuration; null: under the one in force.
    void AddImported(const LoadTotals& done, const ImportConfiguration* configuration);
    // Counts a group of records that is done again.
    void AddRetry() { ++m_totals.retried; }
    // Sets the number of workers, for the totals.
    void SetWorkers(std::uint64_t workers) { m_totals.workers = workers; }
    // Count a package of a load with workers: one that a worker had done, or one that the main
    // thread does in its turn.
    void AddAhead() { ++m_totals.ahead; }
    void AddInTurn() { ++m_totals.inTurn; }
    void Reject(const RejectedRecord& record);

    // Holds rejects and losses back from the sinks until TellHeld, since they may be taken back. To
    // be called before each record, with the time of its news; times need not ascend.
    void Hold(NewsTime time) { m_held.Hold(time); }
    // Tells the sinks what was held back, in the order of the times, up to the last one given. What
    // comes now is told at once.
    void TellHeld(NewsTime last = NewsTime::End());
    // Forgets the rejects that are held back.
    void TakeBackRejects() { m_held.DropRejects(); }
    // To be called before the end of a transaction that notes which records were rejected.
    void Secure();
    // The sinks have been told that these records were rejected, and the transaction that notes it
    // has not been kept yet. Should it have to be done again, they stay rejected: what was told
    // cannot be taken back.
    bool HasTold(Place place) const { return m_told.contains(place); }
    bool HasToldAny() const { return !m_told.empty(); }
    // To be called after that transaction.
    void Keep() { m_told.clear(); }
    void Lose(const Loss& loss);
    void LeaveRejected(std::uint64_t records);
    void EndEarly(const std::string& why);

    // Says how many bytes of the sources have been read.
    void Advance(std::uint64_t bytes);

    const LoadTotals& Totals() const { return m_totals; }
    // Rejected records, those that are held back included.
    std::uint64_t Rejected() const { return m_totals.rejected + m_held.Rejects(); }
    // The number of losses that the sinks were told of.
    std::uint64_t Losses() const { return m_losses; }
    // Records that earlier loads rejected, and that are still missing.
    std::uint64_t LeftRejected() const { return m_leftRejected; }

    // Ends the load. Throws WriteError when a sink cannot write what it has, once the others have
    // finished.
    void Finish();

  private:
    double Elapsed() const;
    void Tell(const RejectedRecord& record);
    void Tell(const Loss& loss);
    template <typename Work>
    void Under(const ImportConfiguration* configuration, Work work);

    std::vector<LoadSink*> m_sinks;
    HeldNews m_held;
    std::unordered_set<Place> m_told;     // rejected records
    ImportConfiguration m_configuration;  // in force
    LoadTotals m_totals;
    std::uint64_t m_losses = 0;
    std::uint64_t m_leftRejected = 0;
    std::chrono::steady_clock::time_point m_start;
};

}  // namespace tool

#endif
