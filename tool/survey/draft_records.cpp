#include "tool/survey/draft_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/survey/draft_history.h"
#include "tool/survey/draft_keys.h"
#include "tool/survey/draft_names.h"
#include "tool/survey/draft_rules.h"
#include "tool/survey/key_pairs.h"
#include "tool/survey/key_rules.h"
#include "tool/survey/survey_words.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

constexpr std::size_t kLongestPrefix = 20;

class RecordDrafter {
  public:
    explicit RecordDrafter(DraftWork& work) : m_work(work), m_draft(work.draft) {}

    void AddRows(std::size_t place) {
        const SourceSurvey& source = SourceAt(place);
        DraftSource& draft = m_draft.sources[place];
        if (source.badRows > 0) {
            draft.notes.push_back({fmt::format("{} cannot be used and will be rejected; the survey "
                                               "names them",
                                               CountOf(source.badRows, "row")),
                                   true});
        }
        for (const SourceSurvey::Outside& outside : source.outside) {
            draft.notes.push_back(
                {fmt::format("{} stands beside the rows and is read by nothing ({})",
                             outside.address, CountOf(outside.values, "value")),
                 true});
        }
        if (source.valuesBeyond > 0) {
            draft.notes.push_back(
                {"there are more addresses than a survey tells apart: the rest is missing here",
                 true});
        }
        const std::optional<std::size_t> key = FindRowKey(source);
        if (!key) {
            draft.notes.push_back({"no row has a value that a record could be known by", true});
            return;
        }
        Scope scope{AddType(m_work, place, source.group.name), place, 0, key};
        const bool isPair = !source.keyPairs.empty();
        if (isPair) {
            scope.key.reset();
        }
        FindStates(scope);
        if (isPair) {
            AddPairedKey(scope, source.keyPairs.front());
        } else {
            AddField(scope, *key);
            if (!IsKey(source, source.addresses[*key])) {
                NoteRepeats(scope);
            }
        }
        AddFields(scope, 0, source.addresses.size());
    }

  private:
    // Where fields of a record stand: in a row, or in an item of a list in it.
    struct Scope {
        std::size_t type;
        std::size_t source;
        std::size_t depth;  // steps from the row to the item
        std::optional<std::size_t> key;
        DraftNames names{DraftNames::kFieldLimit};
    };

    const SourceSurvey& SourceAt(std::size_t source) const { return m_work.survey.sources[source]; }

    void NoteRepeats(const Scope& scope) {
        const SourceSurvey& source = SourceAt(scope.source);
        TypeOf(scope).notes.push_back(
            {fmt::format("no {0} tells all rows apart; rows without a value of {1}, or with "
                         "one that came before, are rejected. Name another key, put one "
                         "together (text: \"{{a}}-{{b}}\"), or say what becomes of rows that "
                         "repeat it (same_key: first, or merge)",
                         source.IsCsv() ? "column" : "address",
                         AddressText(source, source.addresses[*scope.key])),
             true});
    }

    // The template that makes one key of two addresses, of which `root` leads to the row.
    static std::string PairPattern(const SourceSurvey& source, KeyPair pair,
                                   std::string_view root) {
        const auto part = [&](std::size_t address) {
            return fmt::format("{{{}{}}}", root, AddressText(source, source.addresses[address]));
        };
        return YamlText(PairedKey(part(pair.first), part(pair.second)));
    }

    void AddPairedKey(Scope& scope, KeyPair pair) {
        const SourceSurvey& source = SourceAt(scope.source);
        DraftField field;
        field.name = scope.names.Take("key");
        field.isKey = true;
        field.pattern = PairPattern(source, pair, "");
        TypeOf(scope).notes.push_back(
            {fmt::format("no {} tells all rows apart, but {} and {} together do, so the key is put "
                         "together of these. Is that how records are known?",
                         source.IsCsv() ? "column" : "address",
                         AddressText(source, source.addresses[pair.first]),
                         AddressText(source, source.addresses[pair.second])),
             true});
        TypeOf(scope).fields.push_back(std::move(field));
    }

    DraftType& TypeOf(const Scope& scope) { return m_draft.types[scope.type]; }

    void FindStates(Scope& scope) {
        const SourceSurvey& source = SourceAt(scope.source);
        for (std::size_t i = 0; i < source.addresses.size(); ++i) {
            if (i == scope.key || !CanBeState(source.addresses[i])) {
                continue;
            }
            DraftType& type = TypeOf(scope);
            for (const auto& entry : source.addresses[i].values.Frequent(kMostStates)) {
                type.states.push_back(entry.text);
            }
            type.prefix = PrefixFor(type.name);
            scope.names.Reserve("id");
            scope.names.Reserve("state");
            m_state = AddressRef{scope.source, i};
            return;
        }
    }

    std::string PrefixFor(const std::string& name) {
        std::string prefix = name.substr(0, kLongestPrefix - 2);
        std::transform(prefix.begin(), prefix.end(), prefix.begin(), [](char c) {
            return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        });
        while (!prefix.empty() &&
               ((prefix.back() >= '0' && prefix.back() <= '9') || prefix.back() == '_')) {
            prefix.pop_back();
        }
        prefix = prefix.empty() ? "R" : prefix;
        std::string ending;
        for (char letter = 'A'; !m_prefixes.insert(prefix + ending).second; ++letter) {
            ending = letter;
        }
        return prefix + ending;
    }

