#ifndef RECORDDB_STORE_CONTENT_STORE_H
#define RECORDDB_STORE_CONTENT_STORE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "platform/messages/pamessage.h"
#include "recorddb/attachment_folder.h"
#include "recorddb/sql.h"

namespace recorddb {

// The hash of a content, which identifies it, and its size in bytes.
struct Content {
    std::string sha256;
    std::int64_t size = 0;
};

// The content of attachments, in chunks, each content once however many attachments have it. Takes
// constant memory. Operations throw sql::Error; those that write run in the caller's transaction.
class ContentStore {
  public:
    enum class Keeping {
        Store,
        Examine  // Store reads the files and writes nothing
    };

    // The connection outlives the object.
    explicit ContentStore(sql::Connection& connection, Keeping keeping = Keeping::Store)
        : m_connection(connection), m_keeping(keeping) {}

    // Stores the content of a file unless it is there already. Returns a message with id 0, or the
    // one that says why the file could not be read, after which the caller undoes what was written.
    PaMessage Store(const AttachmentFile& file, Content& content);

    // Removes content that no attachment has.
    void RemoveUnused(const std::string& sha256);

    // Hands the content over piece by piece; nothing when it is not there.
    void Read(const std::string& sha256,
              const std::function<void(std::span<const std::byte>)>& take);

  private:
    bool Has(const std::string& sha256);
    PaMessage AddChunks(const AttachmentFile& file, const std::string& sha256);
    void AddChunk(const std::string& sha256, std::int64_t chunk, std::span<const std::byte> data);
    // Unless it is there already.
    void AddOnlyChunk(const std::string& sha256, std::span<const std::byte> data);

    sql::Connection& m_connection;
    Keeping m_keeping;
};

}  // namespace recorddb

#endif
