#include "recorddb/database.h"
#include "recorddb/integrity.h"
#include "recorddb/integrity/attachment_scan.h"
#include "recorddb/integrity/content_scan.h"
#include "recorddb/integrity/duplicate_scan.h"
#include "recorddb/integrity/history_scan.h"
#include "recorddb/integrity/key_scan.h"
#include "recorddb/integrity/list_scan.h"
#include "recorddb/integrity/own_table_scan.h"
#include "recorddb/integrity/record_scan.h"
#include "recorddb/store/batch/database_batch.h"

namespace recorddb {

IntegrityTotals CheckIntegrity(Database& database, const TakeFault& take,
                               const std::function<bool(std::uint64_t)>& keepOn) {
    IntegrityTotals totals;
    const auto count = [&](const Fault& fault) {
        ++totals.faults;
        take(fault);
    };
    CheckContext context(DatabaseBatch::Of(database), database.GetSchema(), count, keepOn);
    ScanSchemaTables(context);
    for (const schema::RecordType& type : database.GetSchema().Types()) {
        ScanRecords(context, type);
        for (const schema::Field& field : type.fields) {
            if (field.kind == schema::FieldKind::ReferenceList) {
                ScanLists(context, type, field);
            }
        }
    }
    ScanShardedTables(context);
    ScanHistory(context);
    ScanDuplicates(context);
    const std::uint64_t contentsMissing = ScanAttachments(context);
    const ContentTotals contents = ScanContents(context);
    ScanJournal(context);
    totals.records = context.Records();
    totals.unusedContents = contents.unused;
    totals.unusedBytes = contents.unusedBytes;
    totals.allContentsSound = contentsMissing + contents.faults == 0;
    return totals;
}

}  // namespace recorddb