    // Adds fields for the addresses from `begin` up to `end`.
    void AddFields(Scope& scope, std::size_t begin, std::size_t end) {
        const SourceSurvey& source = SourceAt(scope.source);
        for (std::size_t i = begin; i < end;) {
            const AddressSurvey& address = source.addresses[i];
            const bool isPlain = address.Values() > 0;
            const bool isObject = address.objects > 0;
            const bool isList = address.lists > 0;
            if (!CanBeNamed(source, address)) {
                NoteUnnamed(scope, i);
                i = EndBelow(source, i);
            } else if (static_cast<int>(isPlain) + static_cast<int>(isObject) +
                           static_cast<int>(isList) >
                       1) {
                Ignore(scope, i, "different kinds of values stand here: " + KindText(address));
                i = EndBelow(source, i);
            } else if (isList) {
                AddList(scope, i);
                i = EndBelow(source, i);
            } else {
                if (i != scope.key && (isPlain || source.IsCsv())) {
                    AddField(scope, i);
                } else if (!isPlain && !isObject) {
                    m_draft.sources[scope.source].notes.push_back(
                        {fmt::format("{} never has a value", AddressText(source, address))});
                }
                ++i;
            }
        }
    }

    static std::size_t EndBelow(const SourceSurvey& source, std::size_t place) {
        std::size_t end = place + 1;
        while (end < source.addresses.size() &&
               IsBelow(source.addresses[end], source.addresses[place])) {
            ++end;
        }
        return end;
    }

    void Ignore(const Scope& scope, std::size_t place, const std::string& why) {
        const SourceSurvey& source = SourceAt(scope.source);
        m_draft.sources[scope.source].ignored.push_back(
            {AddressYaml(source, source.addresses[place], 0),
             {why + "; it is left out until a step reads it", true}});
    }

    void NoteUnnamed(const Scope& scope, std::size_t place) {
        const SourceSurvey& source = SourceAt(scope.source);
        m_draft.sources[scope.source].notes.push_back(
            {fmt::format("{} cannot be named in a map, since a name in it is empty",
                         AddressText(source, source.addresses[place])),
             true});
    }

    // An address from the row on, or from the item that is `depth` steps below it.
    static std::string AddressYaml(const SourceSurvey& source, const AddressSurvey& address,
                                   std::size_t depth) {
        if (address.column) {
            return fmt::format("{{column: {}}}", *address.column + 1);
        }
        AddressSurvey rest;
        rest.steps.assign(address.steps.begin() + static_cast<std::ptrdiff_t>(depth),
                          address.steps.end());
        return YamlText(AddressText(source, rest));
    }

    DraftField& AddField(Scope& scope, std::size_t place) {
        const SourceSurvey& source = SourceAt(scope.source);
        const AddressSurvey& address = source.addresses[place];
        const AddressRef ref{scope.source, place};
        DraftField field;
        field.isState = m_state == ref;
        field.isKey = scope.key == place;
        field.name = field.isState ? "state" : NameOf(scope, address, field.isKey);
        field.address = AddressYaml(source, address, scope.depth);
        if (!field.isState && !field.isKey) {
            SetKind(field, address);
        }
        m_work.addresses[{scope.type, TypeOf(scope).fields.size()}] = ref;
        if (scope.depth == 0) {
            m_work.fields[{ref.source, ref.address}] = {scope.type, TypeOf(scope).fields.size()};
        }
        TypeOf(scope).fields.push_back(std::move(field));
        return TypeOf(scope).fields.back();
    }

    std::string NameOf(Scope& scope, const AddressSurvey& address, bool isKey) {
        const std::string last = LastName(address);
        const bool isOwn =
            TypeOf(scope).HasStates() && NameFor(last, DraftNames::kFieldLimit) == "id";
        return scope.names.Take(isOwn ? (isKey ? "source_id" : "source_" + last) : last);
    }

    void AddList(Scope& scope, std::size_t place) {
        const SourceSurvey& source = SourceAt(scope.source);
        const std::size_t end = EndBelow(source, place);
        if (end == place + 1) {
            m_draft.sources[scope.source].notes.push_back({fmt::format(
                "the lists at {} are all empty", AddressText(source, source.addresses[place]))});
            return;
        }
        const AddressSurvey& element = source.addresses[place + 1];
        if (element.Values() > 0 && element.IsScalarOnly()) {
            AddField(scope, place + 1).isList = true;
        } else if (element.objects > 0 && element.lists == 0 && element.Values() == 0) {
            AddItems(scope, place, end);
        } else if (element.Values() + element.objects + element.lists > 0) {
            Ignore(scope, place, "the lists hold " + KindText(element));
        }
    }

