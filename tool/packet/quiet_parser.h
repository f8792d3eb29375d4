#ifndef TOOL_PACKET_QUIET_PARSER_H
#define TOOL_PACKET_QUIET_PARSER_H

#include "ztimporter/importrecordparser.h"

namespace tool {

// The importer's record parser, for use outside of an import. Nothing is traced while an object
// exists, so that a trace tells of the import alone.
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

    // Stands before the parser, whose constructor and destructor trace as well.
    TraceOff m_traceOff;
    AdImportRecordParser m_parser;
};

}  // namespace tool

#endif
