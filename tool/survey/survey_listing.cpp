#include "tool/survey/survey_listing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "tool/survey/survey_words.h"
#include "tool/text/number_text.h"
#include "tool/text/visible_text.h"

namespace tool {

namespace {

constexpr std::size_t kShownValues = 6;
constexpr std::size_t kNarrowestAddress = 7;
constexpr std::size_t kWidestAddress = 32;

void PrintAddress(const Survey& survey, AddressRef ref, std::size_t width, std::ostream& out) {
    const SourceSurvey& source = survey.sources[ref.source];
    const AddressSurvey& address = survey.At(ref);
    const bool holdsOthers = !address.IsScalarOnly() && address.Values() == 0;
    const std::uint64_t values = holdsOthers ? address.objects + address.lists : address.Values();
    out << fmt::format("  {:<{}}  {:>9}  {:>7}  {:>7}  {:>13}  {}\n",
                       VisibleText(AddressText(source, address)), width, Grouped(values),
                       Grouped(address.empties + address.nulls),
                       holdsOthers ? "" : Grouped(address.longest),
                       holdsOthers ? "" : DistinctText(address), VisibleText(KindText(address)));
    if (const std::string values = ValuesText(address, kShownValues); !values.empty()) {
        out << "      " << VisibleText(values) << '\n';
    }
    for (const Remark& remark : Remarks(survey, ref)) {
        out << "      " << VisibleText(remark.text) << '\n';
    }
}

void PrintSource(const Survey& survey, std::size_t place, std::ostream& out) {
    const SourceSurvey& source = survey.sources[place];
    out << fmt::format("{}: {}\n", VisibleText(FilesText(source)), VisibleText(FormatText(source)));
    out << CountOf(source.rows, "row");
    if (source.badRows > 0) {
        out << fmt::format(", and {} that cannot be used", CountOf(source.badRows, "row"));
    }
    out << '\n';
    for (const std::string& remark : Remarks(source)) {
        out << "  " << VisibleText(remark) << '\n';
    }
    if (source.addresses.empty()) {
        return;
    }
    std::size_t width = kNarrowestAddress;
    for (const AddressSurvey& address : source.addresses) {
        width = std::max(width, VisibleText(AddressText(source, address)).size());
    }
    width = std::min(width, kWidestAddress);
    out << fmt::format("\n  {:<{}}  {:>9}  {:>7}  {:>7}  {:>13}  {}\n",
                       source.IsCsv() ? "column" : "address", width, "values", "empty", "longest",
                       "different", "kind");
    for (std::size_t address = 0; address < source.addresses.size(); ++address) {
        PrintAddress(survey, {place, address}, width, out);
    }
}

}  // namespace

void PrintSurvey(const Survey& survey, std::ostream& out) {
    for (std::size_t source = 0; source < survey.sources.size(); ++source) {
        out << (source == 0 ? "" : "\n");
        PrintSource(survey, source, out);
    }
    if (!survey.notRead.empty()) {
        out << fmt::format("\nnot read: {}, {}{}\n", CountOf(survey.notRead.size(), "file"),
                           VisibleText(survey.notRead.front()),
                           survey.notRead.size() > 1 ? " ..." : "");
    }
}

}  // namespace tool
