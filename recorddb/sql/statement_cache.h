#ifndef RECORDDB_SQL_STATEMENT_CACHE_H
#define RECORDDB_SQL_STATEMENT_CACHE_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "recorddb/sql.h"

namespace recorddb::sql {

// The statements that a connection keeps, by their text. They go before the connection does.
class StatementCache {
  public:
    // The statement with this text, from `make` when there is none yet. It stays where it is.
    template <typename Make>
    Statement& Get(std::string_view sql, Make make) {
        if (const auto found = m_statements.find(sql); found != m_statements.end()) {
            return *found->second;
        }
        auto statement = make();
        return *m_statements.emplace(sql, std::move(statement)).first->second;
    }

  private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };

    std::unordered_map<std::string, std::unique_ptr<Statement>, TextHash, std::equal_to<>>
        m_statements;
};

}  // namespace recorddb::sql

#endif
