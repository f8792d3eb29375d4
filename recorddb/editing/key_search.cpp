#include "recorddb/editing/key_search.h"

#include <string>

#include "recorddb/value_text.h"

namespace recorddb {

namespace {

// A search can nest as deep as the text has words. The stack has room for this many.
constexpr int kDeepestReading = 200;

bool IsDecided(const KeyMatch& match) {
    return match.several || match.undecided;
}

// False where it shows without asking the database that the text is no value of the field.
bool MayBeValue(const schema::Field& field, std::string_view text) {
    switch (field.kind) {
        case schema::FieldKind::Integer:
        case schema::FieldKind::DbId:
            return IntegerOf(text).has_value();
        case schema::FieldKind::DateTime:
            return DateTimeOf(text).has_value();
        default:
            return !text.empty();
    }
}

const schema::Field& KeyField(const schema::RecordType& type, std::size_t part) {
    return type.fields[type.key[part]];
}

// True when the key is one field and no reference, so that the whole text is its value. Most
// references are to such types.
bool IsPlain(const schema::RecordType& type) {
    return type.key.size() == 1 && KeyField(type, 0).kind != schema::FieldKind::Reference;
}

void Add(KeyMatch& match, std::int64_t dbid) {
    if (dbid != 0 && match.dbid != 0 && dbid != match.dbid) {
        match = {.dbid = 0, .several = true, .undecided = false};
    } else if (dbid != 0) {
        match.dbid = dbid;
    }
}

}  // namespace

std::size_t KeySearch::ReadingHash::operator()(const Reading& reading) const {
    constexpr std::size_t factor = 0x9E3779B97F4A7C15U;
    std::size_t hash = std::hash<const char*>()(reading.begin);
    hash = hash * factor + reading.size;
    return hash * factor + static_cast<std::size_t>(reading.type);
}

KeyMatch KeySearch::Find(const schema::RecordType& type, std::string_view text) {
    if (const auto known = m_directory.Known(type, text)) {
        return {.dbid = *known, .several = false, .undecided = false};
    }
    if (m_depth == 0 && IsPlain(type)) {
        return FindAnew(type, text);
    }
    // Entered before the result is known: otherwise the search for a type whose key is only a
    // reference to itself would never end.
    const auto [found, isNew] =
        m_found.try_emplace(Reading{type.id, text.data(), text.size()}, KeyMatch());
    KeyMatch& match = found->second;  // stays where it is, whatever is added
    if (isNew) {
        match = FindAnew(type, text);
    }
    return match;
}

KeyMatch KeySearch::FindAnew(const schema::RecordType& type, std::string_view text) {
    if (m_depth == kDeepestReading) {
        return {.dbid = 0, .several = false, .undecided = true};
    }
    ++m_depth;
    Composition key{type, {}, {}};
    TakePart(key, text);
    --m_depth;
    if (IsDecided(key.match)) {
        key.match.dbid = 0;
    } else if (key.match.dbid != 0) {
        m_directory.Remember(type, text, key.match.dbid);
    }
    return key.match;
}

// Tries all ends of the next part.
void KeySearch::TakePart(Composition& key, std::string_view rest) {
    const std::size_t part = key.values.size();
    const std::size_t left = key.type.key.size() - part;
    if (left == 1) {
        TakeLastPart(key, rest);
        return;
    }
    for (std::size_t blank = rest.find(' ', 1);
         blank != std::string_view::npos && !IsDecided(key.match);
         blank = rest.find(' ', blank + 1)) {
        if (GivesUp()) {
            key.match.undecided = true;
            return;
        }
        const std::string_view others = rest.substr(blank + 1);
        if (left == 2 && !MayBeValue(KeyField(key.type, part + 1), others)) {
            continue;
        }
        auto value = ValueOf(KeyField(key.type, part), rest.substr(0, blank), key.match);
        if (value) {
            key.values.push_back(*std::move(value));
            TakePart(key, others);
            key.values.pop_back();
        }
    }
}

void KeySearch::TakeLastPart(Composition& key, std::string_view rest) {
    const schema::Field& field = KeyField(key.type, key.values.size());
    if (!MayBeValue(field, rest)) {
        return;
    }
    auto value = ValueOf(field, rest, key.match);
    if (value) {
        key.values.push_back(*std::move(value));
        Add(key.match, m_directory.LookUp(key.type, key.values));
        key.values.pop_back();
    }
}

// Nothing when no record has the value. `match` notes when the text is the key of several records,
// or when the search for it was given up.
std::optional<FieldValue> KeySearch::ValueOf(const schema::Field& field, std::string_view text,
                                             KeyMatch& match) {
    switch (field.kind) {
        case schema::FieldKind::Integer:
        case schema::FieldKind::DbId:
            return IntegerOf(text);
        case schema::FieldKind::DateTime:
            return DateTimeOf(text);
        case schema::FieldKind::Reference: {
            const KeyMatch target = Find(m_schema.Type(field.target), text);
            match.several = match.several || target.several;
            match.undecided = match.undecided || target.undecided;
            return target.dbid != 0 ? std::optional<FieldValue>(target.dbid) : std::nullopt;
        }
        default:
            return std::string(text);
    }
}

bool KeySearch::GivesUp() {
    return m_triesLeft-- <= 0 || (m_limits.stopRequested && m_limits.stopRequested());
}

}  // namespace recorddb
