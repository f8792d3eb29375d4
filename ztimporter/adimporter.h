#ifndef ZTIMPORTER_ADIMPORTER_H
#define ZTIMPORTER_ADIMPORTER_H

#include <list>

#include "platform/core/adsession.h"
#include "platform/foundation/cmapstringtostring.h"
#include "platform/foundation/cobject.h"
#include "platform/foundation/obx_string.h"

class AdImportRecordParser;

// The names of the data types that a configuration's import_data can choose.
inline constexpr const char16_t* record_data_type = u"record";
inline constexpr const char16_t* history_data_type = u"history";
inline constexpr const char16_t* attachment_data_type = u"attachments";

// Imports packets of records into the record database that it is given a session of.
//
// Construct one, SetSession, then Import once per packet in source order, each configuration packet
// before the record data packets that it describes. One importer serves one thread at a time.
class __attribute__((visibility("default"))) AdImporter : public CObject {
  public:
    AdImporter();
    ~AdImporter() override;

    // The session that the following packets are imported through; may be called again at any time.
    // With another session than before, the record type is forgotten: it belongs to the former one.
    // Record data is then refused as a bad value until a configuration packet names a type again.
    void SetSession(const AdSessionPtr& session);

    // Imports one packet, a zero-terminated UTF-16 XML text (null counts as the empty text).
    // Returns the packet's error text, empty when all of it went through. Never throws; what a sink
    // of traces throws counts as an exception of the operation that traces.
    //
    // The text can hold several messages, and it can begin and end with a line feed:
    // - The text of an exception is appended after a line feed. Only where a record is searched by
    //   its original id, or a history batch is imported, do most kinds of exception replace the
    //   text that was there.
    // - The message of a refused attachment ends with a line feed. So does that of a refused line
    //   of history, unless its expiry time is what is wrong.
    //
    // A configuration packet replaces all configured values and adds to the reference mapping. In a
    // record data packet the first record that fails ends the useful work: the records after it are
    // read but not imported. After an exception, and after the records that are skipped silently,
    // the values of that record can reach the next one, also in the next packet.
    Obx_String Import(const unsigned short* xml_packet);

    // The operations and the state below are the library's own, and it does not export the
    // operations. They are not private, so that its tests, which link its objects, can drive each
    // by itself. Operations report failures as text in `error`.
  protected:
    using EntryList = std::list<CMapStringToString*>;

    // Sets up the view of the current record, and empties it. In a record type without states no
    // field is taken as the state. A field without a name stays in the map, and is refused when the
    // record is written; but where original_id is configured and duplicate_id is not, the name of
    // the duplicate reference is empty as well, and the field is taken for that.
    void SetupRecordMap(Obx_String& error);
    void CleanupRecordMap();

    // Looks up records by field value. IsReferenceIDValid replaces `fieldValue` by the unique key
    // of the one record of the referenced type whose `referencedFieldName` holds it. A result set
    // that GetResultSetWhere returns stands on its first row and is given back with
    // UnbuildResultSet.
    int IsReferenceIDValid(AdEntityPtr impEntity, Obx_String fieldName, Obx_String& fieldValue,
                           Obx_String referencedFieldName, Obx_String uniqueKey, Obx_String& error);
    AdResultSetPtr GetResultSetWhere(AdEntityDef* recordType, Obx_String fieldName,
                                     Obx_String value, Obx_String& error);

    // Writes the fields of the current record into an open record.
    int SetupFieldValues(AdEntityPtr entity, Obx_String& error);

    // Handles the current record of a record packet.
    int ImportRecord(Obx_String& error);
    int UpdateRecord(Obx_String& error);
    int MarkDuplicates(AdEntityPtr entity, Obx_String& error);

    // Handles a whole history packet, and the history batch, which ReallyImportHistory gives back
    // on every way out, empty ones included. The maps of `entries` stay the caller's.
    int ImportHistory(Obx_String& error);
    void AddHistory(long recordDbid, EntryList& entries, Obx_String& error);
    int ReallyImportHistory(Obx_String& error);
    int IsHistoryFieldEmpty(Obx_String historyId, const char16_t* key, Obx_String value,
                            long lineNumber, Obx_String& error);

    // Handles a whole attachments packet, and one field of it. The maps stay the caller's.
    int ImportAttachment(Obx_String& error);
    void AddAttachment(AdEntityPtr entity, Obx_String fieldName, EntryList& attachments,
                       Obx_String& error);

    // Empties the history batch without importing it.
    void DiscardHistory();

    AdSessionPtr m_session;
    AdEntityDef* m_entityDef = nullptr;  // owned by the session
    Obx_String m_duplicateID;
    Obx_String m_duplicateID_value;
    Obx_String m_originalID;
    Obx_String m_originalID_value;
    CMapStringToString m_recordReferenceMapping{10};
    CMapStringToString m_historyReferenceMapping{10};
    CMapStringToString m_attachmentReferenceMapping{10};
    Obx_String m_importDataType;
    CMapStringToString m_recordMap{10};
    Obx_String m_recordState;
    int m_importState = 0;
    int m_updateRecord = 0;
    int m_replaceRefList = 0;
    int m_updateInsert = 1;
    AdHistory* m_historyBuffer = nullptr;
    long m_historyCount = 0;
    int m_configurationReceived = 0;
    AdImportRecordParser* m_recordParser = nullptr;

  private:
    // What the operations are made of (ztimporter/adimporter/).
    class Steps;
};

#endif
