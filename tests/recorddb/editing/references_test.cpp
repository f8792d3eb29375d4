#include <gmock/gmock.h>

#include "recorddb/editing/reference_keys.h"
#include "recorddb/store/batch/database_batch.h"
#include "recorddb/store/key_table.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::StartsWith;

class ReferencesTest : public OnEachEngine<SessionTest> {
  protected:
    AdEntityPtr NewBug() {
        AdEntityPtr bug = New("bug");
        Set(bug, "title", "t");
        return bug;
    }
};

TEST_P(ReferencesTest, AreGivenAndReadByASingleKey) {
    Given("user", {{"login", "ann"}});
    Given("user", {{"login", "bob"}});
    const AdEntityPtr bug = NewBug();
    Set(bug, "owner", "bob");
    Save(bug);
    EXPECT_EQ(Row("SELECT owner FROM bug"), "2");
    EXPECT_EQ(Value(Open("bug", "1"), "owner"), "bob");
}

TEST_P(ReferencesTest, AreGivenAndReadByTheDisplayId) {
    Given("bug", {{"title", "parent"}});
    const AdEntityPtr bug = NewBug();
    Set(bug, "parent", "BUG00000001");
    Save(bug);
    EXPECT_EQ(Value(Open("bug", "2"), "parent"), "BUG00000001");
}

TEST_P(ReferencesTest, PartsOfAKeyAreJoinedByBlanksAndMayContainThem) {
    Given("place", {{"town", "New York"}, {"street", "Wall Street"}});
    const AdEntityPtr bug = NewBug();
    Set(bug, "place", "New York Wall Street");
    Save(bug);
    EXPECT_EQ(Value(Open("bug", "1"), "place"), "New York Wall Street");
}

TEST_P(ReferencesTest, KeyThatFitsSeveralRecordsIsRefused) {
    Given("place", {{"town", "a"}, {"street", "b c"}});
    Given("place", {{"town", "a b"}, {"street", "c"}});
    EXPECT_EQ(Refusal(NewBug(), "place", "a b c"),
              "The field \"place\" of a record of type \"bug\" cannot refer to \"a b c\": several "
              "records of type \"place\" could be meant.");
}

TEST_P(ReferencesTest, DbidCanBePartOfAKey) {
    Given("user", {{"login", "ann"}});
    Given("desk", {{"owner", "ann"}});
    Given("desk", {{"owner", "ann"}});
    const AdEntityPtr bug = NewBug();
    Set(bug, "desk", "2 ann");
    EXPECT_EQ(Value(bug, "desk"), "2 ann");
    EXPECT_NE(Refusal(bug, "desk", "3 ann"), "");
    EXPECT_NE(Refusal(bug, "desk", "2 bob"), "");
    EXPECT_NE(Refusal(bug, "desk", "x ann"), "");
    EXPECT_NE(Refusal(bug, "desk", "2"), "");
}

TEST_P(ReferencesTest, ReferenceInAKeyStandsThereByItsOwnKey) {
    Given("place", {{"town", "New York"}, {"street", "Wall Street"}});
    Given("lane", {{"place", "New York Wall Street"}, {"number", "3"}});
    const AdEntityPtr bug = NewBug();
    Set(bug, "lane", "New York Wall Street 3");
    Save(bug);
    EXPECT_EQ(Value(Open("bug", "1"), "lane"), "New York Wall Street 3");
}

TEST_P(ReferencesTest, UnknownKeyIsNamedWithTheTypeItShouldBeOf) {
    EXPECT_EQ(
        Refusal(NewBug(), "owner", "zoe"),
        "The field \"owner\" of a record of type \"bug\" cannot refer to \"zoe\": there is no "
        "record of type \"user\" with this key.");
}

TEST_P(ReferencesTest, KeyThatIsCreatedAfterAMissIsFound) {
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr bug = NewBug();
    EXPECT_NE(Refusal(bug, "owner", "ann"), "");
    Given("user", {{"login", "ann"}});
    Set(bug, "owner", "ann");
}

TEST_P(ReferencesTest, KeyThatChangesIsForgotten) {
    Given("user", {{"login", "ann"}});
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr bug = NewBug();
    Set(bug, "owner", "ann");
    const AdEntityPtr user = Open("user", "1");
    Set(user, "login", "anna");
    Save(user);
    EXPECT_NE(Refusal(bug, "owner", "ann"), "");
    Set(bug, "owner", "anna");
}

TEST_P(ReferencesTest, RecordThatIsRolledBackIsForgotten) {
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr bug = NewBug();
    {
        const auto savepoint = transaction->Savepoint();
        Given("user", {{"login", "ann"}});
        Set(bug, "owner", "ann");
    }
    EXPECT_NE(Refusal(bug, "owner", "ann"), "");
}

