#ifndef TESTS_ZTIMPORTER_OPEN_IMPORTER_H
#define TESTS_ZTIMPORTER_OPEN_IMPORTER_H

#include "ztimporter/adimporter.h"

// An importer whose operations and state tests can reach one by one.
class OpenImporter : public AdImporter {
  public:
    using AdImporter::EntryList;

    using AdImporter::AddAttachment;
    using AdImporter::AddHistory;
    using AdImporter::CleanupRecordMap;
    using AdImporter::DiscardHistory;
    using AdImporter::GetResultSetWhere;
    using AdImporter::ImportAttachment;
    using AdImporter::ImportHistory;
    using AdImporter::ImportRecord;
    using AdImporter::IsHistoryFieldEmpty;
    using AdImporter::IsReferenceIDValid;
    using AdImporter::MarkDuplicates;
    using AdImporter::ReallyImportHistory;
    using AdImporter::SetupFieldValues;
    using AdImporter::SetupRecordMap;
    using AdImporter::UpdateRecord;

    using AdImporter::m_attachmentReferenceMapping;
    using AdImporter::m_configurationReceived;
    using AdImporter::m_duplicateID;
    using AdImporter::m_duplicateID_value;
    using AdImporter::m_entityDef;
    using AdImporter::m_historyBuffer;
    using AdImporter::m_historyCount;
    using AdImporter::m_historyReferenceMapping;
    using AdImporter::m_importDataType;
    using AdImporter::m_importState;
    using AdImporter::m_originalID;
    using AdImporter::m_originalID_value;
    using AdImporter::m_recordMap;
    using AdImporter::m_recordParser;
    using AdImporter::m_recordReferenceMapping;
    using AdImporter::m_recordState;
    using AdImporter::m_replaceRefList;
    using AdImporter::m_session;
    using AdImporter::m_updateInsert;
    using AdImporter::m_updateRecord;
};

#endif
