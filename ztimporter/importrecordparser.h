#ifndef ZTIMPORTER_IMPORTRECORDPARSER_H
#define ZTIMPORTER_IMPORTRECORDPARSER_H

#include <list>
#include <vector>

#include "platform/foundation/cmapstringtostring.h"
#include "platform/foundation/cstringarray.h"
#include "platform/foundation/obx_string.h"
#include "ztimporter/historycolumns.h"
#include "ztimporter/packettext.h"

// Reads a record data packet: walks the packet's UTF-8 text record by record, turns the current
// record into a map of field names to values, and decodes the field values that have an inner
// format. Reports nothing itself; exceptions of the XML token stream pass through. Used by one
// thread at a time.
class AdImportRecordParser {
  public:
    AdImportRecordParser();
    virtual ~AdImportRecordParser();
    AdImportRecordParser(const AdImportRecordParser&) = delete;
    AdImportRecordParser& operator=(const AdImportRecordParser&) = delete;

    // Takes the zero-terminated text, which stays the caller's and must outlive the parser's use of
    // it. A null pointer leaves the former text in place.
    void SetInputData(const char* text);

    // Moves to the next record; 1 when there is one, else 0.
    int NextRecord();

    // Adds the fields of the current record to `map`, the values unescaped. A field named twice
    // keeps its later value; entries that the map already holds stay. Returns the number of entries
    // that the map then holds. Malformed XML throws a CException*.
    int GetRecordMap(CMapStringToString& map);

    // The text with the eight escapes replaced, in the order of the escape table.
    Obx_String UnEscape(const Obx_String& text);

    // Replaces `items` by the value's comma-separated items; returns their number.
    int SplitReferenceListValue(const Obx_String& value, CStringArray& items);

    // The entries of a history value (one line each) or an attachments value (four lines each). The
    // maps become the caller's, who deletes each of them.
    std::list<CMapStringToString*> ExtractHistoryData(const Obx_String& value);
    std::list<CMapStringToString*> ExtractAttachmentData(const Obx_String& value);

    // What ExtractHistoryData makes maps of, and tells the same of it; parts of the value. Maps and
    // their texts cost more than all else that is done for a line.
    std::vector<HistoryColumns> SplitHistoryData(const Obx_String& value);

  private:
    PacketText m_strXML;
    int m_bRecordFound = 0;
};

#endif
