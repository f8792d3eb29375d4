#include "recorddb/store/batch/look_ahead.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <string_view>

#include "recorddb/model/names.h"
#include "recorddb/sql/row_reader.h"
#include "recorddb/store/batch/key_rows.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/tables/cells.h"
#include "recorddb/store/tables/table_layout.h"
#include "recorddb/store/tables/tables.h"
#include "recorddb/value_text.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;
using sql::Cell;
using sql::CellType;
using sql::RowColumn;

// A search that finds more than one record is left to the database.
constexpr std::size_t kMostMatches = 2;

// Chains of duplicates are followed for so many steps.
constexpr int kMostSteps = 8;

// The value by which the database is searched for a text; none when it is not known ahead.
FieldValue SearchedValue(const Field& field, const std::string& text) {
    switch (field.kind) {
        case FieldKind::Integer:
        case FieldKind::DbId: {
            const auto number = IntegerOf(text);
            return number ? FieldValue(*number) : FieldValue();
        }
        case FieldKind::DateTime: {
            auto time = DateTimeOf(text);
            return time ? FieldValue(*std::move(time)) : FieldValue();
        }
        case FieldKind::Text:
        case FieldKind::Multiline:
        case FieldKind::Choice:
        case FieldKind::State:
        case FieldKind::DisplayId:
            return text.empty() || text.find('\0') != std::string::npos ? FieldValue()
                                                                        : FieldValue(text);
        default:
            return {};
    }
}

std::int64_t IntIn(const Cell& cell) {
    const auto* const number = std::get_if<std::int64_t>(&cell);
    return number != nullptr ? *number : 0;
}

std::string TextIn(const Cell& cell) {
    const auto* const text = std::get_if<std::string_view>(&cell);
    return text != nullptr ? std::string(*text) : std::string();
}

std::vector<Cell> CellsOf(const std::set<std::int64_t>& numbers) {
    return {numbers.begin(), numbers.end()};
}
std::vector<Cell> CellsOf(const std::set<RecordKey>& records) {
    std::vector<Cell> cells;
    for (const auto& [type, dbid] : records) {
        cells.insert(cells.end(), {type, dbid});
    }
    return cells;
}

}  // namespace

// Questions that are asked together.
class LookAhead::Round {
  public:
    explicit Round(sql::Connection& connection) : m_reader(connection.MakeRowReader()) {}

    struct Question {
        std::string table;
        std::vector<RowColumn> columns;
        std::vector<RowColumn> keys;
        std::string_view order;
        std::size_t most = 0;
        std::vector<Cell> cells;
        std::deque<KeyRow> keyRows{};  // of which the cells borrow
    };

    void Ask(Question question, sql::RowReader::Take take) {
        const Question& kept = m_questions.emplace_back(std::move(question));
        if (!kept.cells.empty()) {
            m_reader->Ask({kept.table, kept.columns, kept.keys, kept.cells, kept.order, kept.most},
                          std::move(take));
        }
    }

    void Finish() { m_reader->Finish(); }

  private:
    std::deque<Question> m_questions;  // of which the reader borrows
    std::unique_ptr<sql::RowReader> m_reader;
};

void LookAhead::Add(const ExpectedSearch& search) {
    FieldSet fields;
    std::vector<FieldValue> values;
    for (const auto& [field, text] : search.values) {
        fields.push_back(field->index);
        values.push_back(SearchedValue(*field, text));
        if (!HasValue(values.back())) {
            return;
        }
    }
    if (!FindsOnOneMachine(*search.type, fields)) {
        return;
    }
    Searches& searches = m_searches[{search.type->id, fields}];
    std::vector<const FieldValue*> borrowed;
    borrowed.reserve(values.size());
    for (const FieldValue& value : values) {
        borrowed.push_back(&value);
    }
    const auto [wanted, isFirst] = searches.try_emplace(KeyText(0, borrowed).value());
    Wanted& what = wanted->second;
    if (isFirst) {
        what.values = std::move(values);
    }
    what.fields = what.fields || search.fields;
    what.listKeys = what.listKeys || search.listKeys;
    what.history = what.history || search.history;
    what.attachments = what.attachments || search.attachments;
    what.original = what.original || search.original;
}

// Many questions that each go to all machines cost more than asking for the few that turn out to be
// needed, with a limit.
bool LookAhead::FindsOnOneMachine(const RecordType& type, const FieldSet& fields) const {
    if (!IsSpread(m_layout, type)) {
        return true;
    }
    const std::vector<FieldSet> sets = KeySetsOf(type);
    return std::find(sets.begin(), sets.end(), fields) != sets.end() ||
           std::any_of(fields.begin(), fields.end(), [&type](std::size_t field) {
               return type.fields[field].kind == FieldKind::DbId;
           });
}

