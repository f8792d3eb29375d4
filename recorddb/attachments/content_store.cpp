#include "recorddb/attachments/content_store.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#include "platform/messages/message_ids.h"
#include "recorddb/attachments/content_hash.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

namespace {

constexpr std::size_t chunkSize = std::size_t{256} * 1024;

// A file read in chunks; a file that is empty has one empty chunk.
class ChunkedFile {
  public:
    explicit ChunkedFile(const std::filesystem::path& path) : m_file(path, std::ios::binary) {}

    // The next chunk, in the buffer given; false at the end and when the file cannot be read.
    bool Next(std::vector<std::byte>& buffer, std::span<const std::byte>& chunk) {
        if (!m_file.is_open() || (m_begun && m_atEnd)) {
            return false;
        }
        buffer.resize(chunkSize);
        m_file.read(reinterpret_cast<char*>(buffer.data()),
                    static_cast<std::streamsize>(buffer.size()));
        const auto got = static_cast<std::size_t>(m_file.gcount());
        m_atEnd = m_file.eof() || m_file.peek() == std::ifstream::traits_type::eof();
        chunk = std::span(buffer).first(got);
        m_begun = true;
        return !Failed();
    }

    bool Failed() const { return !m_file.is_open() || m_file.bad(); }

  private:
    std::ifstream m_file;
    bool m_begun = false;
    bool m_atEnd = false;
};

PaMessage Unreadable(const std::string& name) {
    return ErrorMessage(
        message_id::kAttachmentUnreadable,
        {{u"_value_", name}, {u"_coreinfo_", std::system_category().message(errno)}});
}

}  // namespace

PaMessage ContentStore::Store(const std::filesystem::path& path, const std::string& name,
                              Content& content) {
    // Read once to know the hash and, if the content is new, again to store it: chunks stand under
    // the hash of the whole.
    ContentHash hash;
    ChunkedFile first(path);
    std::span<const std::byte> chunk;
    content.size = 0;
    while (first.Next(m_chunk, chunk)) {
        hash.Update(chunk);
        content.size += static_cast<std::int64_t>(chunk.size());
    }
    if (first.Failed()) {
        return Unreadable(name);
    }
    content.sha256 = hash.HexDigest();
    if (m_keeping == Keeping::Examine || Has(content.sha256)) {
        return {};
    }
    ContentHash stored;
    ChunkedFile second(path);
    for (std::int64_t number = 0; second.Next(m_chunk, chunk); ++number) {
        stored.Update(chunk);
        AddChunk(content.sha256, number, chunk);
    }
    if (second.Failed()) {
        return Unreadable(name);
    }
    if (stored.HexDigest() != content.sha256) {
        return ErrorMessage(message_id::kAttachmentChanged, {{u"_value_", name}});
    }
    return {};
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
    insert.Execute();
}

void ContentStore::RemoveUnused(const std::string& sha256) {
    sql::Statement& remove = m_connection.Prepare(
        "DELETE FROM zt_content WHERE sha256 = $1 "
        "AND NOT EXISTS (SELECT 1 FROM zt_attachment WHERE sha256 = $1)");
    remove.BindAll(sha256);
    remove.Execute();
}

void ContentStore::Read(const std::string& sha256,
                        const std::function<void(std::span<const std::byte>)>& take) {
    const auto read =
        m_connection.PrepareOwn("SELECT data FROM zt_content WHERE sha256 = $1 ORDER BY chunk");
    read->BindAll(sha256);
    while (read->Step()) {
        take(read->Blob(0));
    }
}

}  // namespace recorddb
