#include "tool/verify/records/record_shelf.h"

#include <gtest/gtest.h>

#include "recorddb/sql.h"

namespace tool {
namespace {

class RecordShelfTest : public testing::Test {
  protected:
    static KeptRecord Record(std::int64_t type, std::int64_t dbid, std::uint64_t number) {
        KeptRecord record;
        record.type = type;
        record.dbid = dbid;
        record.place = {.source = 1, .record = number, .line = number * 10};
        return record;
    }

    // The numbers of the records, in the order in which they come back.
    std::string Numbers() {
        std::string numbers;
        KeptRecord record;
        while (m_shelf.Next(record)) {
            numbers += std::to_string(record.place.record) + " ";
        }
        return numbers;
    }

    std::unique_ptr<recorddb::sql::Connection> m_scratch = recorddb::sql::OpenScratch();
    RecordShelf m_shelf{*m_scratch};
};

TEST_F(RecordShelfTest, KeepsAllOfARecord) {
    KeptRecord kept = Record(3, 5, 7);
    kept.configuration = 2;
    kept.differs = true;
    kept.originalId = "7";
    kept.fields.resize(3);
    kept.fields[0].use = FieldUse::Value;
    kept.fields[0].name = "title";
    kept.fields[0].value = "Grüße";
    kept.fields[0].clears = true;
    kept.fields[1].value = std::string("a\0b", 3);
    kept.fields[1].keys = {"", "a, b", std::string(1 << 20, 'x')};
    kept.fields[2].history = {{.id = "1", .columns = {"a", "b", "", "d", "e", "f"}, .count = 6},
                              {}};
    kept.fields[2].attachments = {
        {.id = "1", .fileName = "a", .fileSize = "2", .description = "d", .count = 4}, {}};
    m_shelf.Add(kept);
    KeptRecord record;
    ASSERT_TRUE(m_shelf.Next(record));
    EXPECT_EQ(record.type, 3);
    EXPECT_EQ(record.dbid, 5);
    EXPECT_EQ(record.place.source, 1U);
    EXPECT_EQ(record.place.record, 7U);
    EXPECT_EQ(record.place.line, 70U);
    EXPECT_EQ(record.configuration, 2U);
    EXPECT_TRUE(record.differs);
    EXPECT_EQ(record.originalId, "7");
    EXPECT_EQ(record.fields, kept.fields);
    EXPECT_FALSE(m_shelf.Next(record));
}

TEST_F(RecordShelfTest, GivesTheRecordsByTypeAndDbId) {
    m_shelf.Add(Record(2, 1, 1));
    m_shelf.Add(Record(1, 9, 2));
    m_shelf.Add(Record(1, 2, 3));
    m_shelf.Add(Record(1, 9, 4));
    m_shelf.Add(Record(1, 2, 5));
    EXPECT_EQ(m_shelf.Count(), 5U);
    EXPECT_EQ(Numbers(), "3 5 2 4 1 ");
}

TEST_F(RecordShelfTest, AnEmptyShelfGivesNothing) {
    EXPECT_EQ(Numbers(), "");
}

}  // namespace
}  // namespace tool
