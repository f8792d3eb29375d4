#include <memory>
#include <optional>
#include <string>

#include "input.h"
#include "recorddb/errors.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/tables/stored_schema.h"

namespace {

using fuzz::Expect;

// The schema, or nothing when the file is refused.
std::optional<recorddb::schema::Schema> Read(const std::string& text) {
    try {
        return recorddb::schema::ReadSchema(text, "schema.yaml");
    } catch (const recorddb::schema::SchemaError& error) {
        Expect(error.Line() >= 0 && error.Column() >= 0 && !error.Text().empty(),
               "a refusal has a text and a place");
        return std::nullopt;
    }
}

}  // namespace

// A schema that is accepted can be made a database of, and read back from there.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::Input(data, size).Text());
    const auto schema = Read(text);
    if (!schema) {
        return 0;
    }
    const auto connection = recorddb::sql::OpenScratch();
    recorddb::sql::Transaction transaction(*connection);
    recorddb::schema::StoreSchema(*connection, *schema);
    const auto stored = recorddb::schema::ReadSchema(
        recorddb::schema::LoadStoredSchema(*connection, "scratch").text, "scratch");
    recorddb::schema::CheckTables(*connection, stored, recorddb::Layout::Plain, "scratch");
    Expect(stored.Text() == text && stored.Types().size() == schema->Types().size(),
           "the stored schema is the one of the file");
    for (const recorddb::schema::RecordType& type : schema->Types()) {
        const recorddb::schema::RecordType* const same = stored.FindType(type.name);
        Expect(same != nullptr && same->fields.size() == type.fields.size(),
               "the stored types are those of the file");
    }
    transaction.Commit();
    return 0;
}
