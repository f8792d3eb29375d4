#include "recorddb/editing/value_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "platform/foundation/utf.h"
#include "platform/messages/message_ids.h"
#include "recorddb/editing/reference_refusal.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/model/stored_values.h"
#include "recorddb/value_text.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;

PaMessage Refuse(int id, const RecordType& type, const Field& field, std::string_view value) {
    return FieldMessage(id, type, field, {{u"_value_", value}});
}

PaMessage CheckLength(const RecordType& type, const Field& field, const std::string& text) {
    // A text has at most as many characters as bytes, so most need not be counted.
    if (field.maxLength == 0 || static_cast<std::int64_t>(text.size()) <= field.maxLength) {
        return {};
    }
    const std::int64_t length = CharacterCount(text);
    if (length <= field.maxLength) {
        return {};
    }
    return FieldMessage(message_id::kValueTooLong, type, field,
                        {{u"_value_", text},
                         {u"_length_", std::to_string(length)},
                         {u"_limit_", std::to_string(field.maxLength)}});
}

PaMessage CheckChoice(const RecordType& type, const Field& field, const std::string& text) {
    const auto& choices = field.choices;
    if (std::find(choices.begin(), choices.end(), text) != choices.end()) {
        return {};
    }
    return FieldMessage(
        message_id::kValueNotChoice, type, field,
        {{u"_value_", text}, {u"_choices_", fmt::format("{}", fmt::join(choices, ", "))}});
}

PaMessage CheckState(const RecordType& type, const std::string& text) {
    if (type.IsState(text)) {
        return {};
    }
    return ErrorMessage(message_id::kNoState,
                        {{u"_datatype_", type.name},
                         {u"_value_", text},
                         {u"_states_", fmt::format("{}", fmt::join(type.states, ", "))}});
}

// Also refuses NUL, at which a text would end for everyone who reads the database with C.
PaMessage ToText(const RecordType& type, const Field& field, std::u16string_view given,
                 std::string& text) {
    if (Utf16ToUtf8(given, text).has_value() || text.find('\0') != std::string::npos) {
        return Refuse(message_id::kValueNotText, type, field, Utf16ToUtf8Lossy(given));
    }
    return {};
}

}  // namespace

PaMessage ValueRules::Read(const RecordType& type, const Field& field, std::u16string_view given,
                           FieldValue& value) {
    if (given.empty()) {
        value = std::monostate();
        return {};
    }
    std::string text;
    PaMessage problem = ToText(type, field, given, text);
    if (problem.ID() != 0) {
        return problem;
    }
    switch (field.kind) {
        case FieldKind::Integer: {
            const auto number = IntegerOf(text);
            if (!number) {
                return Refuse(message_id::kValueNotInteger, type, field, text);
            }
            value = *number;
            return {};
        }
        case FieldKind::DateTime: {
            auto time = DateTimeOf(text);
            if (!time) {
                return Refuse(message_id::kValueNotDateTime, type, field, text);
            }
            value = *std::move(time);
            return {};
        }
        case FieldKind::Reference: {
            std::int64_t target = 0;
            problem = FindTarget(type, field, text, target);
            if (problem.ID() == 0) {
                value = target;
            }
            return problem;
        }
        case FieldKind::Choice:
            problem = CheckChoice(type, field, text);
            break;
        case FieldKind::State:
            problem = CheckState(type, text);
            break;
        default:
            problem = CheckLength(type, field, text);
            break;
    }
    if (problem.ID() == 0) {
        value = std::move(text);
    }
    return problem;
}

PaMessage ValueRules::ReadItem(const RecordType& type, const Field& field,
                               std::u16string_view given, std::int64_t& target) {
    std::string text;
    PaMessage problem = ToText(type, field, given, text);
    return problem.ID() != 0 ? problem : FindTarget(type, field, text, target);
}

PaMessage ValueRules::FindTarget(const RecordType& type, const Field& field, const std::string& key,
                                 std::int64_t& target) {
    const RecordType& targetType = m_schema.Type(field.target);
    const KeyMatch match = m_keys.Find(targetType, key);
    if (match.dbid == 0) {
        return ReferenceRefusal(type, field, targetType, key, match, m_keys.Limits());
    }
    target = match.dbid;
    return {};
}

}  // namespace recorddb
