#include "tool/verify/comparison/attachment_comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "recorddb/value_text.h"

namespace tool {

using recorddb::Attachment;
using recorddb::schema::Field;
using recorddb::schema::FieldKind;

namespace {

struct Pair {
    const ExpectedAttachment* claimed = nullptr;
    FileContent file;
    const Attachment* stored = nullptr;  // null: the database does not have it
};

// The attachments of one field.
class AttachmentComparison {
  public:
    AttachmentComparison(const ExpectedRecord& expected, const Field& field,
                         std::vector<const Attachment*> stored, StoredContents& contents,
                         const AttachmentFiles& files, DifferenceReporter& reporter)
        : m_expected(expected),
          m_field(field),
          m_free(std::move(stored)),
          m_contents(contents),
          m_files(files),
          m_reporter(reporter) {}

    void Run() {
        MatchByName();
        MatchByContent();
        for (const Pair& pair : m_pairs) {
            if (pair.stored != nullptr) {
                ComparePair(pair);
            } else {
                ReportMissing(pair);
            }
        }
        CompareOrder();
        if (m_expected.IsWhole()) {
            for (const Attachment* const attachment : m_free) {
                m_reporter.Report(m_expected.FirstPlace(), m_field.name, "", attachment->fileName);
            }
        }
    }

  private:
    using Free = std::vector<const Attachment*>;

    void Take(Pair& pair, Free::iterator found) {
        if (found != m_free.end()) {
            pair.stored = *found;
            m_free.erase(found);
        }
    }

    void MatchByName() {
        for (const ExpectedAttachment& claimed : m_expected.Attachments(m_field.index)) {
            Pair& pair = m_pairs.emplace_back();
            pair.claimed = &claimed;
            if (!claimed.lines.Complete()) {
                continue;
            }
            pair.file = m_files.Read(claimed.lines.fileName, m_field.name);
            Take(pair, std::find_if(m_free.begin(), m_free.end(), [&](const Attachment* other) {
                     return other->fileName == claimed.baseName;
                 }));
        }
    }

    // An attachment whose name differs is known by what it holds.
    void MatchByContent() {
        for (Pair& pair : m_pairs) {
            if (pair.stored == nullptr && !pair.file.sha256.empty()) {
                Take(pair, std::find_if(m_free.begin(), m_free.end(), [&](const Attachment* other) {
                         return other->sha256 == pair.file.sha256;
                     }));
            }
        }
    }

    void ComparePair(const Pair& pair) {
        const ExpectedAttachment& claimed = *pair.claimed;
        Compare(pair, "name", claimed.baseName, pair.stored->fileName);
        Compare(pair, "description", claimed.lines.description, pair.stored->description);
        CompareSizes(pair);
        if (pair.file.sha256.empty()) {
            Report(pair, "content", "", pair.stored->sha256, pair.file.problem);
            return;
        }
        Compare(pair, "content", pair.file.sha256, m_contents.HashOf(*pair.stored));
    }

    // The size that the source declares is compared only where it differs from the file's.
    void CompareSizes(const Pair& pair) {
        const bool isRead = !pair.file.sha256.empty();
        const std::string stored = std::to_string(pair.stored->fileSize);
        const auto declared = recorddb::IntegerOf(pair.claimed->lines.fileSize);
        if (declared && (!isRead || *declared != pair.file.size)) {
            Compare(pair, "declared size", std::to_string(*declared), stored);
        }
        if (isRead) {
            Compare(pair, "size", std::to_string(pair.file.size), stored);
        }
    }

    void Compare(const Pair& pair, std::string_view part, const std::string& source,
                 const std::string& database) {
        if (source != database) {
            Report(pair, part, source, database, "");
        }
    }

    void Report(const Pair& pair, std::string_view part, std::string source, std::string database,
                std::string problem) {
        m_reporter.Report(pair.claimed->place,
                          fmt::format("{}, {}, {}", m_field.name, pair.claimed->baseName, part),
                          std::move(source), std::move(database), std::move(problem));
    }

    void ReportMissing(const Pair& pair) {
        const AttachmentLines& lines = pair.claimed->lines;
        const std::string problem =
            lines.Complete() ? pair.file.problem : "incomplete: an attachment takes four lines";
        m_reporter.Report(pair.claimed->place, m_field.name,
                          lines.fileName.empty() ? lines.id : lines.fileName, "", problem);
    }

    void CompareOrder() {
        std::vector<const Attachment*> inSource;
        for (const Pair& pair : m_pairs) {
            if (pair.stored != nullptr) {
                inSource.push_back(pair.stored);
            }
        }
        Free asStored = inSource;
        std::sort(asStored.begin(), asStored.end(),
                  [](const auto* a, const auto* b) { return a->dbid < b->dbid; });
        if (inSource != asStored) {
            m_reporter.Report(m_pairs.front().claimed->place, m_field.name, Names(inSource),
                              Names(asStored), "in another order");
        }
    }

    static std::string Names(const Free& attachments) {
        std::string names;
        for (const Attachment* const attachment : attachments) {
            names += (names.empty() ? "" : ",") + attachment->fileName;
        }
        return names;
    }

    const ExpectedRecord& m_expected;
    const Field& m_field;
    Free m_free;  // of the database, and not matched yet
    StoredContents& m_contents;
    const AttachmentFiles& m_files;
    DifferenceReporter& m_reporter;
    std::vector<Pair> m_pairs;
};

}  // namespace

void CompareAttachments(const ExpectedRecord& expected, const std::vector<Attachment>& stored,
                        StoredContents& contents, const AttachmentFiles& files,
                        DifferenceReporter& reporter, VerifiedType& tally) {
    for (const Field& field : expected.Type().fields) {
        if (field.kind != FieldKind::Attachments) {
            continue;
        }
        std::vector<const Attachment*> ofField;
        for (const Attachment& attachment : stored) {
            if (attachment.field == field.name) {
                ofField.push_back(&attachment);
            }
        }
        tally.attachments += expected.Attachments(field.index).size();
        AttachmentComparison(expected, field, std::move(ofField), contents, files, reporter).Run();
    }
}

}  // namespace tool
