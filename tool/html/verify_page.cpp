#include "tool/html/verify_page.h"

#include <fmt/format.h>

#include <vector>

#include "tool/html/html_table.h"
#include "tool/html/html_text.h"
#include "tool/html/page_parts.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

PageFacts FactsOf(const VerifyFindings& findings) {
    const VerifyOptions& options = findings.Options();
    return {TitleFor("Verification of", options.database),
            "verify",
            options.database,
            options.sources,
            findings.Start(),
            findings.Summary().seconds,
            findings.Version()};
}

std::string TotalsSection(const VerifySummary& summary) {
    VerifiedType sum;
    for (const VerifiedType& type : summary.types) {
        sum.fields += type.fields;
        sum.references += type.references;
        sum.history += type.history;
        sum.attachments += type.attachments;
        sum.duplicates += type.duplicates;
    }
    std::vector<PageFigure> figures = {{"records read", summary.read},
                                       {"records compared", summary.compared},
                                       {"equal", summary.compared - summary.differing},
                                       {"different", summary.differing, true},
                                       {"missing", summary.missing, true}};
    if (summary.exact) {
        figures.push_back({"in no source", summary.extra, true});
    }
    figures.push_back({"faults of the database", summary.faults, true});
    return PageSection("totals", "Totals",
                       FigureRow(figures) + FigureRow({{"values", sum.fields},
                                                       {"references", sum.references},
                                                       {"history entries", sum.history},
                                                       {"attachments", sum.attachments},
                                                       {"duplicate marks", sum.duplicates}},
                                                      true));
}

std::string TypesSection(const VerifySummary& summary) {
    using Kind = HtmlTable::Kind;
    HtmlTable table("Records of the database that the sources speak of, and what was compared",
                    {{"Record type"},
                     {"Compared", Kind::Number},
                     {"Equal", Kind::Number},
                     {"Different", Kind::Number},
                     {"Missing", Kind::Number},
                     {"Values", Kind::Number},
                     {"Refer\u00ADences", Kind::Number},
                     {"History entries", Kind::Number},
                     {"Attach\u00ADments", Kind::Number},
                     {"Duplicate marks", Kind::Number}});
    for (const VerifiedType& type : summary.types) {
        table.AddRow(
            {type.name.empty() ? "of no type" : HtmlText(type.name), NumberCell(type.compared),
             NumberCell(type.equal), NumberCell(type.different, true),
             NumberCell(type.missing, true), NumberCell(type.fields), NumberCell(type.references),
             NumberCell(type.history), NumberCell(type.attachments), NumberCell(type.duplicates)});
    }
    return PageSection("types", "By record type", table.Html());
}

std::string GroupsHtml(const std::vector<ExampleGroup>& groups, std::uint64_t count,
                       std::string_view name, std::string_view title) {
    std::string content =
        fmt::format("<p>{}, of {}.</p>\n", CountOf(count, name), CountOf(groups.size(), "kind"));
    for (const ExampleGroup& group : groups) {
        content += GroupHtml(group, count, title);
    }
    return content;
}

std::string DifferencesSection(const VerifyFindings& findings) {
    const std::uint64_t differences = findings.Summary().differences;
    if (differences == 0) {
        return PageSection("differences", "Differences", "<p>There are none.</p>\n");
    }
    return PageSection("differences", "Differences",
                       GroupsHtml(findings.Differences(), differences, "difference", "Difference"));
}

// What the database is by itself, whatever the sources say.
std::string DatabaseSection(const VerifyFindings& findings) {
    const VerifySummary& summary = findings.Summary();
    std::string content = summary.faults == 0
                              ? "<p>It keeps its own rules.</p>\n"
                              : GroupsHtml(findings.Faults(), summary.faults, "fault", "Fault");
    if (summary.unusedContents > 0) {
        content += fmt::format(
            "<p class=\"note\">{} of {} in all {} to no attachment any more.</p>\n",
            CountOf(summary.unusedContents, "content"), CountOf(summary.unusedBytes, "byte"),
            summary.unusedContents == 1 ? "belongs" : "belong");
    }
    return PageSection("database", "The database itself", content);
}

std::string LoadsSection(const VerifyFindings& findings) {
    const std::uint64_t left = findings.Sources() - findings.SourcesLoaded();
    std::string content =
        left == 0
            ? fmt::format("<p>All {} of records were loaded to their end.</p>\n",
                          CountOf(findings.Sources(), "source"))
            : fmt::format(
                  "<p>{} of {} of records {} not loaded to the end as it stands "
                  "here.</p>\n",
                  Grouped(left), CountOf(findings.Sources(), "source"), left == 1 ? "was" : "were");
    if (!findings.Loads().Types().empty()) {
        content += TypesTable("All loads of these sources together", findings.Loads().Types(),
                              findings.Loads().Sum());
        content +=
            "<p class=\"note\">From the database's journal. A rejected record that was mended and "
            "loaded from another file still counts as rejected here.</p>\n";
    }
    return PageSection("loads", "What the loads did", content);
}

}  // namespace

std::string VerifyPage(const VerifyFindings& findings) {
    const PageFacts facts = FactsOf(findings);
    return PageDocument(facts, VerdictOf(findings),
                        TotalsSection(findings.Summary()) + StepsSection(NextSteps(findings)) +
                            TypesSection(findings.Summary()) + DifferencesSection(findings) +
                            findings.Findings().SectionHtml() + DatabaseSection(findings) +
                            LoadsSection(findings) + FactsSection(facts));
}

}  // namespace tool
