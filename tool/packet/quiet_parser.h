#ifndef TOOL_PACKET_QUIET_PARSER_H
#define TOOL_PACKET_QUIET_PARSER_H

#include "ztimporter/importrecordparser.h"

namespace tool {

// The importer's parser of records, asked besides the import: what it does is left out of a trace,
// which tells of the import alone. While an object exists nothing is traced.
class QuietParser {
  public:
    AdImportRecordParser* operator->() { return &m_parser; }

  private:
    class TraceOff {
      public:
        TraceOff();
        ~TraceOff();
        TraceOff(const TraceOff&) = delete;
        TraceOff& operator=(const TraceOff&) = delete;

      private:
        bool m_wasOn;
    };

    // Before the parser, which traces its beginning and its end, too.
    TraceOff m_traceOff;
    AdImportRecordParser m_parser;
};

}  // namespace tool

#endif
