#include "verify/silent_changes.h"

#include <algorithm>
#include <iterator>

namespace tool {

namespace {

#define ZT_SAME_MEMBERS                                                                 \
    "SELECT 1 WHERE NOT EXISTS (SELECT record, target FROM bug__keywords EXCEPT "       \
    "SELECT record, target FROM original.bug__keywords) AND NOT EXISTS (SELECT 1 FROM " \
    "bug__keywords GROUP BY record HAVING min(position) <> 0 OR max(position) <> count(*) - 1)"
#define ZT_VERSIONS(table)                            \
    "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM " table \
    " WHERE typeof(zt_version) <> 'integer' "         \
    "OR zt_version < 1)"
#define ZT_COUNTS(column)                                                      \
    "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_journal WHERE typeof(" column \
    ") <> 'integer' "                                                          \
    "OR " column " < 0)"
#define ZT_HASHES(column)                                                      \
    "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_journal WHERE typeof(" column \
    ") <> 'text' "                                                             \
    "OR length(" column ") <> 64 OR " column " GLOB '*[^0-9a-f]*')"

constexpr const char* kVersion = "how often a record was written is said nowhere else";
constexpr const char* kUnreferenced =
    "a record that nothing refers to is the same under another dbid, where that is not a part of "
    "what people call it";
constexpr const char* kMembers = "a list that was not replaced as a whole is a set";
constexpr const char* kJournal =
    "the journal tells what loads did, and loads of other sources may have done anything; whether "
    "the records are there is looked for in the records";

constexpr SilentChange kSilent[] = {
    {"user", "zt_version", ZT_VERSIONS("user"), kVersion},
    {"component", "zt_version", ZT_VERSIONS("component"), kVersion},
    {"keyword", "zt_version", ZT_VERSIONS("keyword"), kVersion},
    {"bug", "zt_version", ZT_VERSIONS("bug"), kVersion},
    {"user", "dbid",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM bug WHERE {0} IN (reporter, owner)) "
     "AND NOT EXISTS (SELECT 1 FROM component WHERE lead = {0})",
     kUnreferenced},
    {"component", "dbid", "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM bug WHERE component = {0})",
     kUnreferenced},
    {"keyword", "dbid",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM bug__keywords WHERE target = {0})", kUnreferenced},
    {"bug__keywords", "record", ZT_SAME_MEMBERS, kMembers},
    {"bug__keywords", "position", ZT_SAME_MEMBERS, kMembers},
    {"bug__keywords", "target", ZT_SAME_MEMBERS, kMembers},
    {"zt_duplicate", "action_time",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_duplicate WHERE typeof(action_time) <> 'text' "
     "OR datetime(action_time) IS NOT action_time)",
     "it is the moment of the load, which no source knows"},
    {"zt_history", "entry",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_history GROUP BY record_type, record "
     "HAVING min(entry) <> 1 OR max(entry) <> count(*))",
     "the order in which entries of different times arrived changes nothing"},
    {"zt_attachment", "dbid",
     "SELECT 1 WHERE (SELECT group_concat(record || filename) FROM (SELECT * FROM zt_attachment "
     "ORDER BY record, field, dbid)) = (SELECT group_concat(record || filename) FROM (SELECT * "
     "FROM original.zt_attachment ORDER BY record, field, dbid))",
     "only the order of one record's attachments says something"},
    {"zt_journal", "source_sha256", ZT_HASHES("source_sha256"), kJournal},
    {"zt_journal", "configuration_sha256", ZT_HASHES("configuration_sha256"), kJournal},
    {"zt_journal", "source_name",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_journal WHERE typeof(source_name) <> 'text' OR "
     "source_name = '')",
     "the name that a source had is for people"},
    {"zt_journal", "next_ordinal", ZT_COUNTS("next_ordinal"), kJournal},
    {"zt_journal", "complete",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_journal WHERE complete NOT IN (0, 1))", kJournal},
    {"zt_journal", "created", ZT_COUNTS("created"), kJournal},
    {"zt_journal", "updated", ZT_COUNTS("updated"), kJournal},
    {"zt_journal", "history", ZT_COUNTS("history"), kJournal},
    {"zt_journal", "attachments", ZT_COUNTS("attachments"), kJournal},
    {"zt_journal", "duplicates", ZT_COUNTS("duplicates"), kJournal},
    {"zt_journal", "skipped", ZT_COUNTS("skipped"), kJournal},
    {"zt_journal", "run", ZT_COUNTS("run"), kJournal},
    {"zt_journal_reject", "ordinal",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_journal_reject JOIN zt_journal USING "
     "(source_sha256, configuration_sha256) WHERE typeof(ordinal) <> 'integer' OR ordinal < 0 OR "
     "ordinal >= next_ordinal)",
     kJournal},
    {"zt_journal_waiting", "ordinal",
     "SELECT 1 WHERE NOT EXISTS (SELECT 1 FROM zt_journal_waiting JOIN zt_journal USING "
     "(source_sha256, configuration_sha256) WHERE typeof(ordinal) <> 'integer' OR ordinal < 0 OR "
     "ordinal >= next_ordinal)",
     kJournal},
    {"zt_journal", "", "SELECT 1", kJournal},
    {"zt_journal_waiting", "", "SELECT 1", kJournal},
};

}  // namespace

const SilentChange* FindSilentChange(std::string_view table, std::string_view column) {
    const auto* const found =
        std::find_if(std::begin(kSilent), std::end(kSilent), [&](const SilentChange& silent) {
            return table == silent.table && column == silent.column;
        });
    return found == std::end(kSilent) ? nullptr : found;
}

}  // namespace tool
