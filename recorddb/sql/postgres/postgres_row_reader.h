#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_ROW_READER_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_ROW_READER_H

#include <vector>

#include "recorddb/sql/postgres/array_statements.h"
#include "recorddb/sql/postgres/postgres_pipeline.h"
#include "recorddb/sql/row_reader.h"

namespace recorddb::sql {

// Asks a question with one statement for all of its keys; the questions before Finish go in one
// pipeline.
class PostgresRowReader final : public RowReader {
  public:
    // The handle outlives it, and so do the statements prepared on it.
    PostgresRowReader(PostgresHandle& handle, ArrayStatements& statements)
        : m_statements(statements), m_pipeline(handle.Settled()) {}

    void Ask(const RowQuestion& question, Take take) override;
    void Finish() override;

  private:
    struct Asked {
        std::vector<CellType> types;
        Take take;
    };

    ArrayStatements& m_statements;
    std::vector<Asked> m_asked;
    PostgresPipeline m_pipeline;
};

}  // namespace recorddb::sql

#endif
