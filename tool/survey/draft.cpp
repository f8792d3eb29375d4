#include "tool/survey/draft.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "tool/survey/draft_names.h"
#include "tool/survey/draft_order.h"
#include "tool/survey/draft_rules.h"
#include "tool/survey/survey_words.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

constexpr std::size_t kLongestPrefix = 20;

class DraftMaker {
  public:
    explicit DraftMaker(const Survey& survey)
        : m_survey(survey), m_typeNames(DraftNames::kTypeLimit) {}

    Draft Make() {
        DraftNames sourceNames(DraftNames::kTypeLimit);
        for (std::size_t source = 0; source < m_survey.sources.size(); ++source) {
            m_draft.sources.push_back({sourceNames.Take(SourceAt(source).group.name), {}, {}});
            AddRows(source);
        }
        for (std::size_t type = 0; type < m_draft.types.size(); ++type) {
            for (std::size_t field = 0; field < m_draft.types[type].fields.size(); ++field) {
                Refer(type, field);
            }
        }
        SortTypes(m_draft);
        return std::move(m_draft);
    }

  private:
    using Place = std::pair<std::size_t, std::size_t>;  // of a type and its field

    // Where fields of a record stand: in a row, or in an item of a list in it.
    struct Scope {
        std::size_t type;
        std::size_t source;
        std::size_t depth;  // steps from the row to the item
        std::optional<std::size_t> key;
        DraftNames names{DraftNames::kFieldLimit};
    };

