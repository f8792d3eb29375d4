#ifndef PLATFORM_CORE_ADQUERY_H
#define PLATFORM_CORE_ADQUERY_H

#include "platform/core/adentitydef.h"
#include "platform/core/adptr.h"
#include "platform/foundation/obx_string.h"

enum class AdCompOp_t : int {
    kEqual = 1,
};

// A node of a query's filter tree.
class AdFilterNode {
  public:
    virtual ~AdFilterNode() = default;
};

// A query on one record type: which columns it delivers and which records it selects. Made by
// BuildQueryDef, given back with UnbuildQueryDef.
class AdQueryDef : public AdRefCounted {
  public:
    // Makes the field with this path (AdEntityDef::GetFieldPath) the result's column `column`,
    // counted from 1.
    virtual void SelectField(int column, const Obx_String& fieldPath) = 0;

    // Makes the record's database identifier the result's column `column`, counted from 1.
    virtual void SelectDbId(int column) = 0;

    // Adds a condition below `parent` (null: at the top level, where all conditions must hold):
    // the field compared with the value. A reference is compared by the unique key of the record it
    // points at. The last flag is reserved and must be 1. Returns the new node, owned by the query.
    virtual AdFilterNode* BuildFilter(AdFilterNode* parent, const Obx_String& fieldName,
                                      AdCompOp_t operation, const Obx_String& value,
                                      int reserved) = 0;
};

using AdQueryDefPtr = AdPtr<AdQueryDef>;

// The result of a query. Made by BuildResultSet, run by Prepare and Execute, read row by row, given
// back with UnbuildResultSet. The rows are those of the moment of Execute.
class AdResultSet : public AdRefCounted {
  public:
    // Limits the rows that are counted and fetched; a count that reaches the limit says only that
    // there are at least so many. Must be called before Prepare.
    virtual void SetRowLimit(long rows) = 0;

    virtual void Prepare() = 0;
    virtual void Execute() = 0;

    // Moves to the next row, at first to the first one. `status` becomes 1 when there is one, else
    // 0.
    virtual void FetchNext(int& status) = 0;

    // The number of rows. A negative number says that the core cannot tell.
    virtual long GetRowCount() = 0;

    // The current row's value in column `column`, counted from 1. The last flag is reserved and
    // must be 0.
    virtual void GetColumn(int column, Obx_String& value, int reserved) = 0;
};

using AdResultSetPtr = AdPtr<AdResultSet>;

#endif
