#ifndef ZTIMPORTER_ADIMPORTER_STEPS_H
#define ZTIMPORTER_ADIMPORTER_STEPS_H

#include <cstddef>
#include <vector>

#include "ztimporter/adimporter.h"
#include "ztimporter/historycolumns.h"

class AdImportConfigurationDataParser;

// What the importer's operations are made of. All of it works on the importer's state, which only
// members of the class can reach.
class AdImporter::Steps {
  public:
    // Each in a file of its own.
    class FieldWriter;
    class HistoryLine;
    class OriginalRecord;
    class RecordAddition;
    class ReferenceMapping;

    // A record of an attachments or history packet, beside the operation that walks the packet.
    class AttachmentAddition;
    class HistoryAddition;

    // The two kinds of packet. False when the packet is refused; Import then returns at once.
    static bool StoreConfiguration(AdImporter& importer,
                                   AdImportConfigurationDataParser& configuration,
                                   Obx_String& result);
    static bool ImportData(AdImporter& importer, const char* text, Obx_String& result);

    // The record that the core opens for writing: the one with the identifier, or a new one where
    // that is null.
    static AdEntityPtr OpenRecord(const AdImporter& importer, const unsigned short* identifier);

    // Each does one part of an operation, whose result it returns.
    static int UpdateOriginal(AdImporter& importer, OriginalRecord& original, Obx_String& error);
    static int MarkDuplicateOf(AdImporter& importer, OriginalRecord& original,
                               const AdEntityPtr& entity, Obx_String& error);

    // What follows the commit of a record. A failure here leaves the record in the database and is
    // only reported.
    static void FollowCommit(AdImporter& importer, const AdEntityPtr& entity, Obx_String& error);

    // The importer's AddHistory, of lines as the record parser splits them.
    static void AddHistory(AdImporter& importer, long recordDbid,
                           const std::vector<HistoryColumns>& lines, Obx_String& error);
    template <typename Next>
    static void FillBatch(AdImporter& importer, long recordDbid, std::size_t lines, Next next,
                          Obx_String& error);

    // Ends the creation or update of a record by the exception that is being handled; `format` is
    // the trace of its failures. Returns 0.
    static int EndByException(const AdImporter& importer, const char16_t* format,
                              Obx_String& error) noexcept;
};

#endif