void LookAhead::Search() {
    Round round(m_connection);
    for (const auto& [by, searches] : m_searches) {
        const RecordType& type = m_schema.Type(by.first);
        const std::vector<FieldSet> unique = UniqueSetsOf(type);
        const bool standsInKeys =
            IsSpread(m_layout, type) &&
            std::find(unique.begin(), unique.end(), by.second) != unique.end();
        standsInKeys ? SearchKeys(round, type, by.second, searches)
                     : SearchTable(round, type, by.second, searches);
    }
    round.Finish();
}

// In the table itself. Display ids of spread types come with the dbid that is in them, which says
// where a record stands.
void LookAhead::SearchTable(Round& round, const RecordType& type, const FieldSet& fields,
                            const Searches& searches) {
    const bool isSpread = IsSpread(m_layout, type);
    const bool hasDisplayId = isSpread && type.HasStates() && fields == type.key;
    Round::Question question = {.table = type.name,
                                .columns = {{schema::kDbIdName, CellType::Integer},
                                            {schema::kVersionColumn, CellType::Integer}},
                                .keys = {},
                                .order = schema::kDbIdName,
                                .most = isSpread ? 0 : kMostMatches,
                                .cells = {}};
    for (const std::size_t field : fields) {
        question.keys.push_back(ColumnOf(type.fields[field]));
    }
    if (hasDisplayId) {
        question.keys.push_back({schema::kDbIdName, CellType::Integer});
    }
    KnownAnswers::OfType& known = m_answers.Of(type);
    std::vector<KnownAnswers::Matches*> matches;
    for (const auto& [key, wanted] : searches) {
        for (const FieldValue& value : wanted.values) {
            question.cells.push_back(CellOf(value));
        }
        if (hasDisplayId) {
            question.cells.emplace_back(DbIdIn(type, wanted.values.front()));
        }
        matches.push_back(&(known.searches[fields][key] = {}));
    }
    round.Ask(std::move(question),
              [&known, matches = std::move(matches)](std::size_t key, std::span<const Cell> row) {
                  KnownAnswers::Matches& found = *matches[key];
                  found.dbid = found.count++ == 0 ? IntIn(row[0]) : found.dbid;
                  known.versions[IntIn(row[0])] = IntIn(row[1]);
              });
}

void LookAhead::SearchKeys(Round& round, const RecordType& type, const FieldSet& fields,
                           const Searches& searches) {
    Round::Question question = {.table = "zt_key",
                                .columns = {{"record", CellType::Integer}},
                                .keys = {{"hash", CellType::Text},
                                         {"record_type", CellType::Integer},
                                         {"field", CellType::Text}},
                                .order = "record",
                                .most = 0,
                                .cells = {}};
    KnownAnswers::OfType& known = m_answers.Of(type);
    std::vector<KnownAnswers::Matches*> matches;
    for (const auto& [key, wanted] : searches) {
        std::vector<const FieldValue*> values;
        values.reserve(wanted.values.size());
        for (const FieldValue& value : wanted.values) {
            values.push_back(&value);
        }
        // All of them have a value; searches without one are not asked ahead.
        const KeyRow& row = question.keyRows.emplace_back(KeyRowOf(type, fields, values).value());
        question.cells.insert(question.cells.end(),
                              {std::string_view(row.hash), type.id, std::string_view(row.field)});
        matches.push_back(&(known.searches[fields][key] = {}));
    }
    round.Ask(std::move(question),
              [matches = std::move(matches)](std::size_t key, std::span<const Cell> row) {
                  *matches[key] = {.dbid = IntIn(row[0]), .count = 1};
              });
}

