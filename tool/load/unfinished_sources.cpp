#include "tool/load/unfinished_sources.h"

#include <fmt/format.h>

#include <filesystem>

#include "tool/text/number_text.h"

namespace tool {

namespace {

using recorddb::journal::JournalEntry;
using recorddb::journal::JournalKey;

bool IsSameName(const std::string& a, const std::string& b) {
    return std::filesystem::path(a).lexically_normal() ==
           std::filesystem::path(b).lexically_normal();
}

bool HasImported(const JournalEntry& entry) {
    return entry.created + entry.updated + entry.history + entry.attachments + entry.duplicates > 0;
}

}  // namespace

UnfinishedSources::UnfinishedSources(recorddb::journal::Journal& journal)
    : m_journal(journal), m_keys(journal.Unfinished()) {}

std::vector<UnfinishedSources::Entry> UnfinishedSources::WithOtherContent(
    const JournalKey& key, const std::string& name) const {
    std::vector<Entry> entries;
    for (const JournalKey& known : m_keys) {
        if (known.configurationSha256 != key.configurationSha256 ||
            known.sourceSha256 == key.sourceSha256) {
            continue;
        }
        const auto entry = m_journal.Find(known);
        if (entry && !entry->complete && HasImported(*entry) &&
            IsSameName(entry->sourceName, name)) {
            entries.push_back({known, static_cast<std::uint64_t>(entry->nextOrdinal)});
        }
    }
    return entries;
}

std::string AdviseOnChangedSource(std::uint64_t handled) {
    return fmt::format(
        "{} of it {} imported before it changed. Give the file the content that it had then, and "
        "the same command goes on after them; or take them out of the file and load the rest "
        "with --fresh, which imports everything that is left in it.",
        CountOf(handled, "record"), handled == 1 ? "was" : "were");
}

}  // namespace tool
