#ifndef RECORDDB_EDITING_QUERY_DEF_H
#define RECORDDB_EDITING_QUERY_DEF_H

#include <deque>
#include <string>
#include <vector>

#include "platform/core/adquery.h"
#include "recorddb/editing/entity_def.h"

namespace recorddb {

// A condition: a field equals a value.
class FilterNode final : public AdFilterNode {
  public:
    FilterNode(const schema::Field& field, std::string value)
        : m_field(field), m_value(std::move(value)) {}

    const schema::Field& Field() const { return m_field; }

    // In UTF-8, as it was given.
    const std::string& Value() const { return m_value; }

  private:
    const schema::Field& m_field;
    std::string m_value;
};

// A query on one record type: all conditions must hold.
class QueryDef final : public AdQueryDef {
  public:
    explicit QueryDef(EntityDef& def) : m_def(def) {}

    // Throw a PaMsgException* for a field that the type does not have or that has no column of its
    // own, for a column below 1, and for a value that is not valid UTF-16.
    void SelectField(int column, const Obx_String& fieldPath) override;
    void SelectDbId(int column) override;
    AdFilterNode* BuildFilter(AdFilterNode* parent, const Obx_String& fieldName,
                              AdCompOp_t operation, const Obx_String& value, int reserved) override;

    const schema::RecordType& Type() const { return m_def.Type(); }

    // The fields of the result's columns; null for a column that was left out.
    const std::vector<const schema::Field*>& Columns() const { return m_columns; }
    const std::deque<FilterNode>& Filters() const { return m_filters; }

  private:
    const schema::Field& SearchableField(const Obx_String& name) const;
    void Select(int column, const schema::Field& field);

    EntityDef& m_def;
    std::vector<const schema::Field*> m_columns;
    std::deque<FilterNode> m_filters;  // handed out by address
};

}  // namespace recorddb

#endif
