#include "ztimporter/adimporter.h"
#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/importrecordparser.h"

using adimporter::AppendCaughtException;
using adimporter::EndWithError;
using adimporter::Require;
using adimporter::TraceImporter;

void AdImporter::SetupRecordMap(Obx_String& error) {
    try {
        TraceImporter(u"SetupRecordMap begins");
        m_recordParser->GetRecordMap(m_recordMap);
        m_recordState.Empty();
        const AdEntityDef& type = Require(m_entityDef, u"m_entityDef != __null");
        const bool hasStates = type.GetType() == ad_entity_kind::kWithStates;
        Obx_String stateField;
        if (hasStates) {
            stateField = Require(type.GetStateFieldDef(), u"stateFieldDef != __null").GetName();
        }
        CMapStringToString::Position position = m_recordMap.GetStartPosition();
        while (position != nullptr) {
            const auto& [name, value] = m_recordMap.Next(position);
            if (value.IsEmpty()) {
                m_recordMap.RemoveKey(name);
            } else if (hasStates && name.CompareNoCase(stateField) == 0) {
                if (m_importState != 0) {
                    m_recordState = value;
                } else {
                    m_recordState.Empty();
                }
                m_recordMap.RemoveKey(name);
            } else if (name.CompareNoCase(m_originalID) == 0) {
                m_originalID_value = value;
            } else if (name.CompareNoCase(m_duplicateID) == 0) {
                m_duplicateID_value = value;
                m_recordMap.RemoveKey(name);
            }
        }
        TraceImporter(u"SetupRecordMap ends");
    } catch (...) {
        AppendCaughtException(error);
        EndWithError(u"SetupRecordMap ends with error: %s", error);
    }
}

void AdImporter::CleanupRecordMap() {
    TraceImporter(u"CleanupRecordMap");
    m_recordMap.RemoveAll();
    m_recordState.Empty();
    m_originalID_value.Empty();
    m_duplicateID_value.Empty();
}
