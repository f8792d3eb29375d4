#include "recorddb/store/batch/look_ahead.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "recorddb/store/batch/key_rows.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/question_round.h"
#include "recorddb/store/batch/record_questions.h"
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

}  // namespace

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
    what.fields = what.fields || search.fields || search.whole;
    what.listKeys = what.listKeys || search.listKeys || search.whole;
    what.references = what.references || search.whole;
    what.history = what.history || search.history;
    what.entries = what.entries || search.whole;
    what.attachments = what.attachments || search.attachments || search.whole;
    what.original = what.original || search.original || search.whole;
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
    QuestionRound round(m_connection);
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
void LookAhead::SearchTable(QuestionRound& round, const RecordType& type, const FieldSet& fields,
                            const Searches& searches) {
    const bool isSpread = IsSpread(m_layout, type);
    const bool hasDisplayId = isSpread && type.HasStates() && fields == type.key;
    QuestionRound::Question question = {.table = type.name,
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

void LookAhead::SearchKeys(QuestionRound& round, const RecordType& type, const FieldSet& fields,
                           const Searches& searches) {
    QuestionRound::Question question = {.table = "zt_key",
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
    QuestionRound round(m_connection);
    RecordQuestions questions(round, m_answers);
    std::map<std::int64_t, std::set<std::int64_t>> rows;      // by type
    std::map<std::int64_t, std::set<std::int64_t>> versions;  // by type
    std::set<RecordKey> histories;
    std::set<RecordKey> entries;
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
            if (wanted.references) {
                m_references.insert(record);
            }
            if (wanted.history) {
                histories.insert(record);
            }
            if (wanted.entries) {
                entries.insert(record);
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
        questions.AskForRows(m_schema.Type(type), dbids);
    }
    for (const auto& [type, dbids] : versions) {
        questions.AskForVersions(m_schema.Type(type), dbids);
    }
    questions.AskForTimes(histories);
    questions.AskForEntries(entries);
    questions.AskForAttachments(attachments);
    questions.AskForOriginals(m_links);
    round.Finish();
}

// Reads the records that those that were found refer to.
void LookAhead::ReadTargets() {
    std::map<std::int64_t, std::set<std::int64_t>> targets;  // by type
    for (const auto& [typeId, dbid] : m_lists) {
        const RecordType& type = m_schema.Type(typeId);
        for (const Field& field : type.fields) {
            const FieldValue* const list = field.kind == FieldKind::ReferenceList
                                               ? m_answers.FindList(type, field.index, dbid)
                                               : nullptr;
            if (list != nullptr && HasValue(*list)) {
                const auto& listed = std::get<ReferenceList>(*list);
                targets[field.target].insert(listed.begin(), listed.end());
            }
        }
    }
    for (const auto& [typeId, dbid] : m_references) {
        const RecordType& type = m_schema.Type(typeId);
        const KnownRow* const row = m_answers.FindRow(type, dbid);
        for (const Field& field : type.fields) {
            if (row != nullptr && field.kind == FieldKind::Reference &&
                HasValue((*row)[field.index])) {
                targets[field.target].insert(std::get<std::int64_t>((*row)[field.index]));
            }
        }
    }
    if (targets.empty()) {
        return;
    }
    QuestionRound round(m_connection);
    RecordQuestions questions(round, m_answers);
    for (const auto& [type, dbids] : targets) {
        questions.AskForRows(m_schema.Type(type), dbids);
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
        QuestionRound round(m_connection);
        RecordQuestions questions(round, m_answers);
        questions.AskForOriginals(m_links);
        round.Finish();
    }
}

void LookAhead::Read(std::span<const ExpectedSearch> searches) {
    for (const ExpectedSearch& search : searches) {
        Add(search);
    }
    m_answers.m_isEmpty = false;
    try {
        Search();
        ReadFound();
        ReadTargets();
        FollowChains();
    } catch (...) {
        m_answers.Forget();
        throw;
    }
}

}  // namespace recorddb