TEST_P(ReferencesTest, KeyChangedByAnotherWriterIsForgottenWithTheTransaction) {
    Given("user", {{"login", "ann"}});
    {
        const auto transaction = Core().BeginTransaction();
        Set(NewBug(), "owner", "ann");
        transaction->Commit();
    }
    const auto other = Database::Open(Location(), Database::Mode::ReadWrite);
    other->GetConnection().ExecuteScript("UPDATE \"user\" SET login = 'eve'");
    if (LayoutOn(GetParam()) == Layout::Sharded) {
        other->GetConnection().ExecuteScript("DELETE FROM zt_key WHERE value = 'ann'");
    }
    const auto transaction = Core().BeginTransaction();
    EXPECT_NE(Refusal(NewBug(), "owner", "ann"), "");
}

TEST_P(ReferencesTest, KeyOfARecordThatContainsItselfIsReadAllTheSame) {
    Database::Create(Folder().File("loop.db"),
                     schema::ReadSchema("record_types:\n"
                                        "  node:\n"
                                        "    key: [above]\n"
                                        "    fields:\n"
                                        "      above: {type: reference, to: node}\n",
                                        "loop.yaml"));
    const auto database = Database::Open(Folder().File("loop.db"), Database::Mode::ReadWrite);
    database->GetConnection().ExecuteScript("INSERT INTO node (dbid, above) VALUES (1, 1)");
    KeyTable table(DatabaseBatch::Of(*database), database->GetSchema());
    ReferenceKeys keys(DatabaseBatch::Of(*database), database->GetSchema(), table);
    const schema::RecordType& node = database->GetSchema().Types().front();
    EXPECT_TRUE(table.KeyOf(node, 1).has_value());
    EXPECT_EQ(keys.Find(node, "1").dbid, 0);
}

// Three hundred words, which end as the key of a lane does.
std::string ManyWords() {
    std::string text;
    for (int word = 0; word < 300; ++word) {
        text += "w ";
    }
    return text + "1 1 1 1";
}

TEST_P(ReferencesTest, TextThatCanBeReadInTooManyWaysIsRefusedWithTheFieldAndTheLimit) {
    OpenSession({.attachmentsFolder = "", .references = {.maxTries = 100, .stopRequested = {}}});
    const std::string text = "a b c d e f g h" + std::string(200, ' ') + "i";
    const std::string refusal = Refusal(NewBug(), "place", text);
    EXPECT_THAT(refusal, AllOf(StartsWith("The field \"place\" of a record of type \"bug\" cannot "
                                          "refer to \"a b c "),
                               EndsWith("in more ways than the 100 that are tried "
                                        "(--max-reference-tries).")));
}

TEST_P(ReferencesTest, ReferenceOfManyWordsToNestedKeysIsDecidedWithinTheLimit) {
    int tries = 0;
    OpenSession({.attachmentsFolder = "", .references = {.stopRequested = [&tries] {
                                              ++tries;
                                              return false;
                                          }}});
    EXPECT_NE(Refusal(NewBug(), "lane", ManyWords()), "");
    EXPECT_GT(tries, 0);
    EXPECT_LE(tries, kDefaultMaxReferenceTries);
}

TEST_P(ReferencesTest, SearchByAReferenceOfTooManyWaysSaysSo) {
    OpenSession({.attachmentsFolder = "", .references = {.maxTries = 1, .stopRequested = {}}});
    const AdQueryDefPtr query = Core().BuildQueryDef(Type("bug"), 0);
    query->SelectDbId(1);
    query->BuildFilter(nullptr, u"place", AdCompOp_t::kEqual, u"a b c d", 1);
    const AdResultSetPtr rows = Core().BuildResultSet(query);
    rows->Prepare();
    EXPECT_NE(Thrown([&rows] { rows->Execute(); }).find("(--max-reference-tries)"),
              std::string::npos);
}

TEST_P(ReferencesTest, KeyOfARecordThatRefersToItselfInManyPartsComesToAnEnd) {
    Database::Create(Folder().File("web.db"),
                     schema::ReadSchema("record_types:\n"
                                        "  node:\n"
                                        "    key: [a, b, c]\n"
                                        "    fields:\n"
                                        "      a: {type: reference, to: node}\n"
                                        "      b: {type: reference, to: node}\n"
                                        "      c: {type: reference, to: node}\n",
                                        "web.yaml"));
    const auto database = Database::Open(Folder().File("web.db"), Database::Mode::ReadWrite);
    database->GetConnection().ExecuteScript("INSERT INTO node (dbid, a, b, c) VALUES (1, 1, 1, 1)");
    KeyTable table(DatabaseBatch::Of(*database), database->GetSchema());
    EXPECT_TRUE(table.KeyOf(database->GetSchema().Types().front(), 1).has_value());
}

ON_EACH_LAYOUT(ReferencesTest);

}  // namespace

}  // namespace recorddb
