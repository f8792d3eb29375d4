// Imports one record into a new record database: embed DATABASE
#include <cstdio>
#include <exception>

#include "platform/core/adsession.h"
#include "platform/foundation/obx_string.h"
#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "recorddb/session.h"
#include "ztimporter/adimporter.h"

namespace {

constexpr const char* schemaText = R"(
record_types:
  buoy:
    key: [name]
    fields:
      name:   {type: text, required: true}
      colour: {type: choice, choices: [red, green, yellow]}
)";

constexpr const char16_t* configuration =
    uR"(
<configuration>
  <import_data name="record"/>
  <record_type name="buoy"/>
  <original_id name="name"/>
</configuration>)";

constexpr const char16_t* records =
    uR"(
<buoys>
  <record>
    <field name="name">Søndre Flu</field>
    <field name="colour">yellow</field>
  </record>
</buoys>)";

// Imports a packet. Returns true when all of it went through; the error text says what did not.
bool Import(AdImporter& importer, const char16_t* packet) {
    const Obx_String error = importer.Import(Obx_String(packet).Units());
    if (!error.IsEmpty()) {
        std::fprintf(stderr, "not imported: %s\n", error.ToUtf8().c_str());
    }
    return error.IsEmpty();
}

int Run(const char* path) {
    recorddb::Database::Create(path, recorddb::schema::ReadSchema(schemaText, "embedded schema"));
    const auto database = recorddb::Database::Open(path, recorddb::Database::Mode::ReadWrite);
    const AdPtr<recorddb::Session> session = database->OpenSession({});

    AdImporter importer;
    importer.SetSession(AdSessionPtr(session.GetPtr()));
    if (!Import(importer, configuration) || !Import(importer, records)) {
        return 1;
    }
    std::printf("records created: %lld\n",
                static_cast<long long>(session->GetStatistics().recordsCreated));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: embed DATABASE\n");
        return 2;
    }
    try {
        return Run(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "embed: %s\n", error.what());
        return 3;
    }
}