// Reads what is wanted of the records that were found.
void LookAhead::ReadFound() {
    Round round(m_connection);
    std::map<std::int64_t, std::set<std::int64_t>> rows;      // by type
    std::map<std::int64_t, std::set<std::int64_t>> versions;  // by type
    std::set<RecordKey> histories;
    std::set<RecordKey> attachments;
    for (const auto& [by, searches] : m_searches) {
        const KnownAnswers::Searches& found =
            m_answers.Of(m_schema.Type(by.first)).searches.at(by.second);
        for (const auto& [key, wanted] : searches) {
            const KnownAnswers::Matches& matches = found.at(key);
            if (matches.count != 1) {
                continue;
            }
            const RecordKey record(by.first, matches.dbid);
            if (wanted.fields) {
                rows[by.first].insert(matches.dbid);
            } else if (!m_answers.FindVersion(m_schema.Type(by.first), matches.dbid)) {
                versions[by.first].insert(matches.dbid);
            }
            if (wanted.fields && wanted.listKeys) {
                m_lists.insert(record);
            }
            if (wanted.history) {
                histories.insert(record);
            }
            if (wanted.attachments) {
                attachments.insert(record);
            }
            if (wanted.original) {
                m_links.insert(record);
            }
        }
    }
    for (const auto& [type, dbids] : rows) {
        ReadRows(round, m_schema.Type(type), dbids);
    }
    for (const auto& [type, dbids] : versions) {
        ReadVersions(round, m_schema.Type(type), dbids);
    }
    ReadTimes(round, histories);
    ReadAttachments(round, attachments);
    ReadOriginals(round);
    round.Finish();
}

// Reads the records in the lists of those that were found.
void LookAhead::ReadListed() {
    std::map<std::int64_t, std::set<std::int64_t>> listed;  // by type
    for (const auto& [typeId, dbid] : m_lists) {
        const RecordType& type = m_schema.Type(typeId);
        for (const Field& field : type.fields) {
            const FieldValue* const list = field.kind == FieldKind::ReferenceList
                                               ? m_answers.FindList(type, field.index, dbid)
                                               : nullptr;
            if (list != nullptr && HasValue(*list)) {
                const auto& targets = std::get<ReferenceList>(*list);
                listed[field.target].insert(targets.begin(), targets.end());
            }
        }
    }
    if (listed.empty()) {
        return;
    }
    Round round(m_connection);
    for (const auto& [type, dbids] : listed) {
        ReadRows(round, m_schema.Type(type), dbids);
    }
    round.Finish();
}

// Follows the duplicates that were found to their originals, and those to theirs.
void LookAhead::FollowChains() {
    for (int step = 0; step < kMostSteps; ++step) {
        std::set<RecordKey> next;
        for (const RecordKey& link : m_links) {
            const std::optional<std::int64_t>& original = m_answers.m_originals.at(link);
            if (original && !m_answers.m_originals.contains({link.first, *original})) {
                next.emplace(link.first, *original);
            }
        }
        if (next.empty()) {
            return;
        }
        m_links = std::move(next);
        Round round(m_connection);
        ReadOriginals(round);
        round.Finish();
    }
}

void LookAhead::ReadVersions(Round& round, const RecordType& type,
                             const std::set<std::int64_t>& dbids) {
    KnownAnswers::OfType& known = m_answers.Of(type);
    round.Ask({.table = type.name,
               .columns = {{schema::kDbIdName, CellType::Integer},
                           {schema::kVersionColumn, CellType::Integer}},
               .keys = {{schema::kDbIdName, CellType::Integer}},
               .order = schema::kDbIdName,
               .most = 0,
               .cells = CellsOf(dbids)},
              [&known](std::size_t /*key*/, std::span<const Cell> row) {
                  known.versions[IntIn(row[0])] = IntIn(row[1]);
              });
}

void LookAhead::ReadRows(Round& round, const RecordType& type,
                         const std::set<std::int64_t>& dbids) {
    Round::Question question = {.table = type.name,
                                .columns = {{schema::kDbIdName, CellType::Integer},
                                            {schema::kVersionColumn, CellType::Integer}},
                                .keys = {{schema::kDbIdName, CellType::Integer}},
                                .order = schema::kDbIdName,
                                .most = 0,
                                .cells = CellsOf(dbids)};
    std::vector<std::size_t> fields;
    for (const Field& field : type.fields) {
        if (IsPlainColumn(field)) {
            question.columns.push_back(ColumnOf(field));
            fields.push_back(field.index);
        } else if (field.kind == FieldKind::ReferenceList) {
            ReadList(round, type, field, dbids);
        }
    }
    KnownAnswers::OfType& known = m_answers.Of(type);
    round.Ask(std::move(question),
              [&known, &type, fields](std::size_t /*key*/, std::span<const Cell> cells) {
                  const std::int64_t dbid = IntIn(cells[0]);
                  known.versions[dbid] = IntIn(cells[1]);
                  KnownRow& row = known.rows[dbid];
                  row.resize(type.fields.size());
                  row.front() = dbid;
                  for (std::size_t i = 0; i < fields.size(); ++i) {
                      row[fields[i]] = ValueIn(cells[i + 2]);
                  }
                  // The key is unique, so the row also answers a search by it.
                  std::vector<const FieldValue*> key;
                  for (const std::size_t field : type.key) {
                      key.push_back(&row[field]);
                  }
                  if (auto text = KeyText(0, key)) {
                      known.searches[type.key][*std::move(text)] = {.dbid = dbid, .count = 1};
                  }
              });
}

