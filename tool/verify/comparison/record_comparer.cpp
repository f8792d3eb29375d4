#include "tool/verify/comparison/record_comparer.h"

#include <stdexcept>
#include <string>
#include <utility>

#include "tool/verify/comparison/attachment_comparison.h"
#include "tool/verify/comparison/history_comparison.h"
#include "tool/verify/comparison/value_comparison.h"

namespace tool {

namespace {

void CompareDuplicate(const ExpectedRecord& expected,
                      const std::optional<recorddb::LinkedRecord>& stored,
                      DifferenceReporter& reporter, VerifiedType& tally) {
    const std::string database = stored ? stored->key : "";
    if (const auto& original = expected.Original()) {
        ++tally.duplicates;
        if (!stored || stored->dbid != original->dbid) {
            reporter.Report(expected.OriginalPlace(), "duplicate of", original->text, database,
                            original->problem);
        }
    } else if (expected.IsWhole() && stored) {
        reporter.Report(expected.FirstPlace(), "duplicate of", "", database);
    }
}

}  // namespace

RecordComparer::RecordComparer(recorddb::Database& database, recorddb::RecordReader& reader,
                               RecordLookup& lookup, const VerifyOptions& options,
                               DifferenceReporter::PlaceOf placeOf)
    : m_database(database),
      m_reader(reader),
      m_resolver(lookup),
      m_contents(reader),
      m_files(options.attachments, options.maxAttachmentSize),
      m_placeOf(std::move(placeOf)),
      m_exact(options.exact),
      m_tally(database.GetSchema()) {}

void RecordComparer::LookAhead(const std::vector<RecordNumber>& records) {
    std::vector<recorddb::ExpectedSearch> searches;
    for (const RecordNumber& record : records) {
        const auto& type = m_database.GetSchema().Type(record.type);
        recorddb::ExpectedSearch& search = searches.emplace_back();
        search.type = &type;
        search.values.emplace_back(type.FindField(recorddb::schema::kDbIdName),
                                   std::to_string(record.dbid));
        search.whole = true;
    }
    m_reader.LookAhead(searches);
}

void RecordComparer::Begin(std::int64_t type, std::int64_t dbid) {
    m_expected.emplace(m_database.GetSchema().Type(type), m_resolver, m_exact);
    m_dbid = dbid;
    m_differs = false;
}

void RecordComparer::Add(const KeptRecord& record, const ImportConfiguration& configuration) {
    m_expected->Add(record, configuration);
    m_differs = m_differs || record.differs;
}

std::vector<Difference> RecordComparer::End() {
    const ExpectedRecord& expected = *m_expected;
    const auto record = m_reader.Get(expected.Type(), m_dbid);
    if (!record) {
        throw std::logic_error("a record is gone within one transaction");
    }
    Difference subject;
    subject.type = expected.Type().name;
    subject.id = m_reader.Key(expected.Type(), m_dbid);
    subject.sourceId = expected.SourceId();
    std::vector<Difference> differences;
    DifferenceReporter reporter(
        std::move(subject),
        [&differences](const Difference& difference) { differences.push_back(difference); },
        m_placeOf);
    VerifiedType& tally = m_tally.Of(&expected.Type());
    CompareValues(expected, *record, reporter, tally);
    CompareHistory(expected, m_reader.History(*record), reporter, tally);
    CompareAttachments(expected, m_reader.Attachments(*record), m_contents, m_files, reporter,
                       tally);
    CompareDuplicate(expected, m_reader.Original(*record), reporter, tally);
    const bool isDifferent = m_differs || reporter.Count() > 0;
    ++tally.compared;
    ++(isDifferent ? tally.different : tally.equal);
    return differences;
}

}  // namespace tool
