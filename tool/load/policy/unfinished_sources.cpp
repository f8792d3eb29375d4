#include "tool/load/policy/unfinished_sources.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tool/text/number_text.h"

namespace tool {

namespace {

using recorddb::journal::JournalEntry;
using recorddb::journal::JournalKey;

std::string Normal(const std::string& name) {
    return std::filesystem::path(name).lexically_normal().string();
}

bool IsSameName(const std::string& a, const std::string& b) {
    return Normal(a) == Normal(b);
}

bool IsSameKey(const JournalKey& a, const JournalKey& b) {
    return a.sourceSha256 == b.sourceSha256 && a.configurationSha256 == b.configurationSha256;
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
        auto entry = FindImported(known);
        if (entry && IsSameName(entry->name, name)) {
            entries.push_back(std::move(*entry));
        }
    }
    return entries;
}

std::vector<UnfinishedSources::Entry> UnfinishedSources::OfMapBeside(
    const std::string& map, const std::vector<JournalKey>& keys) const {
    const std::string begin = Normal(map) + ", ";
    std::vector<Entry> entries;
    for (const JournalKey& known : m_keys) {
        const bool isOne = std::any_of(
            keys.begin(), keys.end(), [&](const JournalKey& key) { return IsSameKey(key, known); });
        auto entry = isOne ? std::nullopt : FindImported(known);
        if (entry && Normal(entry->name).starts_with(begin)) {
            entries.push_back(std::move(*entry));
        }
    }
    return entries;
}

std::optional<UnfinishedSources::Entry> UnfinishedSources::FindImported(
    const JournalKey& key) const {
    const auto entry = m_journal.Find(key);
    if (!entry || entry->complete || !HasImported(*entry)) {
        return std::nullopt;
    }
    return Entry{key, entry->sourceName, static_cast<std::uint64_t>(entry->nextOrdinal)};
}

std::string AdviseOnChangedSource(std::uint64_t handled) {
    return fmt::format(
        "{} of it {} imported before it changed. Give the file the content that it had then, and "
        "the same command goes on after them; or take them out of the file and load the rest "
        "with --fresh, which imports everything that is left in it.",
        CountOf(handled, "record"), handled == 1 ? "was" : "were");
}

}  // namespace tool