    const SourceSurvey& SourceAt(std::size_t source) const { return m_survey.sources[source]; }

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
        const std::optional<std::size_t> key = FindKey(source);
        if (!key) {
            draft.notes.push_back({"no row has a value that a record could be known by", true});
            return;
        }
        Scope scope{AddType(place, source.group.name), place, 0, key};
        DraftType& type = TypeOf(scope);
        if (!IsKey(source, source.addresses[*key])) {
            type.notes.push_back(
                {fmt::format("no {0} tells all rows apart; rows without a value of {1}, or with "
                             "one that came before, are rejected. Name another key, put one "
                             "together (text: \"{{a}}-{{b}}\"), or say what becomes of rows that "
                             "repeat it (same_key: first, or merge)",
                             source.IsCsv() ? "column" : "address",
                             AddressText(source, source.addresses[*key])),
                 true});
        }
        FindStates(scope);
        AddField(scope, *key);
        AddFields(scope, 0, source.addresses.size());
    }

    // The address whose values tell rows apart best.
    static std::optional<std::size_t> FindKey(const SourceSurvey& source) {
        std::optional<std::size_t> best;
        const auto isBetter = [&](const AddressSurvey& a, const AddressSurvey& b) {
            const bool isKey = IsKey(source, a) && CanBeKey(a);
            const bool isOther = IsKey(source, b) && CanBeKey(b);
            if (isKey != isOther || isKey) {
                return isKey && (!isOther || KeyRank(a) < KeyRank(b));
            }
            const std::size_t distinct = a.distinct.value_or(ValueCounts::kLimit);
            return distinct > b.distinct.value_or(ValueCounts::kLimit);
        };
        for (std::size_t i = 0; i < source.addresses.size(); ++i) {
            const AddressSurvey& address = source.addresses[i];
            if (address.Values() == 0 || !address.IsScalarOnly() || address.IsInList() ||
                address.severalLines > 0 || address.longest > kLongestKeyText) {
                continue;
            }
            if (!best || isBetter(address, source.addresses[*best])) {
                best = i;
            }
        }
        return best;
    }

    std::size_t AddType(std::size_t source, std::string_view name) {
        DraftType type;
        type.name = m_typeNames.Take(name);
        type.source = source;
        m_draft.types.push_back(std::move(type));
        return m_draft.types.size() - 1;
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
                m_draft.sources[scope.source].notes.push_back(
                    {fmt::format("{} cannot be named in a map, since a name in it is empty",
                                 AddressText(source, address)),
                     true});
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

    static bool CanBeNamed(const SourceSurvey& source, const AddressSurvey& address) {
        return source.IsCsv() ||
               std::find(address.steps.begin(), address.steps.end(), "") == address.steps.end();
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
        m_addresses[{scope.type, TypeOf(scope).fields.size()}] = ref;
        if (scope.depth == 0) {
            m_fields[{ref.source, ref.address}] = {scope.type, TypeOf(scope).fields.size()};
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
    void AddItems(const Scope& parent, std::size_t list, std::size_t end) {
        const SourceSurvey& source = SourceAt(parent.source);
        const std::size_t element = list + 1;
        std::optional<std::size_t> key;
        for (std::size_t i = element + 1; i < end; ++i) {
            const AddressSurvey& address = source.addresses[i];
            const auto depth = static_cast<std::ptrdiff_t>(source.addresses[element].steps.size());
            const bool isDirect =
                std::find(address.isElement.begin() + depth, address.isElement.end(), true) ==
                address.isElement.end();
            if (isDirect && CanBeKey(address) && CanBeNamed(source, address) &&
                address.Values() == source.addresses[element].objects &&
                (!key || KeyRank(address) < KeyRank(source.addresses[*key]))) {
                key = i;
            }
        }
        if (!key) {
            Ignore(parent, list, "a list of objects without a value that each could be known by");
            return;
        }
        const std::string name =
            m_draft.types[parent.type].name + '_' + LastName(source.addresses[list]);
        const std::size_t row = RowTypeOf(parent.source);
        Scope scope{AddType(parent.source, name), parent.source,
                    source.addresses[element].steps.size(), key};
        TypeOf(scope).each = AddressRef{parent.source, element};
        TypeOf(scope).notes.push_back(
            {fmt::format("records of their own. Where they are the history, or the attachments, of "
                         "{}, a step history: {}, or attachments:, makes that of them",
                         m_draft.types[row].name, m_draft.types[row].name),
             true});
        AddField(scope, *key);
        AddParent(scope, row);
        AddFields(scope, element + 1, end);
    }

    std::size_t RowTypeOf(std::size_t source) const {
        const auto found = std::find_if(
            m_draft.types.begin(), m_draft.types.end(),
            [&](const DraftType& type) { return type.source == source && !type.each; });
        return static_cast<std::size_t>(found - m_draft.types.begin());
    }

    void AddParent(Scope& scope, std::size_t row) {
        const DraftField* const key = m_draft.types[row].Key();
        DraftField field;
        field.name = scope.names.Take(m_draft.types[row].name);
        field.kind = "reference";
        field.reference = DraftReference{row, key->name, false, false};
        const SourceSurvey& source = SourceAt(scope.source);
        const AddressRef ref = m_addresses.at({row, 0});
        AddressSurvey fromRow;
        fromRow.steps = source.addresses[ref.address].steps;
        field.address = YamlText("/" + AddressText(source, fromRow));
        TypeOf(scope).fields.push_back(std::move(field));
    }

    // Makes a field a reference where all of its values stand elsewhere, and says what else there
    // is to know of it.
    void Refer(std::size_t type, std::size_t place) {
        const auto known = m_addresses.find({type, place});
        if (known == m_addresses.end()) {
            return;
        }
        const AddressRef from = known->second;
        const bool mayRefer = !Field(type, place).isKey && !Field(type, place).isState &&
                              !m_pinned.contains({type, place});
        const std::optional<Place> target = mayRefer ? FindTarget(from) : std::nullopt;
        if (target) {
            SetReference(type, place, *target);
        } else if (Field(type, place).isList) {
            MakeListRecords(type, place, from);
        }
        AddNotes(Field(type, place), m_survey, from);
        m_draft.needsZone |=
            Field(type, place).kind == "datetime" && m_survey.At(from).dates.LacksZone();
    }

    DraftField& Field(std::size_t type, std::size_t place) {
        return m_draft.types[type].fields[place];
    }

    std::optional<Place> FindTarget(AddressRef from) {
        std::optional<Place> best;
        for (const ValuesElsewhere& elsewhere : m_survey.elsewhere) {
            const auto field = m_fields.find({elsewhere.in.source, elsewhere.in.address});
            if (!(elsewhere.from == from) || !elsewhere.AreAll() || field == m_fields.end() ||
                Field(field->second.first, field->second.second).reference ||
                !IsPlausible(elsewhere)) {
                continue;
            }
            const Place place = field->second;
            if (!best || (Field(place.first, place.second).isKey &&
                          !Field(best->first, best->second).isKey)) {
                best = place;
            }
        }
        return best;
    }

    // Small numbers stand among other numbers by chance, so names have to agree as well.
    bool IsPlausible(const ValuesElsewhere& elsewhere) const {
        if (!AreWholeNumbers(m_survey.At(elsewhere.from))) {
            return true;
        }
        const std::string from =
            NameFor(LastName(m_survey.At(elsewhere.from)), DraftNames::kFieldLimit);
        std::string in = NameFor(SourceAt(elsewhere.in.source).group.name, DraftNames::kFieldLimit);
        if (in.size() > 2 && in.ends_with('s')) {
            in.pop_back();
        }
        return from.find(in) != from.npos;
    }

    void SetReference(std::size_t type, std::size_t place, Place target) {
        DraftField& to = Field(target.first, target.second);
        m_pinned.insert(target);
        if (!to.isKey) {
            to.isUnique = true;
            to.kind = "text";
            to.date.reset();
            to.suggestion.clear();
        }
        DraftField& field = Field(type, place);
        field.kind = field.isList ? "reference_list" : "reference";
        field.reference = DraftReference{target.first, to.name, field.isList, false};
        field.date.reset();
        field.choices.clear();
        field.suggestion.clear();
    }

    // The values of a list become records themselves.
    void MakeListRecords(std::size_t type, std::size_t place, AddressRef from) {
        const AddressSurvey& address = m_survey.At(from);
        if (address.severalLines > 0 || address.longest > kLongestKeyText) {
            Field(type, place).kind = "multiline";
            Field(type, place).join = "\n";
            Field(type, place)
                .notes.push_back(
                    {"the values of a list, joined by line ends: is that what they are?", true});
            return;
        }
        const std::size_t made =
            AddType(from.source, m_draft.types[type].name + '_' + Field(type, place).name);
        DraftType& values = m_draft.types[made];
        values.each = from;
        values.isRepeated = true;
        DraftField name;
        name.name = "name";
        name.isKey = true;
        name.address = ".";
        values.fields.push_back(std::move(name));
        SetReference(type, place, {made, 0});
    }

    const Survey& m_survey;
    Draft m_draft;
    DraftNames m_typeNames;
    std::set<std::string> m_prefixes;
    std::optional<AddressRef> m_state;
    std::map<Place, AddressRef> m_addresses;                        // where fields come from
    std::map<std::pair<std::size_t, std::size_t>, Place> m_fields;  // of addresses, in rows
    std::set<Place> m_pinned;                                       // fields that others refer to
};

}  // namespace

const DraftField* DraftType::Key() const {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [](const DraftField& field) { return field.isKey; });
    return found == fields.end() ? nullptr : &*found;
}

Draft MakeDraft(const Survey& survey) {
    return DraftMaker(survey).Make();
}

}  // namespace tool
