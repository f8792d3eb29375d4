#include <utility>

#include "platform/core/adcharset.h"
#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/left_behind.h"
#include "ztimporter/adimporter/message_text.h"
#include "ztimporter/adimporter/steps.h"
#include "ztimporter/importconfigurationparser.h"
#include "ztimporter/importrecordparser.h"

using adimporter::AppendCaughtException;
using adimporter::EndWithError;
using adimporter::LeaveBehind;
using adimporter::MessageText;
using adimporter::TraceImporter;

namespace {

constexpr const char16_t* kImportEndsWithError = u"Import ends with error: %s";

// Callers may have built the packet from char16_t, so it is read through a type that may alias.
using AliasingUnit __attribute__((may_alias)) = unsigned short;

long LengthOf(const unsigned short* packet) {
    if (packet == nullptr) {
        return 0;
    }
    const AliasingUnit* const begin = packet;
    const AliasingUnit* end = begin;
    while (*end != 0) {
        ++end;
    }
    return end - begin;
}

}  // namespace

AdImporter::AdImporter() {
    TraceQuietly(adimporter::kTag, u"Constructor");
    m_importDataType = record_data_type;
}

// A history batch is not released here: only the operations on the batch give it back.
AdImporter::~AdImporter() {
    TraceDestructor(adimporter::kTag);
    delete m_recordParser;
}

void AdImporter::SetSession(const AdSessionPtr& session) {
    TraceQuietly(adimporter::kTag, u"SetSession");
    if (session.GetPtr() != m_session.GetPtr()) {
        // The record type belongs to the former session, which may end here.
        m_entityDef = nullptr;
    }
    m_session.SetPtr(session.GetPtr());
}

Obx_String AdImporter::Import(const unsigned short* xml_packet) {
    Obx_String result;
    // A packet that is refused, or that an exception ends, leaves it behind: its "Destructor" trace
    // tells readers of a trace that the packet was worked through.
    AdImportConfigurationDataParser* configuration = nullptr;
    try {
        TraceImporter(u"Import begins, xml_packet length = %d",
                      [&] { return LengthOf(xml_packet); });
        AdMbcsString text;
        text.cvtFromTchar(AdCharset::getUTF8Charset(), xml_packet, AdCharset::converter_t::kStrict);
        configuration = new AdImportConfigurationDataParser;
        configuration->SetInputData(text.getData());
        const bool accepted = configuration->IsConfigurationData() != 0
                                  ? Steps::StoreConfiguration(*this, *configuration, result)
                                  : Steps::ImportData(*this, text.getData(), result);
        if (accepted) {
            delete std::exchange(configuration, nullptr);
            if (result.IsEmpty()) {
                TraceImporter(u"Import ends successfully.");
            } else {
                EndWithError(kImportEndsWithError, result);
            }
        }
    } catch (...) {
        AppendCaughtException(result);
        EndWithError(kImportEndsWithError, result);
    }
    LeaveBehind(configuration);
    return result;
}

bool AdImporter::Steps::StoreConfiguration(AdImporter& importer,
                                           AdImportConfigurationDataParser& configuration,
                                           Obx_String& result) {
    TraceImporter(u"Import IsConfigurationData");
    const Obx_String recordType = configuration.GetRecordType();
    try {
        importer.m_entityDef = GetEntityDef(importer.m_session, recordType);
    } catch (PaMsgException* exception) {
        const Obx_String coreText = AdExtractFirstMsgAndDeleteException(exception);
        result = MessageText(message_id::kUnknownRecordType, {{u"_datatype_", recordType}});
        TraceImporter(u"Import ends with error: %s, Core error: %s", result, coreText);
        return false;
    }
    importer.m_originalID = configuration.GetOriginalID();
    importer.m_duplicateID = configuration.GetDuplicateID();
    importer.m_importDataType = configuration.GetImportDataType();
    importer.m_importState = configuration.GetImportState();
    importer.m_updateRecord = configuration.GetUpdateRecord();
    importer.m_replaceRefList = configuration.GetReplaceRefList();
    importer.m_updateInsert = configuration.GetUpdateInsert();
    // The map is not emptied first: mappings of earlier configurations stay in force.
    configuration.GetRecordReferenceMapping(importer.m_recordReferenceMapping);
    importer.m_configurationReceived = 1;
    return true;
}

bool AdImporter::Steps::ImportData(AdImporter& importer, const char* text, Obx_String& result) {
    TraceImporter(u"Import is record data");
    if (importer.m_configurationReceived == 0) {
        result = MessageText(message_id::kNoConfiguration, {});
        EndWithError(kImportEndsWithError, result);
        return false;
    }
    // A batch that an exception left behind is dropped without release: its entries belong to no
    // record of this packet. AddHistory starts a new batch at 0.
    importer.m_historyBuffer = nullptr;
    // A parser that an exception left behind is dropped like that too: its text is gone.
    LeaveBehind(importer.m_recordParser);
    importer.m_recordParser = new AdImportRecordParser;
    importer.m_recordParser->SetInputData(text);
    if (importer.m_importDataType.CompareNoCase(record_data_type) == 0) {
        while (importer.m_recordParser->NextRecord() != 0) {
            if (importer.m_updateRecord != 0) {
                importer.UpdateRecord(result);
            } else {
                importer.ImportRecord(result);
            }
        }
    } else if (importer.m_importDataType.CompareNoCase(history_data_type) == 0) {
        importer.ImportHistory(result);
    } else if (importer.m_importDataType.CompareNoCase(attachment_data_type) == 0) {
        importer.ImportAttachment(result);
    }
    delete importer.m_recordParser;
    importer.m_recordParser = nullptr;
    return true;
}
