#include "tool/verify/records/kept_fields.h"

#include <gtest/gtest.h>

#include "recorddb/schema.h"
#include "tool/guarded/guarded_text.h"

namespace tool {
namespace {

constexpr const char* kKeptSchema = R"(record_types:
  user: {key: [login], fields: {login: {type: text}}}
  bug:
    prefix: BUG
    states: [NEW, DONE]
    fields:
      source_id: {type: text}
      title: {type: text}
      owner: {type: reference, to: user}
      helpers: {type: reference_list, to: user}
      files: {type: attachments}
      log: {type: history}
)";

class KeptFieldsTest : public testing::Test {
  protected:
    KeptFieldsTest() {
        m_configuration.Apply(
            "<configuration><import_data name=\"record\"/><record_type name=\"bug\"/>"
            "<original_id name=\"source_id\"/></configuration>",
            "test");
    }

    KeptRecord Packet(const ImporterFields& fields, bool guarded = false) {
        KeptRecord record;
        KeepPacketFields(fields, guarded, m_configuration, *m_schema.FindType("bug"), record);
        return record;
    }
    KeptRecord Source(const SourceValues& values) {
        KeptRecord record;
        KeepSourceValues(values, m_configuration, *m_schema.FindType("bug"), record);
        return record;
    }

    const recorddb::schema::Schema m_schema =
        recorddb::schema::ReadSchema(kKeptSchema, "schema.yaml");
    ImportConfiguration m_configuration;
};

TEST_F(KeptFieldsTest, SayTheSameOfAPacketAndOfTheValuesThatItWasMadeOf) {
    const KeptRecord packet = Packet({{"source_id", "7"},
                                      {"title", "A"},
                                      {"helpers", "ann,bob"},
                                      {"log", "1\t2020-01-01\tann\tclose\tNEW\tDONE"},
                                      {"files", "2\na/b.txt\n5\nfirst\n"}});
    const KeptRecord source = Source(
        {.fields = {{"source_id", {"7"}}, {"title", {"A"}}, {"helpers", {"ann", "bob"}, true}},
         .history = {{"1", "2020-01-01", "ann", "close", "NEW", "DONE"}},
         .attachmentsField = "files",
         .attachments = {{"2", "a/b.txt", "5", "first"}}});
    EXPECT_EQ(packet.originalId, "7");
    EXPECT_EQ(source.originalId, "7");
    ASSERT_EQ(source.fields.size(), 5U);
    EXPECT_EQ(source.fields[1], packet.fields[1]);
    EXPECT_EQ(source.fields[2].keys, packet.fields[2].keys);
    EXPECT_EQ(source.fields[3].history, packet.fields[3].history);
    EXPECT_EQ(source.fields[4].attachments, packet.fields[4].attachments);
}

TEST_F(KeptFieldsTest, TakeAPacketByItsRules) {
    const KeptRecord record =
        Packet({{"title", "Blank"}, {"owner", " BLANK "}, {"helpers", " a , b,"}, {"files", ""}});
    ASSERT_EQ(record.fields.size(), 3U);
    EXPECT_TRUE(record.fields[0].clears);
    EXPECT_TRUE(record.fields[1].clears);
    EXPECT_TRUE(record.fields[1].keys.empty());
    EXPECT_EQ(record.fields[2].keys, (std::vector<std::string>{"a", "b"}));
}

TEST_F(KeptFieldsTest, TakeGuardedValuesAsTheyWere) {
    const std::string odd = " BLANK,\t";
    const auto guarded = [&odd](PacketPlace place) { return Guarded(odd, place); };
    const KeptRecord record =
        Packet({{"source_id", Guarded("BLANK", PacketPlace::Text)},
                {"owner", guarded(PacketPlace::Reference)},
                {"helpers", "x," + guarded(PacketPlace::ListItem)},
                {"log", "1\t2020\t" + guarded(PacketPlace::HistoryColumn) + "\ta\tb\tc"},
                {"files", "1\nf\n2\n" + guarded(PacketPlace::AttachmentLine) + "\n"}},
               true);
    ASSERT_EQ(record.fields.size(), 5U);
    EXPECT_EQ(record.originalId, "BLANK");
    EXPECT_FALSE(record.fields[0].clears);
    EXPECT_EQ(record.fields[1].keys, std::vector<std::string>{odd});
    EXPECT_EQ(record.fields[2].keys, (std::vector<std::string>{"x", odd}));
    EXPECT_EQ(record.fields[3].history.front().columns[kTimeColumn + 1], odd);
    EXPECT_EQ(record.fields[4].attachments.front().description, odd);
}

TEST_F(KeptFieldsTest, TakeNoValueOfASourceForAWordOfPackets) {
    SourceValues values;
    values.fields = {{"title", {"BLANK"}}, {"owner", {" BLANK,"}}, {"helpers", {}, true}};
    const KeptRecord record = Source(values);
    ASSERT_EQ(record.fields.size(), 2U);
    EXPECT_EQ(record.fields[0].value, "BLANK");
    EXPECT_FALSE(record.fields[0].clears);
    EXPECT_EQ(record.fields[1].keys, std::vector<std::string>{" BLANK,"});
}

}  // namespace
}  // namespace tool
