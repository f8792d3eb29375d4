#include "tool/verify/records/reference_resolver.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tool {

using recorddb::schema::Field;
using recorddb::schema::RecordType;

namespace {

bool KeyHasDbId(const RecordType& type) {
    return std::any_of(type.key.begin(), type.key.end(), [&type](std::size_t part) {
        return type.fields[part].kind == recorddb::schema::FieldKind::DbId;
    });
}

}  // namespace

ExpectedTarget ReferenceResolver::FindBy(const RecordType& type, const std::string& fieldName,
                                         const std::string& value) {
    ExpectedTarget target{.dbid = 0, .text = value, .problem = {}};
    const Field* const field = type.FindField(fieldName);
    if (field == nullptr) {
        target.problem = fmt::format("{} has no field {} to find it by", type.name, fieldName);
        return target;
    }
    const auto dbids = m_lookup.Find(type, *field, value);
    if (dbids.empty()) {
        target.problem = fmt::format("no {} has the {} \"{}\"", type.name, field->name, value);
    } else if (dbids.size() > 1) {
        target.problem =
            fmt::format("more than one {} has the {} \"{}\"", type.name, field->name, value);
    } else {
        target.dbid = dbids.front();
    }
    return target;
}

ExpectedTarget ReferenceResolver::FindKey(const RecordType& type, const std::string& key) {
    const recorddb::KeyMatch match = m_lookup.FindKey(type, key);
    ExpectedTarget target{.dbid = match.dbid, .text = key, .problem = {}};
    if (match.undecided) {
        target.problem = fmt::format(
            "\"{}\" can be read as the key of a {} in more ways than are tried "
            "(--max-reference-tries)",
            key, type.name);
    } else if (match.dbid == 0) {
        target.problem = match.several
                             ? fmt::format("\"{}\" is the key of more than one {}", key, type.name)
                             : fmt::format("there is no {} \"{}\"", type.name, key);
    }
    return target;
}

// A key of several parts is only mapped where one of them is the record's number: the first part of
// the value stands for that.
ExpectedTarget ReferenceResolver::FindByNumberedKey(const RecordType& type,
                                                    const std::string& fieldName,
                                                    const std::string& value) {
    const std::size_t end = value.find(' ');
    ExpectedTarget first = FindBy(type, fieldName, value.substr(0, end));
    const std::string rest = end == std::string::npos ? "" : value.substr(end);
    ExpectedTarget target =
        first.dbid == 0 ? std::move(first) : FindKey(type, std::to_string(first.dbid) + rest);
    target.text = value;
    return target;
}

ExpectedTarget ReferenceResolver::Resolve(const Field& field, const std::string& packetName,
                                          const std::string& value,
                                          const ImportConfiguration& configuration) {
    const RecordType& type = m_lookup.GetSchema().Type(field.target);
    const auto mapped = configuration.Mapping().find(packetName);
    if (mapped == configuration.Mapping().end()) {
        return FindKey(type, value);
    }
    if (type.HasStates() || type.key.size() == 1) {
        return FindBy(type, mapped->second, value);
    }
    return KeyHasDbId(type) ? FindByNumberedKey(type, mapped->second, value) : FindKey(type, value);
}

ExpectedTarget ReferenceResolver::ResolveOriginal(const RecordType& type, const std::string& value,
                                                  const ImportConfiguration& configuration) {
    return FindBy(type, configuration.OriginalId(), value);
}

}  // namespace tool
