#include "tool/report.h"

#include <fmt/format.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>
#include <vector>

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

// A neighbour of PATH, since only within one file system a rename replaces a file at once.
fs::path Neighbour(const fs::path& path, std::string_view suffix) {
    fs::path neighbour = path;
    neighbour += fmt::format(".{}.{}", ::getpid(), suffix);
    return neighbour;
}

void Remove(const fs::path& path) {
    std::error_code ignored;
    fs::remove(path, ignored);
}

// Makes a file for a while beside REPORT, the path that people know.
OutputFile CreateBeside(const fs::path& report, std::string_view suffix) {
    fs::path path = Neighbour(report, suffix);
    // What stands there was left by a process of the same number that was killed.
    Remove(path);
    try {
        return OutputFile::CreateNew(path);
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(),
                                report.string() + ": the report cannot be written here");
    }
}

}  // namespace

std::string TotalsAsJson(const LoadTotals& totals) {
    return fmt::format(
        R"("read":{},"created":{},"updated":{},"rejected":{},"skipped":{},"history":{},)"
        R"("attachments":{},"duplicates":{},"seconds":{:.3f})",
        totals.read, totals.created, totals.updated, totals.rejected, totals.skipped,
        totals.history, totals.attachments, totals.duplicates, totals.seconds);
}

ReportWriter::Spool::Spool(const fs::path& path)
    : in(CreateBeside(path, "rejects")), out(in.Path(), in.Path().string()) {
    Remove(in.Path());
}

ReportWriter::ReportWriter(fs::path path)
    : m_path(std::move(path)), m_rejects(m_path), m_report(CreateBeside(m_path, "new")) {}

ReportWriter::~ReportWriter() {
    if (!m_finished) {
        Remove(m_report.Path());
    }
}

void ReportWriter::AddReject(const ReportedReject& reject) {
    nlohmann::ordered_json entry = {{"file", reject.file},
                                    {"record", reject.record},
                                    {"source_id", reject.sourceId},
                                    {"error", reject.error}};
    std::string text = m_rejectCount == 0 ? "\n" : ",\n";
    // Replaces what is not UTF-8 in a file name, say, where the default would throw.
    text += entry.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    m_rejects.in.Append(text);
    ++m_rejectCount;
}

void ReportWriter::Finish(const LoadTotals& totals) {
    m_report.Append(fmt::format("{{{},\"rejects\":[", TotalsAsJson(totals)));
    std::vector<char> piece(pieceSize);
    while (std::size_t got = m_rejects.out.Read(piece.data(), piece.size())) {
        m_report.Append({piece.data(), got});
    }
    m_report.Append("]}\n");
    m_report.Sync();
    m_report.Close();
    std::error_code error;
    fs::rename(m_report.Path(), m_path, error);
    if (error) {
        throw std::system_error(error, m_path.string() + ": cannot be written");
    }
    m_finished = true;
}

}  // namespace tool
