#ifndef TOOL_VERIFY_COMPARISON_STORED_CONTENTS_H
#define TOOL_VERIFY_COMPARISON_STORED_CONTENTS_H

#include <string>

#include "recorddb/reader.h"

namespace tool {

// The contents of the database's attachments, as hashes of what is really stored.
class StoredContents {
  public:
    // The reader outlives the object.
    explicit StoredContents(recorddb::RecordReader& reader) : m_reader(reader) {}

    // Says that every content has been read and has the hash that it stands under, and that none is
    // missing: none needs to be read again.
    void AreSound() { m_areSound = true; }

    std::string HashOf(const recorddb::Attachment& attachment) {
        return m_areSound ? attachment.sha256 : m_reader.HashContent(attachment);
    }

  private:
    recorddb::RecordReader& m_reader;
    bool m_areSound = false;
};

}  // namespace tool

#endif
