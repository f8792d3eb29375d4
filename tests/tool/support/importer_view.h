#ifndef TESTS_TOOL_IMPORTER_VIEW_H
#define TESTS_TOOL_IMPORTER_VIEW_H

#include <optional>
#include <string>

#include "platform/foundation/cexception.h"
#include "ztimporter/importconfigurationparser.h"
#include "ztimporter/importrecordparser.h"

// What the importer's parsers make of a packet, for tests that hold the tool's answers against it.
namespace importer_view {

// Whether the importer takes the packet as configuration; nothing when it refuses it.
inline std::optional<bool> TakesAsConfiguration(const std::string& packet) {
    AdImportConfigurationDataParser parser;
    parser.SetInputData(packet.c_str());
    try {
        return parser.IsConfigurationData() != 0;
    } catch (CException* exception) {
        exception->Delete();
        return std::nullopt;
    }
}

// The number of records that it finds in the packet.
inline int CountRecords(const std::string& packet) {
    AdImportRecordParser parser;
    parser.SetInputData(packet.c_str());
    int count = 0;
    while (parser.NextRecord() != 0) {
        ++count;
    }
    return count;
}

}  // namespace importer_view

#endif
