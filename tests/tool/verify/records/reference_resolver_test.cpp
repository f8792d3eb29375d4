#include "tool/verify/records/reference_resolver.h"

#include <gtest/gtest.h>

#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "temporary_folder.h"

namespace tool {
namespace {

constexpr const char* kResolverSchema = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text, required: true}
      email: {type: text}
      born: {type: datetime}
  release:
    key: [owner, name]
    fields:
      owner: {type: reference, to: user}
      name: {type: text}
      code: {type: integer}
  place:
    key: [dbid, name]
    fields:
      name: {type: text}
      code: {type: integer}
  bug:
    prefix: BUG
    states: [NEW]
    fields:
      source_id: {type: text, unique: true}
      owner: {type: reference, to: user}
      release: {type: reference, to: release}
      place: {type: reference, to: place}
      parent: {type: reference, to: bug}
)";

constexpr const char* kRecords =
    "INSERT INTO user (dbid, login, email, born) VALUES (1, 'ann', 'ann@x', '2000-01-01 00:00:00'),"
    " (2, 'bob', 'bob@x', NULL), (3, 'b b', 'bob@x', NULL);"
    "INSERT INTO release (dbid, owner, name, code) VALUES (1, 1, 'one', 7), (2, 3, 'one two', 8);"
    "INSERT INTO place (dbid, name, code) VALUES (5, 'here now', 70);"
    "INSERT INTO bug (dbid, id, state, source_id) VALUES (4, 'BUG00000004', 'NEW', 'C-4');";

// What references in a packet lead to, as "DBID PROBLEM".
class ReferenceResolverTest : public testing::Test {
  protected:
    ReferenceResolverTest() {
        recorddb::Database::Create(m_path,
                                   recorddb::schema::ReadSchema(kResolverSchema, "schema.yaml"));
        recorddb::sql::Open(m_path, recorddb::sql::OpenMode::ReadWrite)->ExecuteScript(kRecords);
        m_database = recorddb::Database::Open(m_path, recorddb::Database::Mode::ReadOnly);
        m_reader.emplace(*m_database);
        m_lookup.emplace(*m_database, *m_reader, *m_scratch, recorddb::KeySearchLimits{});
    }

    void GivenMapping(const std::string& target, const std::string& reference) {
        m_configuration.Apply(
            "<configuration><original_id name=\"source_id\"/>"
            "<record_reference_mapping_list><m target_field=\"" +
                target + "\" reference_field=\"" + reference +
                "\"/></record_reference_mapping_list></configuration>",
            "configuration.xml");
    }

    std::string Resolve(const std::string& field, const std::string& value) {
        const auto& type = *m_database->GetSchema().FindType("bug");
        ReferenceResolver resolver(*m_lookup);
        const ExpectedTarget target =
            resolver.Resolve(*type.FindField(field), field, value, m_configuration);
        EXPECT_EQ(target.text, value);
        return std::to_string(target.dbid) + (target.problem.empty() ? "" : " " + target.problem);
    }

    TemporaryFolder m_folder;
    const std::string m_path = m_folder.File("tracker.db");
    ImportConfiguration m_configuration;
    std::unique_ptr<recorddb::Database> m_database;
    std::unique_ptr<recorddb::sql::Connection> m_scratch = recorddb::sql::OpenScratch();
    std::optional<recorddb::RecordReader> m_reader;
    std::optional<RecordLookup> m_lookup;
};

TEST_F(ReferenceResolverTest, WithoutAMappingTheKeyCounts) {
    EXPECT_EQ(Resolve("owner", "bob"), "2");
    EXPECT_EQ(Resolve("owner", "eve"), "0 there is no user \"eve\"");
    EXPECT_EQ(Resolve("release", "ann one"), "1");
    EXPECT_EQ(Resolve("release", "b b one two"), "2");
    EXPECT_EQ(Resolve("parent", "BUG00000004"), "4");
}

TEST_F(ReferenceResolverTest, AMappedFieldIsSearched) {
    GivenMapping("owner", "email");
    EXPECT_EQ(Resolve("owner", "ann@x"), "1");
    EXPECT_EQ(Resolve("owner", "ann"), "0 no user has the email \"ann\"");
    EXPECT_EQ(Resolve("owner", "bob@x"), "0 more than one user has the email \"bob@x\"");
}

TEST_F(ReferenceResolverTest, AMappedFieldIsSearchedByWhatIsStored) {
    GivenMapping("owner", "born");
    EXPECT_EQ(Resolve("owner", "2000-01-01T01:00:00+01:00"), "1");
}

TEST_F(ReferenceResolverTest, AMappedRecordWithStatesIsSearchedByTheField) {
    GivenMapping("parent", "source_id");
    EXPECT_EQ(Resolve("parent", "C-4"), "4");
    EXPECT_EQ(Resolve("parent", "BUG00000004"), "0 no bug has the source_id \"BUG00000004\"");
}

TEST_F(ReferenceResolverTest, AMappedFieldMustExist) {
    GivenMapping("owner", "phone");
    EXPECT_EQ(Resolve("owner", "1"), "0 user has no field phone to find it by");
}

TEST_F(ReferenceResolverTest, AKeyOfSeveralPartsIsNotMapped) {
    GivenMapping("release", "code");
    EXPECT_EQ(Resolve("release", "ann one"), "1");
    EXPECT_EQ(Resolve("release", "7"), "0 there is no release \"7\"");
}

TEST_F(ReferenceResolverTest, TheNumberInAKeyOfSeveralPartsIsMapped) {
    GivenMapping("place", "code");
    EXPECT_EQ(Resolve("place", "70 here now"), "5");
    EXPECT_EQ(Resolve("place", "5 here now"), "0 no place has the code \"5\"");
}

}  // namespace
}  // namespace tool
