#include "tool/losses/key_losses.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "tool/guarded/blank_word.h"
#include "tool/losses/changed_text.h"
#include "tool/packet/importer_text.h"

namespace tool {

namespace {

using recorddb::schema::Field;
using recorddb::schema::FieldKind;
using recorddb::schema::RecordType;
using recorddb::schema::Schema;

bool IsReferredTo(const Schema& schema, const RecordType& type, FieldKind kind) {
    return std::any_of(schema.Types().begin(), schema.Types().end(), [&](const RecordType& other) {
        return std::any_of(other.fields.begin(), other.fields.end(), [&](const Field& field) {
            return field.kind == kind && field.target == type.id;
        });
    });
}

bool HasNumberInKey(const RecordType& type) {
    return std::any_of(type.key.begin(), type.key.end(), [&type](std::size_t part) {
        return type.fields[part].kind == FieldKind::DbId;
    });
}

// So many look-ups are made for the runs of one list: each is a question to the database.
constexpr std::size_t kMostLookUps = 50;

// Finds the records that references in one field are compared with.
class TargetSearch {
  public:
    // The mapping of the field by `name` is null when there is none.
    TargetSearch(const RecordType& target, const std::string* mapped,
                 const KeyLosses::Existing& existing)
        : m_target(target), m_existing(existing) {
        const bool isOneField = target.HasStates() || target.key.size() == 1;
        const bool isMapped = mapped != nullptr && !mapped->empty();
        if (isMapped && (isOneField || HasNumberInKey(target))) {
            m_field = target.FindField(*mapped);
            m_beginsWithField = m_field != nullptr && !isOneField;
        } else if (!target.HasStates()) {
            // A mapping leaves a key of several fields without a number as it is.
            m_byKey = true;
        }
    }

    // Display ids are no texts that a packet's rules could change.
    bool IsOfUse() const { return m_byKey || m_field != nullptr; }

    // Whether exactly this text is what such a record is known by.
    bool Has(const std::string& text) const {
        if (m_byKey) {
            return m_existing.withKey(m_target, text);
        }
        if (!m_beginsWithField) {
            return m_existing.withValue(m_target, *m_field, text) != 0;
        }
        const std::size_t word = std::min(text.find_first_not_of(' '), text.size());
        const std::size_t end = std::min(text.find(' ', word), text.size());
        const std::int64_t number = m_existing.withValue(m_target, *m_field, text.substr(0, end));
        return number != 0 &&
               m_existing.withKey(m_target, std::to_string(number) + text.substr(end));
    }

    // Why a reference that is written like this is taken for something else.
    std::string Describe(const std::string& written, std::string_view taken) const {
        const bool isField = m_field != nullptr && !m_beginsWithField;
        const std::string_view known = isField                    ? m_field->name
                                       : m_target.key.size() == 1 ? KeyName()
                                                                  : "key";
        return fmt::format(
            "{} is taken for {}, and there is a {} whose {} is {}, which no "
            "reference can name",
            Quoted(written), taken, m_target.name, known, Quoted(written));
    }

  private:
    std::string_view KeyName() const { return m_target.fields[m_target.key.front()].name; }

    const RecordType& m_target;
    const KeyLosses::Existing& m_existing;
    const Field* m_field = nullptr;
    bool m_beginsWithField = false;  // and goes on with the other parts of the key
    bool m_byKey = false;
};

// Whether the blanks around it are all that keeps what is written from meaning a record.
bool IsTakenForAnother(const TargetSearch& targets, const std::string& written) {
    const std::string_view taken = Trimmed(written);
    return taken != written && !taken.empty() && targets.Has(written);
}

// The places where the items of a list begin, and one behind its end, as if a comma stood there.
std::vector<std::size_t> BordersOf(const std::string& list) {
    std::vector<std::size_t> borders = {0};
    for (std::size_t comma = list.find(','); comma != std::string::npos;
         comma = list.find(',', comma + 1)) {
        borders.push_back(comma + 1);
    }
    borders.push_back(list.size() + 1);
    return borders;
}

// Finds several items of a list, one after the other, that are the name of a record together: tries
// the whole list, then short runs before longer ones.
class RunSearch {
  public:
    RunSearch(const TargetSearch& targets, const std::string& list,
              const std::vector<std::size_t>& borders)
        : m_targets(targets), m_list(list), m_borders(borders) {}