    // Items of a list become records of their own, if there is a value that they can be known by.
    void AddItems(Scope& parent, std::size_t list, std::size_t end) {
        const SourceSurvey& source = SourceAt(parent.source);
        const std::size_t element = list + 1;
        const std::optional<std::size_t> key = FindItemKey(source, element, end);
        const std::optional<HistoryParts> history =
            CanHaveHistory(parent) ? FindHistory(source, element, end) : std::nullopt;
        const std::vector<std::size_t> rest =
            history ? UnreadByHistory(source, element, end, *history) : std::vector<std::size_t>();
        const bool isHistoryOnly = history && (!key || rest.empty());
        if (history) {
            AddHistory(parent, element, *history, !isHistoryOnly);
        }
        if (isHistoryOnly) {
            for (const std::size_t unread : rest) {
                CanBeNamed(source, source.addresses[unread])
                    ? Ignore(parent, unread, "entries of history hold no such values")
                    : NoteUnnamed(parent, unread);
            }
            return;
        }
        if (!key) {
            Ignore(parent, list, "a list of objects without a value that each could be known by");
            return;
        }
        const std::string name =
            m_draft.types[parent.type].name + '_' + LastName(source.addresses[list]);
        const std::size_t row = RowTypeOf(parent.source);
        Scope scope{AddType(m_work, parent.source, name), parent.source,
                    source.addresses[element].steps.size(), key};
        TypeOf(scope).each = AddressRef{parent.source, element};
        TypeOf(scope).notes.push_back(
            {history
                 ? fmt::format("records of their own for what the history of {} cannot hold, such "
                               "as {}. Where that is not needed, take this step out, and name "
                               "what it reads under ignore",
                               m_draft.types[row].name,
                               AddressText(source, source.addresses[rest.front()]))
                 : fmt::format("records of their own. Where they are the history, or the "
                               "attachments, of {0}, a step history: {0}, or attachments:, "
                               "makes that of them",
                               m_draft.types[row].name),
             true});
        AddField(scope, *key);
        AddParent(scope, row);
        AddFields(scope, element + 1, end);
    }

    bool CanHaveHistory(const Scope& row) const {
        const SourceSurvey& source = SourceAt(row.source);
        const bool isKnown = !row.key || IsKey(source, source.addresses[*row.key]);
        return row.depth == 0 && isKnown && CanFindHistory(m_draft.types[row.type].Key()->name);
    }

    void AddHistory(Scope& row, std::size_t element, const HistoryParts& parts,
                    bool areRecordsToo) {
        const SourceSurvey& source = SourceAt(row.source);
        DraftType& type = TypeOf(row);
        const bool hasField =
            std::any_of(type.fields.begin(), type.fields.end(),
                        [](const DraftField& field) { return field.kind == "history"; });
        if (!hasField) {
            DraftField field;
            field.name = row.names.Take(LastName(source.addresses[element]));
            field.kind = "history";
            type.fields.push_back(std::move(field));
        }
        DraftStep step;
        step.type = row.type;
        step.each = {row.source, element};
        step.notes.push_back(
            {fmt::format("the items of {} name a time and somebody, so each is an entry of the "
                         "history. Are they?",
                         AddressText(source, source.addresses[element])),
             true});
        DraftField key;
        ReferToRow(row.source, row.type, key);
        step.values.emplace_back(type.Key()->name, key.pattern.empty()
                                                       ? key.address
                                                       : fmt::format("{{text: {}}}", key.pattern));
        AddHistoryValues(source, element, parts, areRecordsToo, step);
        m_draft.needsZone |= source.addresses[parts.when].dates.LacksZone();
        m_draft.history.push_back(std::move(step));
    }

    std::size_t RowTypeOf(std::size_t source) const {
        const auto found = std::find_if(
            m_draft.types.begin(), m_draft.types.end(),
            [&](const DraftType& type) { return type.source == source && !type.each; });
        return static_cast<std::size_t>(found - m_draft.types.begin());
    }

    // Sets where an item finds the key of its row.
    void ReferToRow(std::size_t place, std::size_t row, DraftField& field) const {
        const SourceSurvey& source = SourceAt(place);
        const auto key = m_work.addresses.find({row, 0});
        if (key == m_work.addresses.end()) {
            field.pattern = PairPattern(source, source.keyPairs.front(), "/");
            return;
        }
        AddressSurvey fromRow;
        fromRow.steps = source.addresses[key->second.address].steps;
        field.address = YamlText("/" + AddressText(source, fromRow));
    }

    void AddParent(Scope& scope, std::size_t row) {
        const DraftField* const key = m_draft.types[row].Key();
        DraftField field;
        field.name = scope.names.Take(m_draft.types[row].name);
        field.kind = "reference";
        field.reference = DraftReference{row, key->name, false, false};
        ReferToRow(scope.source, row, field);
        TypeOf(scope).fields.push_back(std::move(field));
    }

    DraftWork& m_work;
    Draft& m_draft;
    std::set<std::string> m_prefixes;
    std::optional<AddressRef> m_state;
};

}  // namespace

void DraftRecords(DraftWork& work) {
    RecordDrafter drafter(work);
    for (std::size_t source = 0; source < work.survey.sources.size(); ++source) {
        drafter.AddRows(source);
    }
}

}  // namespace tool
