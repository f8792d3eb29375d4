#include "tool/verify/comparison/kept_package.h"

#include "tool/process/interrupt.h"

namespace tool {

std::size_t EndOfSubject(const KeptPackage& package, std::size_t begin) {
    const auto& records = package.records;
    std::size_t end = begin;
    while (end < records.size() && records[end].type == records[begin].type &&
           records[end].dbid == records[begin].dbid) {
        ++end;
    }
    return end;
}

namespace {

// The records of the database that are compared.
std::vector<RecordNumber> SubjectsOf(const KeptPackage& package) {
    std::vector<RecordNumber> subjects;
    for (std::size_t begin = 0; begin < package.records.size();
         begin = EndOfSubject(package, begin)) {
        const KeptRecord& record = package.records[begin];
        subjects.push_back({record.type, record.dbid});
    }
    return subjects;
}

}  // namespace

void Compare(KeptPackage& package, RecordComparer& comparer, const ConfigurationOf& configuration,
             const std::function<void(RecordComparer&)>& more) {
    package.differences.clear();
    comparer.TakeTally();
    comparer.LookAhead(SubjectsOf(package));
    std::size_t begin = 0;
    while (begin < package.records.size() && Interrupted() == 0) {
        const std::size_t end = EndOfSubject(package, begin);
        comparer.Begin(package.records[begin].type, package.records[begin].dbid);
        for (; begin < end; ++begin) {
            const KeptRecord& record = package.records[begin];
            comparer.Add(record, configuration(record.configuration));
        }
        if (package.isOpen && end == package.records.size()) {
            more(comparer);
        }
        package.differences.push_back(comparer.End());
    }
    if (begin == package.records.size()) {
        package.tally = comparer.TakeTally();
    }
}

}  // namespace tool
