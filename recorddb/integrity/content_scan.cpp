#include "recorddb/integrity/content_scan.h"

#include <fmt/format.h>

#include <optional>

#include "recorddb/integrity/cell_rules.h"
#include "recorddb/sha256.h"

namespace recorddb {

namespace {

class ContentScan {
  public:
    explicit ContentScan(CheckContext& context)
        : m_context(context),
          m_owners(context.Scan("SELECT sha256, record_type, record, field, filename, filesize "
                                "FROM zt_attachment ORDER BY sha256, dbid")),
          m_hasOwner(context.NextRow(*m_owners)) {}

    ContentTotals Run() {
        const auto rows =
            m_context.Scan("SELECT sha256, chunk, data FROM zt_content ORDER BY sha256, chunk");
        bool more = m_context.NextRow(*rows);
        while (more) {
            if (std::string problem = HashProblem(*rows, kHashColumn); !problem.empty()) {
                Report(CellText(*rows, kHashColumn), "sha256", std::move(problem));
                more = m_context.NextRow(*rows);
                continue;
            }
            Begin(*rows);
            do {
                Take(*rows);
                more = m_context.NextRow(*rows);
            } while (more && rows->Text(kHashColumn) == m_sha256);
            if (!m_context.Stopped()) {
                End();
            }
        }
        return m_totals;
    }

  private:
    static constexpr int kHashColumn = 0;
    static constexpr int kChunkColumn = 1;
    static constexpr int kDataColumn = 2;

    void Begin(const sql::Statement& row) {
        m_sha256 = row.Text(kHashColumn);
        m_hash.emplace();
        m_next = 0;
        m_size = 0;
        m_chunksSound = true;
    }

    void Take(const sql::Statement& row) {
        std::string problem = IntegerProblem(row, kChunkColumn, 0);
        if (problem.empty() && row.Int(kChunkColumn) != m_next) {
            problem = fmt::format("the chunk {} is expected", m_next);
        }
        if (problem.empty()) {
            problem = BlobProblem(row, kDataColumn);
        }
        if (!problem.empty() && m_chunksSound) {
            Report(m_sha256, "chunk " + CellText(row, kChunkColumn), std::move(problem));
            m_chunksSound = false;
        }
        ++m_next;
        const auto data = row.Blob(kDataColumn);
        m_hash->Update(data);
        m_size += static_cast<std::int64_t>(data.size());
    }

    void End() {
        const std::string digest = m_hash->HexDigest();
        if (m_chunksSound && digest != m_sha256) {
            Report(m_sha256, "", "what is stored has the SHA-256 " + digest);
        }
        if (!CheckOwners()) {
            ++m_totals.unused;
            m_totals.unusedBytes += static_cast<std::uint64_t>(m_size);
        }
    }

    // True when an attachment has the content. Sizes are compared only where the content is not
    // damaged. Contents and attachments are both read in the order of their hashes, so that there
    // is no search for each content.
    bool CheckOwners() {
        bool owned = false;
        for (; m_hasOwner && !IsOwnerBehind(); m_hasOwner = m_context.NextRow(*m_owners)) {
            if (IsOwner()) {
                owned = true;
                CheckSize();
            }
        }
        return owned || m_context.Stopped();
    }

    // Of what is no text, hashes are reported with their attachments.
    bool OwnerHasHash() const {
        return sql::StorageOf(*m_owners, kHashColumn) == sql::Storage::Text;
    }
    bool IsOwner() const { return OwnerHasHash() && m_owners->Text(kHashColumn) == m_sha256; }
    bool IsOwnerBehind() const { return OwnerHasHash() && m_owners->Text(kHashColumn) > m_sha256; }

    void CheckSize() {
        const schema::RecordType* const type = m_context.FindType(m_owners->Int(1));
        if (type != nullptr && sql::StorageOf(*m_owners, 5) == sql::Storage::Integer &&
            m_owners->Int(5) != m_size && m_chunksSound) {
            m_context.ReportRecord(
                *type, m_owners->Int(2),
                fmt::format("{}, {}, size", CellText(*m_owners, 3), CellText(*m_owners, 4)),
                CellText(*m_owners, 5), fmt::format("its content has {} bytes", m_size));
        }
    }

    void Report(const std::string& sha256, std::string field, std::string problem) {
        ++m_totals.faults;
        m_context.Report({.type = "zt_content",
                          .id = sha256,
                          .field = std::move(field),
                          .value = "",
                          .problem = std::move(problem)});
    }

    CheckContext& m_context;
    std::unique_ptr<sql::Statement> m_owners;
    bool m_hasOwner;
    ContentTotals m_totals;
    std::string m_sha256;  // of the content under way
    std::optional<Sha256> m_hash;
    std::int64_t m_next = 0;  // chunk
    std::int64_t m_size = 0;
    bool m_chunksSound = true;
};

}  // namespace

ContentTotals ScanContents(CheckContext& context) {
    return ContentScan(context).Run();
}

}  // namespace recorddb