    std::optional<std::string> Find() {
        const std::size_t items = m_borders.size() - 1;
        if (items < 2) {
            return std::nullopt;
        }
        auto found = Try(0, items);
        for (std::size_t length = 2; length < items; ++length) {
            for (std::size_t first = 0; first + length <= items; ++first) {
                if (found || m_lookUps >= kMostLookUps) {
                    return found;
                }
                found = Try(first, length);
            }
        }
        return found;
    }

  private:
    std::optional<std::string> Try(std::size_t first, std::size_t length) {
        const std::string run =
            m_list.substr(m_borders[first], m_borders[first + length] - m_borders[first] - 1);
        std::string trimmed(Trimmed(run));
        if (Has(trimmed)) {
            return trimmed;
        }
        return trimmed != run && Has(run) ? std::optional(run) : std::nullopt;
    }

    bool Has(const std::string& run) {
        ++m_lookUps;
        return m_targets.Has(run);
    }

    const TargetSearch& m_targets;
    const std::string& m_list;
    const std::vector<std::size_t>& m_borders;
    std::size_t m_lookUps = 0;
};

}  // namespace

std::string KeyLosses::OfKey(const std::string& name, const std::string& value,
                             const ImportConfiguration& configuration,
                             const RecordType& type) const {
    const Field* const field = type.FindField(name);
    if (field == nullptr || (field->kind != FieldKind::Text && field->kind != FieldKind::Choice &&
                             field->kind != FieldKind::Multiline)) {
        return {};
    }
    const auto part = std::find_if(type.key.begin(), type.key.end(),
                                   [&](std::size_t index) { return &type.fields[index] == field; });
    const bool isPart = part != type.key.end();
    // A mapping can have records found by their original id, where that says which record it is.
    const bool isMapped = EqualNoCase(name, configuration.OriginalId()) &&
                          (type.HasStates() || type.key.size() == 1 || HasNumberInKey(type));
    const bool isAlone = isMapped || (isPart && type.key.size() == 1);
    const bool inList = IsReferredTo(m_schema, type, FieldKind::ReferenceList);
    if ((!isPart && !isAlone) || (!inList && !IsReferredTo(m_schema, type, FieldKind::Reference))) {
        return {};
    }
    // Inside a key of several fields, blanks are kept.
    const bool losesLeft = (isAlone || part == type.key.begin()) && TrimmedLeft(value) != value;
    const bool losesRight = (isAlone || part + 1 == type.key.end()) && TrimmedRight(value) != value;
    if (losesLeft || losesRight) {
        return fmt::format(
            "{} has blanks around it, and references are trimmed: none can name "
            "this {} by it",
            Quoted(value), type.name);
    }
    if (inList && value.find(',') != std::string::npos) {
        return fmt::format(
            "{} holds a comma, at which lists of references are split: none can "
            "name this {} by it",
            Quoted(value), type.name);
    }
    return {};
}

std::string KeyLosses::OfReference(const std::string& name, const std::string& value,
                                   const ImportConfiguration& configuration,
                                   const RecordType& type) const {
    const Field* const field = type.FindField(name);
    if (field == nullptr) {
        return {};
    }
    const auto mapped = configuration.Mapping().find(name);
    const TargetSearch targets(m_schema.Type(field->target),
                               mapped != configuration.Mapping().end() ? &mapped->second : nullptr,
                               m_existing);
    if (!targets.IsOfUse()) {
        return {};
    }
    if (IsTakenForAnother(targets, value)) {
        return targets.Describe(value, Quoted(Trimmed(value)));
    }
    if (field->kind == FieldKind::Reference) {
        const std::string whole(Trimmed(value));
        return IsBlankWord(whole) && targets.Has(whole) ? targets.Describe(whole, "no value")
                                                        : std::string();
    }
    const std::vector<std::size_t> borders = BordersOf(value);
    if (const auto run = RunSearch(targets, value, borders).Find()) {
        return targets.Describe(*run, "several items");
    }
    for (std::size_t item = 0; item + 1 < borders.size(); ++item) {
        const std::string written =
            value.substr(borders[item], borders[item + 1] - borders[item] - 1);
        if (IsTakenForAnother(targets, written)) {
            return targets.Describe(written, Quoted(Trimmed(written)));
        }
    }
    return {};
}

}  // namespace tool
