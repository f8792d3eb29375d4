#include "tool/verify/comparison/value_comparison.h"

#include <fmt/format.h>

#include <algorithm>

namespace tool {

using recorddb::schema::Field;
using recorddb::schema::FieldKind;

namespace {

std::string Joined(const std::vector<ExpectedTarget>& targets) {
    std::vector<std::string> texts;
    texts.reserve(targets.size());
    for (const ExpectedTarget& target : targets) {
        texts.push_back(target.text);
    }
    return fmt::format("{}", fmt::join(texts, ","));
}

// What people call the records that a reference or list points at.
std::string KeysOf(const recorddb::RecordView& record, const Field& field) {
    std::vector<std::string> keys = record.values[field.index];
    const std::vector<std::int64_t>& targets = record.targets[field.index];
    for (std::size_t i = 0; i < keys.size() && i < targets.size(); ++i) {
        if (keys[i].empty()) {
            keys[i] = fmt::format("(dbid {})", targets[i]);
        }
    }
    return fmt::format("{}", fmt::join(keys, ","));
}

std::vector<std::int64_t> DbIds(const std::vector<ExpectedTarget>& targets) {
    std::vector<std::int64_t> dbids;
    dbids.reserve(targets.size());
    for (const ExpectedTarget& target : targets) {
        dbids.push_back(target.dbid);
    }
    return dbids;
}

// The problems of targets that do not exist; else, for lists of the same members, their order.
std::string ProblemOf(const std::vector<ExpectedTarget>& targets,
                      std::vector<std::int64_t> stored) {
    std::string problem;
    for (const ExpectedTarget& target : targets) {
        if (!target.problem.empty()) {
            problem += (problem.empty() ? "" : "; ") + target.problem;
        }
    }
    if (problem.empty()) {
        std::vector<std::int64_t> expected = DbIds(targets);
        std::sort(expected.begin(), expected.end());
        std::sort(stored.begin(), stored.end());
        problem = expected == stored ? "in another order" : "";
    }
    return problem;
}

bool ContainsAll(const std::vector<std::int64_t>& stored,
                 const std::vector<std::int64_t>& expected) {
    return std::all_of(expected.begin(), expected.end(), [&stored](std::int64_t dbid) {
        return std::find(stored.begin(), stored.end(), dbid) != stored.end();
    });
}

// What the database has in a field that no source speaks of, in a record that the sources create.
struct Unclaimed {
    const ExpectedRecord& expected;
    DifferenceReporter& reporter;

    void Report(const Field& field, const std::string& stored) const {
        if (expected.IsWhole() && !stored.empty()) {
            reporter.Report(expected.FirstPlace(), field.name, "", stored);
        }
    }
};

// A list is a set, unless the sources replaced it as a whole.
bool Agrees(const ExpectedTargets& claim, const std::vector<std::int64_t>& stored,
            const std::vector<std::int64_t>& dbids) {
    if (claim.exact && claim.ordered) {
        return stored == dbids;
    }
    return ContainsAll(stored, dbids) && (!claim.exact || stored.size() == dbids.size());
}

void CompareTargets(const ExpectedRecord& expected, const recorddb::RecordView& record,
                    const Field& field, DifferenceReporter& reporter, VerifiedType& tally) {
    const std::vector<std::int64_t>& stored = record.targets[field.index];
    const std::string keys = KeysOf(record, field);
    const ExpectedTargets* const claim = expected.Targets(field.index);
    if (claim == nullptr) {
        Unclaimed{expected, reporter}.Report(field, keys);
        return;
    }
    tally.references += claim->targets.size();
    const std::vector<std::int64_t> dbids = DbIds(claim->targets);
    if (!Agrees(*claim, stored, dbids)) {
        reporter.Report(claim->place, field.name, Joined(claim->targets), keys,
                        ProblemOf(claim->targets, stored));
    }
}

void CompareState(const ExpectedRecord& expected, const recorddb::RecordView& record,
                  const Field& field, DifferenceReporter& reporter, VerifiedType& tally) {
    const std::string stored = record.Text(field);
    const std::string& initial = expected.Type().states.front();
    if (const ExpectedValue* const claim = expected.Value(field.index)) {
        ++tally.fields;
        if (claim->stored != stored) {
            reporter.Report(claim->place, field.name, claim->text, stored);
        }
    } else if (expected.IsWhole() && stored != initial) {
        reporter.Report(expected.FirstPlace(), field.name, initial, stored,
                        "not the state that new records begin in");
    }
}

void ComparePlain(const ExpectedRecord& expected, const recorddb::RecordView& record,
                  const Field& field, DifferenceReporter& reporter, VerifiedType& tally) {
    const std::string stored = record.Text(field);
    const ExpectedValue* const claim = expected.Value(field.index);
    if (claim == nullptr) {
        Unclaimed{expected, reporter}.Report(field, stored);
        return;
    }
    ++tally.fields;
    if (claim->stored != stored) {
        reporter.Report(claim->place, field.name, claim->text, stored);
    }
}

}  // namespace

void CompareValues(const ExpectedRecord& expected, const recorddb::RecordView& record,
                   DifferenceReporter& reporter, VerifiedType& tally) {
    for (const Field& field : expected.Type().fields) {
        switch (field.kind) {
            case FieldKind::Reference:
            case FieldKind::ReferenceList:
                CompareTargets(expected, record, field, reporter, tally);
                break;
            case FieldKind::State:
                CompareState(expected, record, field, reporter, tally);
                break;
            case FieldKind::Attachments:
            case FieldKind::History:
            case FieldKind::DisplayId:
            case FieldKind::DbId:
                break;
            default:
                ComparePlain(expected, record, field, reporter, tally);
        }
    }
    for (const auto& [name, value] : expected.UnknownFields()) {
        reporter.Report(value.place, name, value.text, "",
                        fmt::format("{} has no such field", expected.Type().name));
    }
}

}  // namespace tool
