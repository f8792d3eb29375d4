#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_ROW_WRITER_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_ROW_WRITER_H

#include <cstdint>
#include <string>
#include <vector>

#include "recorddb/sql/postgres/array_statements.h"
#include "recorddb/sql/postgres/postgres_pipeline.h"
#include "recorddb/sql/row_writer.h"

namespace recorddb::sql {

// Writes the rows of a change with one statement; the changes before Finish go in one pipeline.
class PostgresRowWriter final : public RowWriter {
  public:
    // The handle outlives it, and so do the statements prepared on it.
    PostgresRowWriter(PostgresHandle& handle, ArrayStatements& statements)
        : m_statements(statements), m_pipeline(handle.Settled()) {}

    void Write(const RowChange& change) override;
    void Finish() override;

  private:
    // What was sent, and what the answer has to say.
    struct Sent {
        std::string sql;
        std::string table;
        std::int64_t rows;
    };

    void Send(Sent sent, ArrayParameters& arrays);

    ArrayStatements& m_statements;
    std::vector<Sent> m_sent;
    PostgresPipeline m_pipeline;
};

}  // namespace recorddb::sql

#endif
