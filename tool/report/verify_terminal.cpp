#include "tool/report/verify_terminal.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "tool/report/run_words.h"
#include "tool/text/number_text.h"
#include "tool/text/value_pair.h"

namespace tool {

namespace {

// A database that differs or is damaged everywhere must not bury what else is said.
constexpr std::uint64_t kShownDifferences = 50;
constexpr std::uint64_t kShownFaults = 50;

std::string PlaceOf(const Difference& difference) {
    std::string place = difference.source;
    if (difference.record != 0) {
        place += fmt::format(", {} {}", difference.unit, difference.record);
    }
    if (!difference.sourceId.empty()) {
        place += fmt::format(" ({})", ShowPair(difference.sourceId, "").source);
    }
    if (difference.line != 0) {
        place += fmt::format(", line {}", difference.line);
    }
    return place;
}

// `thing` is a difference or a fault.
std::string SubjectOf(const auto& thing) {
    std::string subject = thing.type;
    if (!thing.id.empty()) {
        subject += (subject.empty() ? "" : " ") + ShowPair(thing.id, "").source;
    }
    if (!thing.field.empty()) {
        subject += (subject.empty() ? "" : ", ") + ShowPair(thing.field, "").source;
    }
    return subject.empty() ? "" : subject + ": ";
}

std::string ShownValue(std::string_view value) {
    return value.empty() ? "nothing" : fmt::format("\"{}\"", value);
}

struct Column {
    std::string_view title;
    std::uint64_t VerifiedType::*number;
};

constexpr std::array<Column, 10> kColumns = {{
    {"compared", &VerifiedType::compared},
    {"equal", &VerifiedType::equal},
    {"different", &VerifiedType::different},
    {"missing", &VerifiedType::missing},
    {"extra", &VerifiedType::extra},
    {"fields", &VerifiedType::fields},
    {"references", &VerifiedType::references},
    {"history", &VerifiedType::history},
    {"attachments", &VerifiedType::attachments},
    {"duplicates", &VerifiedType::duplicates},
}};

// A table with a line for each type.
std::string DescribeTypes(const std::vector<VerifiedType>& types, bool exact) {
    std::vector<Column> columns(kColumns.begin(), kColumns.end());
    if (!exact) {
        std::erase_if(columns, [](const Column& column) { return column.title == "extra"; });
    }
    const auto nameOf = [](const VerifiedType& type) {
        return type.name.empty() ? std::string("(no type)") : type.name;
    };
    std::size_t width = 0;
    for (const VerifiedType& type : types) {
        width = std::max(width, nameOf(type).size());
    }
    std::string text(width, ' ');
    for (const Column& column : columns) {
        text += fmt::format("  {}", column.title);
    }
    text += '\n';
    for (const VerifiedType& type : types) {
        text += fmt::format("{:<{}}", nameOf(type), width);
        for (const Column& column : columns) {
            text += fmt::format("  {:>{}}", Grouped(type.*column.number), column.title.size());
        }
        text += '\n';
    }
    return text;
}

}  // namespace

std::string DescribeDifference(const Difference& difference) {
    const ShownPair values = ShowPair(difference.sourceValue, difference.databaseValue);
    std::string text = PlaceOf(difference);
    text += (text.empty() ? "" : ": ") + SubjectOf(difference);
    // A record that is missing as a whole, for example, has no values to show.
    const bool hasValues = !difference.sourceValue.empty() || !difference.databaseValue.empty();
    if (hasValues) {
        text += fmt::format("source {}, database {}", ShownValue(values.source),
                            ShownValue(values.database));
    }
    if (!difference.problem.empty()) {
        text += hasValues ? fmt::format(" ({})", difference.problem) : difference.problem;
    }
    return text;
}

std::string DescribeFault(const recorddb::Fault& fault) {
    std::string text = SubjectOf(fault);
    if (fault.value.empty()) {
        return text + fault.problem;
    }
    return text +
           fmt::format("{} ({})", ShownValue(ShowPair("", fault.value).database), fault.problem);
}

VerifyTerminal::VerifyTerminal(bool quiet, std::string map, std::ostream& out, std::ostream& err)
    : m_quiet(quiet), m_map(std::move(map)), m_out(out), m_err(err) {}

void VerifyTerminal::Begins(std::uint64_t total) {
    if (m_progress) {
        m_progress->Finish();
    }
    m_progress.emplace(m_err, ChooseProgressStyle(m_quiet, STDERR_FILENO), total);
}

void VerifyTerminal::Advances(std::uint64_t records, std::uint64_t done) {
    m_progress->Update(records, done);
}

void VerifyTerminal::Warns(std::string_view line) {
    m_progress->Print(line);
}

void VerifyTerminal::Finds(const MapFinding& finding) {
    if (finding.weight == FindingWeight::Note) {
        Warns("note: " + finding.text);
    } else if (finding.weight == FindingWeight::Count && !m_quiet) {
        Warns(finding.text);
    }
    if (!finding.paste.empty() && !m_quiet) {
        m_pastes.push_back(PasteText(finding, m_map));
    }
}

void VerifyTerminal::IsFaulty(const recorddb::Fault& fault) {
    ++m_faults;
    if (m_faults <= kShownFaults) {
        Warns("damaged: " + DescribeFault(fault));
    } else if (m_faults == kShownFaults + 1) {
        Warns("damaged: further faults of the database are counted; --report lists all");
    }
}

void VerifyTerminal::Differs(const Difference& difference) {
    ++m_differences;
    if (m_differences <= kShownDifferences) {
        Warns("differs: " + DescribeDifference(difference));
    } else if (m_differences == kShownDifferences + 1) {
        Warns("differs: further differences are counted; --report lists all");
    }
}

void VerifyTerminal::Finish(const VerifySummary& summary) {
    for (const std::string& paste : m_pastes) {
        Warns(paste);
    }
    m_progress->Finish();
    if (m_quiet) {
        return;
    }
    if (!summary.types.empty()) {
        m_out << DescribeTypes(summary.types, summary.exact);
    }
    if (summary.unusedContents > 0) {
        m_out << fmt::format("{} of {} in all {} to no attachment any more\n",
                             CountOf(summary.unusedContents, "content"),
                             CountOf(summary.unusedBytes, "byte"),
                             summary.unusedContents == 1 ? "belongs" : "belong");
    }
    m_out << fmt::format("{} read, {} found, {:.1f} seconds\n", CountOf(summary.read, "record"),
                         CountOf(summary.differences, "difference"), summary.seconds)
          << summary.Verdict() << '\n';
}

}  // namespace tool
