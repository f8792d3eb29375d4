#include "recorddb/sql/postgres/postgres_statement.h"

namespace recorddb::sql {

void PostgresStatement::Run() {
    try {
        EnsurePrepared();
        Take(Handle().RunPrepared(Name(), Parameters(), Sql()));
    } catch (...) {
        Reset();
        throw;
    }
}

bool PostgresStatement::Step() {
    if (!IsUnderWay()) {
        Run();
    }
    if (NextFetched()) {
        return true;
    }
    Reset();
    return false;
}

std::int64_t PostgresStatement::Execute() {
    if (!IsUnderWay()) {
        Run();
    }
    const std::int64_t affected = Fetched().AffectedRows();
    Reset();
    return affected;
}

void PostgresStatement::ExecuteLater() {
    if (Handle().GetState() == PostgresHandle::State::Idle) {
        Execute();
        return;
    }
    try {
        EnsurePrepared();
        Handle().SendPrepared(Name(), Parameters(), Sql());
    } catch (...) {
        Reset();
        throw;
    }
    Reset();
}

}  // namespace recorddb::sql
