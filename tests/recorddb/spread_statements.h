#ifndef TESTS_RECORDDB_SPREAD_STATEMENTS_H
#define TESTS_RECORDDB_SPREAD_STATEMENTS_H

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace recorddb {

// Tells whether statements say on which machine the rows are that they are about, where tables are
// spread over machines.
class SpreadStatements {
  public:
    // `types` names the tables of spread types, `lists` those of their reference lists; `askAll`
    // has parts by which those statements are known that may ask all machines.
    SpreadStatements(const std::vector<std::string>& types, const std::vector<std::string>& lists,
                     std::vector<std::string> askAll)
        : m_askAll(std::move(askAll)) {
        for (const std::string& type : types) {
            m_spreadBy[type] = "dbid";
        }
        for (const std::string& list : lists) {
            m_spreadBy[list] = "record";
        }
    }

    // Takes a statement. It may be about several tables.
    void Take(const std::string& statement) {
        for (const auto& [table, column] : m_spreadBy) {
            if (!IsAbout(statement, table)) {
                continue;
            }
            if (Names(statement, column)) {
                ++m_clear;
            } else if (!AsksAll(statement)) {
                m_unclear.push_back(statement);
            }
        }
    }

    // Those that do not say it, and may not ask all.
    const std::vector<std::string>& Unclear() const { return m_unclear; }
    // How often one said it.
    std::size_t Clear() const { return m_clear; }
    // The parts by which no statement was known.
    std::vector<std::string> Unused() const {
        std::vector<std::string> unused;
        std::copy_if(m_askAll.begin(), m_askAll.end(), std::back_inserter(unused),
                     [this](const std::string& part) { return !m_used.contains(part); });
        return unused;
    }

  private:
    static bool Has(const std::string& text, std::string_view part) {
        return text.find(part) != std::string::npos;
    }

    static bool IsAbout(const std::string& statement, const std::string& table) {
        for (const char* const verb : {" FROM ", "INTO ", "UPDATE ", " JOIN "}) {
            for (const std::string& name : {table + " ", '"' + table + "\" "}) {
                if (Has(" " + statement + " ", verb + name)) {
                    return true;
                }
            }
        }
        return false;
    }

    static bool Names(const std::string& statement, const std::string& column) {
        if (statement.starts_with("INSERT INTO")) {
            return Has(statement.substr(0, statement.find(')')), column);
        }
        return Has(statement, " " + column + " = $") || Has(statement, '"' + column + "\" = $") ||
               Has(statement, "zt_row.\"" + column + "\" = ANY (");
    }

    bool AsksAll(const std::string& statement) {
        bool asksAll = false;
        for (const std::string& part : m_askAll) {
            if (Has(statement, part)) {
                m_used.insert(part);
                asksAll = true;
            }
        }
        return asksAll;
    }

    // By what the tables are spread.
    std::map<std::string, std::string> m_spreadBy = {{"zt_history", "record"},
                                                     {"zt_attachment", "record"},
                                                     {"zt_duplicate", "duplicate"},
                                                     {"zt_content", "sha256"},
                                                     {"zt_key", "hash"}};
    std::vector<std::string> m_askAll;
    std::set<std::string> m_used;
    std::vector<std::string> m_unclear;
    std::size_t m_clear = 0;
};

}  // namespace recorddb

#endif
