#ifndef RECORDDB_EDITING_RESULT_SET_H
#define RECORDDB_EDITING_RESULT_SET_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/core/adquery.h"
#include "recorddb/editing/database_failures.h"
#include "recorddb/editing/query_def.h"
#include "recorddb/editing/query_statements.h"
#include "recorddb/editing/reference_keys.h"
#include "recorddb/model/field_value.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/key_table.h"
#include "recorddb/store/tables/search_indexes.h"

namespace recorddb {

// What result sets work with. Their session owns it all.
struct QueryParts {
    DatabaseFailures& failures;
    WriteBatch& batch;
    const schema::Schema& schema;
    KeyTable& keyTable;
    ReferenceKeys& keys;
    QueryStatements& statements;
    schema::SearchIndexes& searchIndexes;
};

// The rows of a query, read whole by Execute: what is written afterwards does not change them.
class ResultSet final : public AdResultSet {
  public:
    ResultSet(std::shared_ptr<const QueryParts> parts, AdPtr<QueryDef> query)
        : m_parts(std::move(parts)), m_query(std::move(query)) {}

    void SetRowLimit(long rows) override { m_limit = rows; }
    void Prepare() override;
    void Execute() override;
    void FetchNext(int& status) override;
    long GetRowCount() override { return static_cast<long>(m_rowCount); }

    // Empty for a field without a value. Throws a PaMsgException* when there is no current row or
    // no such column.
    void GetColumn(int column, Obx_String& value, int reserved) override;

  private:
    bool ReadOperands();
    void ApplyChangesOfColumns();
    std::optional<FieldValue> Operand(const FilterNode& filter);
    bool TakeKnownAnswer();
    std::optional<KeyRows::Location> Place() const;
    void ReadRows();
    void NoteReads();
    void AddNewRecords();
    std::size_t Width() const;
    void ResolveReferences();

    std::shared_ptr<const QueryParts> m_parts;
    AdPtr<QueryDef> m_query;
    long m_limit = 0;                    // 0: none
    std::vector<FieldValue> m_operands;  // of all filters; no value: the field must be empty
    std::vector<std::int64_t> m_dbids;   // of the rows
    std::vector<std::string> m_cells;    // row by row, in UTF-8
    std::size_t m_rowCount = 0;
    std::size_t m_fetched = 0;  // rows; the current one is the last of them
    bool m_onRow = false;
};

}  // namespace recorddb

#endif