void LookAhead::ReadList(Round& round, const RecordType& type, const Field& field,
                         const std::set<std::int64_t>& dbids) {
    auto& lists = m_answers.Of(type).lists[field.index];
    std::vector<FieldValue*> values;
    values.reserve(dbids.size());
    for (const std::int64_t dbid : dbids) {
        values.push_back(&(lists[dbid] = {}));
    }
    round.Ask({.table = schema::ListTableName(type, field),
               .columns = {{"target", CellType::Integer}},
               .keys = {{"record", CellType::Integer}},
               .order = "position",
               .most = 0,
               .cells = CellsOf(dbids)},
              [values = std::move(values)](std::size_t key, std::span<const Cell> row) {
                  FieldValue& value = *values[key];
                  if (!HasValue(value)) {
                      value = ReferenceList();
                  }
                  std::get<ReferenceList>(value).push_back(IntIn(row[0]));
              });
}

void LookAhead::ReadTimes(Round& round, const std::set<RecordKey>& records) {
    std::vector<std::vector<HistoryTimes>*> times;
    times.reserve(records.size());
    for (const RecordKey& record : records) {
        times.push_back(&(m_answers.m_times[record] = {}));
    }
    round.Ask({.table = "zt_history",
               .columns = {{"entry", CellType::Integer},
                           {"action_time", CellType::Text},
                           {"expiry_time", CellType::Text}},
               .keys = {{"record_type", CellType::Integer}, {"record", CellType::Integer}},
               .order = "entry",
               .most = 0,
               .cells = CellsOf(records)},
              [times = std::move(times)](std::size_t key, std::span<const Cell> row) {
                  times[key]->push_back({.entry = IntIn(row[0]),
                                         .actionTime = TextIn(row[1]),
                                         .expiryTime = TextIn(row[2])});
              });
}

void LookAhead::ReadAttachments(Round& round, const std::set<RecordKey>& records) {
    std::vector<std::vector<Attachment>*> attachments;
    attachments.reserve(records.size());
    for (const RecordKey& record : records) {
        attachments.push_back(&(m_answers.m_attachments[record] = {}));
    }
    round.Ask({.table = "zt_attachment",
               .columns = {{"dbid", CellType::Integer},
                           {"field", CellType::Text},
                           {"filename", CellType::Text},
                           {"filesize", CellType::Integer},
                           {"description", CellType::Text},
                           {"sha256", CellType::Text}},
               .keys = {{"record_type", CellType::Integer}, {"record", CellType::Integer}},
               .order = "dbid",
               .most = 0,
               .cells = CellsOf(records)},
              [attachments = std::move(attachments)](std::size_t key, std::span<const Cell> row) {
                  attachments[key]->push_back({.dbid = IntIn(row[0]),
                                               .field = TextIn(row[1]),
                                               .fileName = TextIn(row[2]),
                                               .fileSize = IntIn(row[3]),
                                               .description = TextIn(row[4]),
                                               .sha256 = TextIn(row[5])});
              });
}

void LookAhead::ReadOriginals(Round& round) {
    std::vector<std::optional<std::int64_t>*> originals;
    originals.reserve(m_links.size());
    for (const RecordKey& record : m_links) {
        originals.push_back(&(m_answers.m_originals[record] = std::nullopt));
    }
    round.Ask({.table = "zt_duplicate",
               .columns = {{"original", CellType::Integer}},
               .keys = {{"record_type", CellType::Integer}, {"duplicate", CellType::Integer}},
               .order = "original",
               .most = 0,
               .cells = CellsOf(m_links)},
              [originals = std::move(originals)](std::size_t key, std::span<const Cell> row) {
                  *originals[key] = IntIn(row[0]);
              });
}

void LookAhead::Read(std::span<const ExpectedSearch> searches) {
    for (const ExpectedSearch& search : searches) {
        Add(search);
    }
    m_answers.m_isEmpty = false;
    try {
        Search();
        ReadFound();
        ReadListed();
        FollowChains();
    } catch (...) {
        m_answers.Forget();
        throw;
    }
}

}  // namespace recorddb
