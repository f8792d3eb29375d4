#include "recorddb/store/content_store.h"

#include <vector>

#include "recorddb/sha256.h"

namespace recorddb {

PaMessage ContentStore::Store(const AttachmentFile& file, Content& content) {
    // Chunks stand under the hash of the whole, so a content of several is read once to know the
    // hash and, if it is new, again to store it.
    Sha256 hash;
    std::vector<std::byte> first;
    std::int64_t pieces = 0;
    PaMessage problem = file.Read([&](std::span<const std::byte> piece) {
        hash.Update(piece);
        if (pieces++ == 0) {
            first.assign(piece.begin(), piece.end());
        }
    });
    if (problem.ID() != 0) {
        return problem;
    }
    content.size = file.Size();
    content.sha256 = hash.HexDigest();
    if (m_keeping == Keeping::Examine) {
        return {};
    }
    if (pieces <= 1) {
        AddOnlyChunk(content.sha256, first);
        return {};
    }
    return Has(content.sha256) ? PaMessage() : AddChunks(file, content.sha256);
}

PaMessage ContentStore::AddChunks(const AttachmentFile& file, const std::string& sha256) {
    Sha256 hash;
    std::int64_t chunks = 0;
    PaMessage problem = file.Read([&](std::span<const std::byte> piece) {
        hash.Update(piece);
        AddChunk(sha256, chunks++, piece);
    });
    if (problem.ID() != 0) {
        return problem;
    }
    return hash.HexDigest() == sha256 ? PaMessage() : file.Changed();
}

bool ContentStore::Has(const std::string& sha256) {
    sql::Statement& find =
        m_connection.Prepare("SELECT 1 FROM zt_content WHERE sha256 = $1 AND chunk = 0");
    find.BindAll(sha256);
    return sql::QueryInt(find).has_value();
}

void ContentStore::AddChunk(const std::string& sha256, std::int64_t chunk,
                            std::span<const std::byte> data) {
    sql::Statement& insert =
        m_connection.Prepare("INSERT INTO zt_content (sha256, chunk, data) VALUES ($1, $2, $3)");
    insert.BindAll(sha256, chunk, data);
    insert.ExecuteLater();
}

// To ask first whether it is there would cost as much as writing it.
void ContentStore::AddOnlyChunk(const std::string& sha256, std::span<const std::byte> data) {
    sql::Statement& insert = m_connection.Prepare(
        "INSERT INTO zt_content (sha256, chunk, data) VALUES ($1, 0, $2) ON CONFLICT DO NOTHING");
    insert.BindAll(sha256, data);
    insert.ExecuteLater();
}

void ContentStore::RemoveUnused(const std::string& sha256) {
    sql::Statement& find =
        m_connection.Prepare("SELECT 1 FROM zt_attachment WHERE sha256 = $1 LIMIT 1");
    find.BindAll(sha256);
    if (sql::QueryInt(find)) {
        return;
    }
    sql::Statement& remove = m_connection.Prepare("DELETE FROM zt_content WHERE sha256 = $1");
    remove.BindAll(sha256);
    remove.Execute();
}

void ContentStore::Read(const std::string& sha256,
                        const std::function<void(std::span<const std::byte>)>& take) {
    const auto read =
        m_connection.PrepareScan("SELECT data FROM zt_content WHERE sha256 = $1 ORDER BY chunk");
    read->BindAll(sha256);
    while (read->Step()) {
        take(read->Blob(0));
    }
}

}  // namespace recorddb
