#include "tool/html/verify_findings.h"

#include <string_view>

#include "tool/text/value_pair.h"

namespace tool {

namespace {

// A field is named with the part that differs: "files, plan.pdf, size". The middle is different for
// every record.
std::string FieldOf(const std::string& field) {
    const std::size_t first = field.find(", ");
    const std::size_t last = field.rfind(", ");
    if (first == std::string::npos) {
        return field;
    }
    return last == first ? field.substr(0, first) : field.substr(0, first) + field.substr(last);
}

std::string ProblemOf(const Difference& difference) {
    if (!difference.problem.empty()) {
        return difference.problem;
    }
    if (difference.databaseValue.empty()) {
        return "in the source only";
    }
    return difference.sourceValue.empty() ? "in the database only" : "the values differ";
}

// What things of one sort share, and what is wrong with them.
std::string SortOf(const std::string& type, const std::string& field, const std::string& problem) {
    std::string subject = type;
    if (!field.empty()) {
        subject += (subject.empty() ? "" : ", ") + FieldOf(field);
    }
    return (subject.empty() ? "" : subject + ": ") + problem;
}

std::string Shown(const std::string& value) {
    return value.empty() ? "(nothing)" : value;
}

std::vector<ExampleDetail> DetailsOf(const Difference& difference) {
    std::vector<ExampleDetail> details;
    if (!difference.id.empty()) {
        details.push_back({"record", difference.id});
    }
    if (!difference.field.empty()) {
        details.push_back({"field", difference.field});
    }
    if (!difference.sourceValue.empty() || !difference.databaseValue.empty()) {
        const ShownPair pair = ShowPair(difference.sourceValue, difference.databaseValue);
        details.push_back({"source", Shown(pair.source)});
        details.push_back({"database", Shown(pair.database)});
    }
    if (!difference.problem.empty()) {
        details.push_back({"", difference.problem});
    }
    return details;
}

std::vector<ExampleDetail> DetailsOf(const recorddb::Fault& fault) {
    std::vector<ExampleDetail> details;
    if (!fault.id.empty()) {
        details.push_back({"record", fault.id});
    }
    if (!fault.field.empty()) {
        details.push_back({"field", fault.field});
    }
    if (!fault.value.empty()) {
        details.push_back({"database", ShowPair("", fault.value).database});
    }
    details.push_back({"", fault.problem});
    return details;
}

}  // namespace

void VerifyFindings::AddLoad(const DataSource& source,
                             const recorddb::journal::JournalEntry* entry) {
    ++m_sources;
    if (entry == nullptr) {
        return;
    }
    m_loaded += entry->complete ? 1 : 0;
    const auto count = [](std::int64_t number) { return static_cast<std::uint64_t>(number); };
    LoadTotals totals;
    totals.read = count(entry->nextOrdinal);
    totals.created = count(entry->created);
    totals.updated = count(entry->updated);
    totals.rejected = count(entry->rejected);
    totals.skipped = count(entry->skipped);
    totals.history = count(entry->history);
    totals.attachments = count(entry->attachments);
    totals.duplicates = count(entry->duplicates);
    m_loads.Add(source.type, source.data, totals);
}

void VerifyFindings::AddFault(const recorddb::Fault& fault) {
    m_faults.Add(SortOf(fault.type, fault.field, fault.problem),
                 {m_options.database, 0, 0, "", DetailsOf(fault)});
}

void VerifyFindings::AddDifference(const Difference& difference) {
    m_differences.Add(SortOf(difference.type, difference.field, ProblemOf(difference)),
                      {difference.source, difference.record, difference.line, difference.sourceId,
                       DetailsOf(difference), difference.unit});
    if (m_firstDifferent.id.empty() && !difference.id.empty()) {
        m_firstDifferent.type = difference.type;
        m_firstDifferent.id = difference.id;
    }
}

}  // namespace tool
