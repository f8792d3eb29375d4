#ifndef ZTIMPORTER_IMPORTCONFIGURATIONPARSER_H
#define ZTIMPORTER_IMPORTCONFIGURATIONPARSER_H

#include "platform/foundation/cmapstringtostring.h"
#include "platform/foundation/obx_string.h"
#include "ztimporter/packettext.h"

// Reads a configuration packet. Holds nothing but the text: each question reads the packet afresh
// from its beginning. Reports no errors; a missing item is empty or false. Exceptions of the XML
// token stream pass through. Used by one thread at a time.
class AdImportConfigurationDataParser {
  public:
    AdImportConfigurationDataParser();
    virtual ~AdImportConfigurationDataParser();
    AdImportConfigurationDataParser(const AdImportConfigurationDataParser&) = delete;
    AdImportConfigurationDataParser& operator=(const AdImportConfigurationDataParser&) = delete;

    // Takes the zero-terminated UTF-8 text, which stays the caller's and must outlive the parser's
    // use of it. A null pointer leaves the former text in place.
    void SetInputData(const char* text);

    // Non-zero when an element named configuration opens before any text, end tag or other token.
    int IsConfigurationData();

    // The "name" attribute of the first element with the item's name; empty when there is none.
    Obx_String GetConfigString(const Obx_String& item);

    Obx_String GetImportDataType();
    Obx_String GetOriginalID();
    Obx_String GetDuplicateID();
    Obx_String GetRecordType();

    // Non-zero when the item's text is "TRUE" without regard to case.
    int GetUpdateInsert();
    int GetReplaceRefList();
    int GetUpdateRecord();
    int GetImportState();

    // Adds the pairs of a mapping list to `map`: the key is a child's target_field, the value its
    // reference_field; a child that lacks either is passed over. Returns the number of entries that
    // the map then holds, or 0 when no text was given.
    int GetReferenceMapping(const Obx_String& listName, CMapStringToString& map);
    int GetRecordReferenceMapping(CMapStringToString& map);
    int GetHistoryReferenceMapping(CMapStringToString& map);
    int GetAttachmentReferenceMapping(CMapStringToString& map);

  private:
    PacketText m_strXML;
};

#endif
