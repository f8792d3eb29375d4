#include "recorddb/store/batch/record_questions.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorddb/model/names.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/tables/cells.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;
using sql::Cell;
using sql::CellType;

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

void RecordQuestions::AskForVersions(const RecordType& type, const std::set<std::int64_t>& dbids) {
    KnownAnswers::OfType& known = m_answers.Of(type);
    m_round.Ask({.table = type.name,
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

void RecordQuestions::AskForRows(const RecordType& type, const std::set<std::int64_t>& dbids) {
    QuestionRound::Question question = {.table = type.name,
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
            AskForList(type, field, dbids);
        }
    }
    KnownAnswers::OfType& known = m_answers.Of(type);
    m_round.Ask(std::move(question),
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

void RecordQuestions::AskForList(const RecordType& type, const Field& field,
                                 const std::set<std::int64_t>& dbids) {
    auto& lists = m_answers.Of(type).lists[field.index];
    std::vector<FieldValue*> values;
    values.reserve(dbids.size());
    for (const std::int64_t dbid : dbids) {
        values.push_back(&(lists[dbid] = {}));
    }
    m_round.Ask({.table = schema::ListTableName(type, field),
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

void RecordQuestions::AskForTimes(const std::set<RecordKey>& records) {
    std::vector<std::vector<HistoryTimes>*> times;
    times.reserve(records.size());
    for (const RecordKey& record : records) {
        times.push_back(&(m_answers.m_times[record] = {}));
    }
    m_round.Ask({.table = "zt_history",
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

void RecordQuestions::AskForEntries(const std::set<RecordKey>& records) {
    using Entries = std::vector<HistoryEntry>;
    std::vector<std::pair<RecordKey, Entries*>> found;
    found.reserve(records.size());
    for (const RecordKey& record : records) {
        found.emplace_back(record, &(m_answers.m_entries[record] = {}));
    }
    m_round.Ask({.table = "zt_history",
                 .columns = {{"entry", CellType::Integer},
                             {"action_time", CellType::Text},
                             {"expiry_time", CellType::Text},
                             {"user_name", CellType::Text},
                             {"action_name", CellType::Text},
                             {"old_state", CellType::Text},
                             {"new_state", CellType::Text},
                             {"comments", CellType::Text}},
                 .keys = {{"record_type", CellType::Integer}, {"record", CellType::Integer}},
                 .order = "entry",
                 .most = 0,
                 .cells = CellsOf(records)},
                [found = std::move(found)](std::size_t key, std::span<const Cell> row) {
                    const auto& [record, entries] = found[key];
                    HistoryEntry entry = {.recordType = record.first,
                                          .record = record.second,
                                          .entry = IntIn(row[0]),
                                          .actionTime = TextIn(row[1]),
                                          .expiryTime = TextIn(row[2]),
                                          .userName = TextIn(row[3]),
                                          .actionName = TextIn(row[4]),
                                          .oldState = TextIn(row[5]),
                                          .newState = TextIn(row[6]),
                                          .comments = TextIn(row[7])};
                    // Those of one time come in the order of their numbers already.
                    const auto place = std::upper_bound(
                        entries->begin(), entries->end(), entry,
                        [](const auto& a, const auto& b) { return a.actionTime < b.actionTime; });
                    entries->insert(place, std::move(entry));
                });
}

void RecordQuestions::AskForAttachments(const std::set<RecordKey>& records) {
    std::vector<std::vector<Attachment>*> attachments;
    attachments.reserve(records.size());
    for (const RecordKey& record : records) {
        attachments.push_back(&(m_answers.m_attachments[record] = {}));
    }
    m_round.Ask({.table = "zt_attachment",
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

void RecordQuestions::AskForOriginals(const std::set<RecordKey>& duplicates) {
    std::vector<std::optional<std::int64_t>*> originals;
    originals.reserve(duplicates.size());
    for (const RecordKey& record : duplicates) {
        originals.push_back(&(m_answers.m_originals[record] = std::nullopt));
    }
    m_round.Ask({.table = "zt_duplicate",
                 .columns = {{"original", CellType::Integer}},
                 .keys = {{"record_type", CellType::Integer}, {"duplicate", CellType::Integer}},
                 .order = "original",
                 .most = 0,
                 .cells = CellsOf(duplicates)},
                [originals = std::move(originals)](std::size_t key, std::span<const Cell> row) {
                    *originals[key] = IntIn(row[0]);
                });
}

}  // namespace recorddb
