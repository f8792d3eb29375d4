#include "tool/survey/draft_references.h"

#include <algorithm>
#include <set>
#include <utility>

#include "tool/survey/draft_names.h"
#include "tool/survey/draft_rules.h"
#include "tool/survey/key_rules.h"

namespace tool {

namespace {

class ReferenceDrafter {
  public:
    explicit ReferenceDrafter(DraftWork& work) : m_work(work), m_survey(work.survey) {}

    // Makes a field a reference where all of its values stand elsewhere, and says what else there
    // is to know of it.
    void Refer(std::size_t type, std::size_t place) {
        const auto known = m_work.addresses.find({type, place});
        if (known == m_work.addresses.end()) {
            return;
        }
        const AddressRef from = known->second;
        const bool mayRefer = !Field(type, place).isKey && !Field(type, place).isState &&
                              !m_pinned.contains({type, place});
        const std::optional<DraftPlace> target = mayRefer ? FindTarget(from) : std::nullopt;
        if (target) {
            SetReference(type, place, *target);
        } else if (Field(type, place).isList) {
            MakeListRecords(type, place, from);
        }
        AddNotes(Field(type, place), m_survey, from);
        m_work.draft.needsZone |=
            Field(type, place).kind == "datetime" && m_survey.At(from).dates.LacksZone();
    }

  private:
    DraftField& Field(std::size_t type, std::size_t place) {
        return m_work.draft.types[type].fields[place];
    }

    std::optional<DraftPlace> FindTarget(AddressRef from) {
        std::optional<DraftPlace> best;
        for (const ValuesElsewhere& elsewhere : m_survey.elsewhere) {
            const auto field = m_work.fields.find({elsewhere.in.source, elsewhere.in.address});
            if (!(elsewhere.from == from) || !elsewhere.AreAll() || field == m_work.fields.end() ||
                Field(field->second.first, field->second.second).reference ||
                !IsPlausible(elsewhere)) {
                continue;
            }
            const DraftPlace place = field->second;
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
        std::string in =
            NameFor(m_survey.sources[elsewhere.in.source].group.name, DraftNames::kFieldLimit);
        if (in.size() > 2 && in.ends_with('s')) {
            in.pop_back();
        }
        return from.find(in) != from.npos;
    }

    void SetReference(std::size_t type, std::size_t place, DraftPlace target) {
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
        const std::size_t made = AddType(
            m_work, from.source, m_work.draft.types[type].name + '_' + Field(type, place).name);
        DraftType& values = m_work.draft.types[made];
        values.each = from;
        values.isRepeated = true;
        DraftField name;
        name.name = "name";
        name.isKey = true;
        name.address = ".";
        values.fields.push_back(std::move(name));
        SetReference(type, place, {made, 0});
    }

    DraftWork& m_work;
    const Survey& m_survey;
    std::set<DraftPlace> m_pinned;  // fields that others refer to
};

}  // namespace

void DraftReferences(DraftWork& work) {
    ReferenceDrafter drafter(work);
    for (std::size_t type = 0; type < work.draft.types.size(); ++type) {
        for (std::size_t field = 0; field < work.draft.types[type].fields.size(); ++field) {
            drafter.Refer(type, field);
        }
    }
}

}  // namespace tool
