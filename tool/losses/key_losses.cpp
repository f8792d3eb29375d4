#include "tool/losses/key_losses.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

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

// The field of `target` that the references in a record's field `name` are compared with; null when
// it is not one field's value.
const Field* ComparedField(const std::string& name, const ImportConfiguration& configuration,
                           const RecordType& target) {
    if (!target.HasStates() && target.key.size() != 1) {
        return nullptr;
    }
    const auto mapped = configuration.Mapping().find(name);
    if (mapped != configuration.Mapping().end() && !mapped->second.empty()) {
        return target.FindField(mapped->second);
    }
    return target.HasStates() ? nullptr : &target.fields[target.key.front()];
}

}  // namespace

std::string KeyLosses::OfKey(const std::string& name, const std::string& value,
                             const ImportConfiguration& configuration,
                             const RecordType& type) const {
    const Field* const field = type.FindField(name);
    if (field == nullptr ||
        (field->kind != FieldKind::Text && field->kind != FieldKind::Multiline)) {
        return {};
    }
    const auto part = std::find_if(type.key.begin(), type.key.end(),
                                   [&](std::size_t index) { return &type.fields[index] == field; });
    const bool isPart = part != type.key.end();
    const bool isAlone =
        EqualNoCase(name, configuration.OriginalId()) || (isPart && type.key.size() == 1);
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
    const RecordType& target = m_schema.Type(field->target);
    const Field* const compared = ComparedField(name, configuration, target);
    if (compared == nullptr) {
        return {};
    }
    const auto describe = [&](const std::string& written, std::string_view taken) {
        return fmt::format(
            "{} is taken for {}, and there is a {} whose {} is {}, which no "
            "reference can name",
            Quoted(written), taken, target.name, compared->name, Quoted(written));
    };
    const auto isOther = [&](const std::string& written) {
        const std::string_view taken = Trimmed(written);
        return taken != written && !taken.empty() && m_exists(target, *compared, written);
    };
    if (isOther(value)) {
        return describe(value, Quoted(Trimmed(value)));
    }
    const std::string whole(Trimmed(value));
    if (field->kind == FieldKind::Reference && IsBlankWord(whole) &&
        m_exists(target, *compared, whole)) {
        return describe(whole, "no value");
    }
    if (field->kind != FieldKind::ReferenceList || value.find(',') == std::string::npos) {
        return {};
    }
    if (m_exists(target, *compared, whole)) {
        return describe(whole, "several items");
    }
    for (std::size_t begin = 0; begin <= value.size();) {
        const std::size_t end = std::min(value.find(',', begin), value.size());
        const std::string item = value.substr(begin, end - begin);
        if (isOther(item)) {
            return describe(item, Quoted(Trimmed(item)));
        }
        begin = end + 1;
    }
    return {};
}

}  // namespace tool
