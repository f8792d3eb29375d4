#include "tool/load/load_output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <exception>

#include "tool/io/write_error.h"
#include "tool/report/run_words.h"
#include "tool/text/number_text.h"
#include "tool/text/visible_text.h"

namespace tool {

namespace {

// A load that rejects everything must not bury what else it says.
constexpr std::uint64_t kShownRejects = 20;

std::string PlaceOf(const RejectedRecord& record, const std::string& sourceId) {
    const std::string id = sourceId.empty() ? "" : fmt::format(" ({})", sourceId);
    return fmt::format("{}, record {}{}, line {}", record.source, record.number, id, record.line);
}

bool IsToldByEveryLoad(LossKind kind) {
    return kind == LossKind::UnseenRecord || kind == LossKind::NothingImported ||
           kind == LossKind::CutShort || kind == LossKind::OutsideRecords;
}

}  // namespace

void Add(LoadTotals& totals, const LoadTotals& more) {
    totals.read += more.read;
    totals.created += more.created;
    totals.updated += more.updated;
    totals.rejected += more.rejected;
    totals.skipped += more.skipped;
    totals.history += more.history;
    totals.attachments += more.attachments;
    totals.duplicates += more.duplicates;
}

LoadOutput::LoadOutput(const LoadOptions& options, std::uint64_t totalBytes, std::ostream& out,
                       std::ostream& err)
    : m_quiet(options.quiet),
      m_rehearse(options.rehearse),
      m_out(out),
      m_progress(err, ChooseProgressStyle(options.quiet, STDERR_FILENO), totalBytes),
      m_start(std::chrono::steady_clock::now()) {
    if (!options.rejects.empty()) {
        m_rejects.emplace(options.rejects);
    }
    if (!options.report.empty()) {
        m_report.emplace(options.report, options.rehearse ? ReportWriter::Lists::RejectsAndLosses
                                                          : ReportWriter::Lists::Rejects);
    }
    if (!options.html.empty()) {
        m_html.emplace(options.html, options);
    }
}

void LoadOutput::Say(std::string_view line) {
    if (!m_quiet) {
        m_progress.Print(line);
    }
}

void LoadOutput::Warn(std::string_view line) {
    m_progress.Print(line);
}

void LoadOutput::SetConfiguration(const ImportConfiguration& configuration) {
    if (m_rejects) {
        m_rejects->SetConfiguration(configuration.ToPacket());
    }
    if (m_html) {
        m_html->Summary().StartType(configuration.RecordType(), configuration.Data(), m_totals);
    }
}

void LoadOutput::AddSkipped(std::uint64_t records) {
    m_totals.skipped += records;
    if (m_html) {
        m_html->Summary().AddLoadedBefore(records);
    }
}

void LoadOutput::AddImported(const LoadTotals& done) {
    Add(m_totals, done);
}

void LoadOutput::AddReject(const RejectedRecord& record, const std::string& sourceId) {
    ++m_totals.rejected;
    if (m_rejects) {
        m_rejects->Write(record);
    }
    if (m_report) {
        m_report->AddReject({record.source, record.number, sourceId, record.reason});
    }
    if (m_html) {
        m_html->Summary().AddReject(record, sourceId);
    }
    ShowReject(record, sourceId);
}

void LoadOutput::SyncRejects() {
    if (m_rejects) {
        m_rejects->Sync();
    }
}

void LoadOutput::AddLoss(const Loss& loss) {
    if (m_html) {
        m_html->Summary().AddLoss(loss);
    }
    if (!m_rehearse) {
        // Every load tells these; the page has the others.
        if (IsToldByEveryLoad(loss.kind)) {
            WarnOf(loss);
        }
        return;
    }
    if (m_report) {
        m_report->AddLoss(loss);
    }
    if (const auto line = m_losses.Add(loss)) {
        Warn(*line);
    }
}

void LoadOutput::WarnOf(const Loss& loss) {
    const std::uint64_t count = ++m_warned[loss.kind];
    if (count <= LossLog::shownOfEachKind) {
        Warn(fmt::format("warning: {}: {}", PlaceOf(loss), loss.text));
    } else if (count == LossLog::shownOfEachKind + 1) {
        Warn(fmt::format("warning: further {} are not shown; \"ztimport check --report\" lists all",
                         LossKindTitle(loss.kind)));
    }
}

void LoadOutput::NoteRejectedBefore(const std::string& source, std::uint64_t records,
                                    bool retried) {
    if (retried) {
        Say(fmt::format("{}: tries the rejected ones again ({})", source, records));
        return;
    }
    m_rejectedBefore += records;
    if (m_html) {
        m_html->Summary().AddRejectedBefore(records);
    }
    Warn(fmt::format(
        "{}: an earlier load rejected {} of it; mend and load what that load left in its "
        "rejects folder, or try again as it is with --retry-rejected",
        source, CountOf(records, "record")));
}

void LoadOutput::ShowReject(const RejectedRecord& record, const std::string& sourceId) {
    const std::string_view would = m_rehearse ? "would be " : "";
    if (m_totals.rejected <= kShownRejects) {
        m_progress.Print(
            fmt::format("{}rejected: {}: {}", would, PlaceOf(record, sourceId), record.reason));
    } else if (m_totals.rejected == kShownRejects + 1) {
        m_progress.Print(
            fmt::format("{}rejected: further records are counted; {}", would,
                        m_rehearse ? "--report lists all" : "--rejects and --report list all"));
    }
}

void LoadOutput::NoteEarlyEnd(const std::string& why) {
    m_complete = false;
    if (m_html) {
        m_html->Summary().NoteEarlyEnd(why);
    }
}

void LoadOutput::Advance(std::uint64_t bytes) {
    m_progress.Update(m_totals.read, bytes);
    if (m_html) {
        m_html->Summary().Advance(Elapsed(), m_totals.read);
    }
}

double LoadOutput::Elapsed() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

void LoadOutput::Finish() {
    m_totals.seconds = Elapsed();
    m_progress.Finish();
    // One report that cannot be written does not keep the rest from being told.
    std::exception_ptr failure;
    const auto finish = [&](auto& report) {
        try {
            if (report) {
                report->Finish(m_totals);
            }
        } catch (const WriteError&) {
            failure = std::current_exception();
        }
    };
    finish(m_report);
    finish(m_html);
    if (!m_quiet) {
        ShowTotals();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void LoadOutput::ShowTotals() {
    m_out << TotalsText(m_totals, m_rehearse);
    if (m_rehearse) {
        m_out << m_losses.Summary()
              << Verdict({m_totals.rejected, m_rejectedBefore, m_complete}, m_losses) << '\n';
    }
    if (m_rejects && m_rejects->Count() > 0) {
        m_out << fmt::format("The rejected records are in {}; mend them and load that folder.\n",
                             VisibleText(m_rejects->Directory().string()));
    }
}

}  // namespace tool
