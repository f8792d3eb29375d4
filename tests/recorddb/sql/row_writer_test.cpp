#include "recorddb/sql/row_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "recorddb/sql/savepoint.h"
#include "sql_test.h"

namespace recorddb::sql {

namespace {

using Kind = RowChange::Kind;

class RowWriterTest : public OnEachEngine<SqlTest> {
  protected:
    RowWriterTest() : m_writer(m_connection->MakeRowWriter()), m_transaction(*m_connection) {}

    // Writes rows of the columns name and size, of which the first `keys` say which row is meant.
    void Write(Kind kind, std::size_t keys, const std::vector<Cell>& cells) {
        m_writer->Write({kind, "thing", m_columns, keys, cells});
        m_writer->Finish();
    }

    std::string Rows() {
        Statement& read = m_connection->Prepare("SELECT name, size FROM thing ORDER BY name");
        std::string rows;
        while (read.Step()) {
            rows += std::string(read.Text(0)) + "=";
            rows += read.IsNull(1) ? "NULL " : std::string(read.Text(1)) + " ";
        }
        return rows;
    }

    const std::array<RowColumn, 2> m_columns = {
        {{"name", CellType::Text}, {"size", CellType::Integer}}};
    std::unique_ptr<RowWriter> m_writer;
    Transaction m_transaction;
};

TEST_P(RowWriterTest, InsertsRows) {
    Write(Kind::Insert, 0, {"a", 1, "b", {}});
    EXPECT_EQ(Rows(), "a=1 b=NULL ");
}

// Statements take several rows; some numbers of rows leave a rest.
TEST_P(RowWriterTest, InsertsEachRowOnceWhateverTheirNumber) {
    for (const std::int64_t count : {1, 15, 16, 17, 32, 37}) {
        std::vector<std::string> names;
        for (std::int64_t i = 0; i < count; ++i) {
            names.push_back("row " + std::to_string(100 + i));
        }
        std::vector<Cell> cells;
        std::string expected;
        for (std::int64_t i = 0; i < count; ++i) {
            const std::string& name = names.at(static_cast<std::size_t>(i));
            cells.insert(cells.end(), {std::string_view(name), i});
            expected += name + "=" + std::to_string(i) + " ";
        }
        Write(Kind::Insert, 0, cells);
        EXPECT_EQ(Rows(), expected);
        m_connection->ExecuteScript("DELETE FROM thing");
    }
}

TEST_P(RowWriterTest, UpdatesTheRowsThatAreMeant) {
    Write(Kind::Insert, 0, {"a", 1, "b", 2, "c", 3});
    Write(Kind::Update, 1, {"a", {}, "c", 4});
    EXPECT_EQ(Rows(), "a=NULL b=2 c=4 ");
}

TEST_P(RowWriterTest, ComparesAColumnWithOneValueAndSetsItToAnother) {
    Write(Kind::Insert, 0, {"a", 1, "b", 2});
    const std::array<RowColumn, 3> columns = {
        {{"name", CellType::Text}, {"size", CellType::Integer}, {"size", CellType::Integer}}};
    const std::vector<Cell> cells = {"a", 1, 10, "b", 2, 20};
    m_writer->Write({Kind::Update, "thing", columns, 2, cells});
    m_writer->Finish();
    EXPECT_EQ(Rows(), "a=10 b=20 ");
}

TEST_P(RowWriterTest, InsertsOrUpdates) {
    Write(Kind::Insert, 0, {"a", 1});
    Write(Kind::InsertOrUpdate, 1, {"a", 2, "b", 3});
    EXPECT_EQ(Rows(), "a=2 b=3 ");
}

TEST_P(RowWriterTest, RaisesWhatIsLess) {
    Write(Kind::Insert, 0, {"a", 5, "b", 1, "c", 2});
    Write(Kind::Raise, 1, {"a", 3, "b", 7});
    EXPECT_EQ(Rows(), "a=5 b=7 c=2 ");
}

TEST_P(RowWriterTest, DeletesTheRowsThatAreMeant) {
    Write(Kind::Insert, 0, {"a", 1, "b", 2, "c", 3});
    Write(Kind::Delete, 2, {"a", 1, "c", 3});
    EXPECT_EQ(Rows(), "b=2 ");
}

TEST_P(RowWriterTest, RowThatIsNotAsItWasIsAConflict) {
    Write(Kind::Insert, 0, {"a", 1});
    const auto change = [this] { Write(Kind::Delete, 2, {"a", 2}); };
    EXPECT_EQ(ErrorOf(change).Kind(), ErrorKind::Conflict);
}

TEST_P(RowWriterTest, RowThatIsNotThereIsAConflict) {
    const auto change = [this] { Write(Kind::Update, 1, {"a", 2}); };
    EXPECT_EQ(ErrorOf(change).Kind(), ErrorKind::Conflict);
}

TEST_P(RowWriterTest, RefusalOfTheEngineIsThrownAsItIs) {
    const auto change = [this] { Write(Kind::Insert, 0, {"a", 1, "a", 2}); };
    EXPECT_EQ(ErrorOf(change).Kind(), ErrorKind::UniqueViolation);
}

TEST_P(RowWriterTest, GoesOnWhenARefusalIsUndone) {
    {
        Savepoint savepoint(*m_connection);
        const auto change = [this] { Write(Kind::Insert, 0, {"a", 1, "a", 2}); };
        EXPECT_EQ(ErrorOf(change).Kind(), ErrorKind::UniqueViolation);
    }
    Write(Kind::Insert, 0, {"a", 1});
    EXPECT_EQ(Rows(), "a=1 ");
}

TEST_P(RowWriterTest, TellsTheFirstRefusalOfSeveralChanges) {
    const std::vector<Cell> twice = {"a", 1, "a", 2};
    const std::vector<Cell> none = {"b", 1};
    const auto changes = [&] {
        m_writer->Write({Kind::Insert, "thing", m_columns, 0, twice});
        m_writer->Write({Kind::Update, "thing", m_columns, 1, none});
        m_writer->Finish();
    };
    EXPECT_EQ(ErrorOf(changes).Kind(), ErrorKind::UniqueViolation);
}

TEST_P(RowWriterTest, WritesRowsBeyondTheSizeOfOneMessage) {
    const std::string large(std::size_t{3} << 20U, 'x');
    const std::vector<std::string> names = {"a" + large, "b" + large, "c" + large, "d" + large};
    m_connection->ExecuteScript("CREATE TABLE large (name TEXT, size BIGINT)");
    std::vector<Cell> cells;
    for (const std::string& name : names) {
        cells.insert(cells.end(), {std::string_view(name), 1});
    }
    m_writer->Write({Kind::Insert, "large", m_columns, 0, cells});
    m_writer->Finish();
    Statement& count = m_connection->Prepare(
        "SELECT count(DISTINCT name) * 100000000 + sum(length(name)) FROM large");
    EXPECT_EQ(QueryInt(count), 400000000 + 4 * (static_cast<std::int64_t>(large.size()) + 1));
}

ON_EACH_LAYOUT(RowWriterTest);

}  // namespace

}  // namespace recorddb::sql
