#ifndef TOOL_PACKET_RECORD_CUTTER_H
#define TOOL_PACKET_RECORD_CUTTER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/io/text_window.h"
#include "tool/packet/markup_sections.h"
#include "tool/packet/packet_frame.h"

namespace tool {

// What keeps a record from being given to the importer at all.
enum class RecordDefect {
    None,
    Unterminated,  // no "</record>" before the next "<record>" or the end of the source
    TooLong,       // longer than the limit
    Undecodable,   // holds bytes that are not text
    TooDeep,       // its elements are nested deeper than the limit
    BadRow,        // the row that it was to be made of cannot be read
    BadValue,      // a value of it cannot be made; the others stand in it
};

// A record as it stands in the source.
struct CutRecord {
    std::string_view text;     // from "<record>" on, with decoding marks; empty when TooLong
    std::uint64_t line = 0;    // line of its first byte, from 1
    std::uint64_t offset = 0;  // place of its first byte in the source
    RecordDefect defect = RecordDefect::None;  // only the first two after it are looked for
    // A comment, CDATA section or instruction opens in it and does not close.
    bool openSection = false;
    // Its comments, CDATA sections and instructions that hold the bytes "<record>".
    std::vector<Section> disguised;
};

// Why something that looks like a record is not read.
enum class UnseenKind {
    OtherSpelling,        // "<record id=...>", "<Record>", "<record >", "<x:record>"
    InsideSection,        // "<record>" inside a comment, CDATA section or instruction
    InsideConfiguration,  // "<record>" inside a configuration packet
};

struct UnseenRecord {
    UnseenKind kind;
    std::uint64_t line;  // from 1
    std::string text;    // the beginning of what stands there, valid UTF-8
};

using UnseenHandler = std::function<void(const UnseenRecord&)>;

// Cuts a text into its records.
//
// A record begins at the exact bytes "<record>" outside comments, CDATA sections and processing
// instructions and ends with its "</record>" outside such sections, or right before the next
// "<record>". A section that does not close before the source or the longest record ends is no
// section: the search goes on after its opening mark, so that it costs its own record only.
class RecordCutter {
  public:
    // `window` stays the caller's and must outlive the cutter. `limit` is the length in bytes that
    // a record, or a section between records, must stay below. `unseen` may be empty. `frame`,
    // which may be null, gets what stands outside of the records and stays the caller's.
    RecordCutter(TextWindow& window, std::size_t limit, UnseenHandler unseen,
                 PacketFrame* frame = nullptr);

    // Finds the next record. Its text is valid until the next call. Returns false at the end.
    bool Next(CutRecord& record);

  private:
    bool SkipToRecord();
    void SkipMarkup();
    void Pass(std::size_t size);
    void TellFrame(const CutRecord& record);
    std::size_t FindMarkup(std::size_t from);
    std::size_t FindRecordEnd(CutRecord& record);
    std::size_t EndTagLength(std::size_t at);
    std::size_t SkipSection(SectionKind kind, std::size_t at, CutRecord& record);
    void ReportHidden(std::size_t size);
    void ReportOtherSpelling();

    TextWindow& m_window;
    std::size_t m_limit;
    UnseenHandler m_unseen;
    PacketFrame* m_frame;
    SectionEnds m_ends;
    std::size_t m_taken = 0;  // length of the record handed out last, still in the window
};

}  // namespace tool

#endif
