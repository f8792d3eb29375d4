#ifndef TOOL_SOURCES_MAPPED_RECORD_SPOOL_H
#define TOOL_SOURCES_MAPPED_RECORD_SPOOL_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/io/output_file.h"
#include "tool/sources/mapped/made_record.h"

namespace tool {

// Any number of made records in a temporary file that no folder shows. They are written, and then
// read from the front any number of times.
class RecordSpool {
  public:
    // Throws std::system_error when the file cannot be made or written.
    RecordSpool();

    void Add(const MadeRecord& record);
    // Writes what is buffered; to be called after the last Add.
    void Finish();

    std::uint64_t Count() const { return m_count; }
    std::uint64_t Size() const { return m_file.Size(); }

    // A reading, which must not outlive the spool.
    class Reader {
      public:
        explicit Reader(const RecordSpool& spool) : m_spool(spool) {}

        // False after the last record. Throws std::system_error.
        bool Next(MadeRecord& record);
        std::uint64_t BytesRead() const { return m_offset - (m_buffer.size() - m_at); }

      private:
        bool Fill(std::size_t size);

        const RecordSpool& m_spool;
        std::string m_buffer;
        std::size_t m_at = 0;
        std::uint64_t m_offset = 0;  // of what follows the buffer in the file
    };

  private:
    OutputFile m_file;
    std::string m_buffer;
    std::uint64_t m_count = 0;
};

}  // namespace tool

#endif
