#ifndef TOOL_SOURCES_MAPPED_RECORD_SPOOL_H
#define TOOL_SOURCES_MAPPED_RECORD_SPOOL_H

#include <cstdint>
#include <string>

#include "tool/io/content_hash.h"
#include "tool/io/frame_spool.h"
#include "tool/sources/mapped/made_record.h"

namespace tool {

// Any number of made records in a temporary file that no folder shows. They are written, and then
// read from the front any number of times.
class RecordSpool {
  public:
    // Throws std::system_error when the file cannot be made or written, as Add and Finish do.
    RecordSpool() = default;

    void Add(const MadeRecord& record);
    // To be called once, after the last Add.
    void Finish();

    // After Finish: the hash of what the records say, in their order, in hexadecimal digits.
    const std::string& Hash() const { return m_hexHash; }
    std::uint64_t Size() const { return m_spool.Size(); }

    // A reading, which must not outlive the spool.
    class Reader {
      public:
        explicit Reader(const RecordSpool& spool) : m_reader(spool.m_spool) {}

        // False after the last record. Throws std::system_error.
        bool Next(MadeRecord& record);
        std::uint64_t BytesRead() const { return m_reader.BytesRead(); }

      private:
        FrameSpool::Reader m_reader;
    };

  private:
    FrameSpool m_spool;
    ContentHash m_hash;
    std::string m_hexHash;
};

}  // namespace tool

#endif
