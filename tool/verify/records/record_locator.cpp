#include "tool/verify/records/record_locator.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/packet/importer_text.h"

namespace tool {

using recorddb::schema::Field;
using recorddb::schema::RecordType;

namespace {

LocatedRecord Missing() {
    return {0, "missing from the database"};
}

LocatedRecord WithoutId() {
    return {0, "cannot be compared: it has no original id"};
}

}  // namespace

LocatedRecord RecordLocator::Locate(const KeptRecord& record,
                                    const ImportConfiguration& configuration,
                                    const RecordType& type) {
    return record.originalId.empty()
               ? LocateByKey(record.fields, type)
               : LocateById(record.originalId, configuration.OriginalId(), type);
}

LocatedRecord RecordLocator::LocateById(const std::string& id, const std::string& fieldName,
                                        const RecordType& type) {
    const Field* const field = type.FindField(fieldName);
    if (field == nullptr) {
        return {0, fmt::format("cannot be compared: {} has no field {} to find it by", type.name,
                               fieldName)};
    }
    const auto dbids = m_lookup.Find(type, *field, id);
    if (dbids.size() > 1) {
        return {
            0, fmt::format("cannot be compared: several records of the database have the {} \"{}\"",
                           field->name, id)};
    }
    return dbids.empty() ? Missing() : LocatedRecord{dbids.front(), {}};
}

LocatedRecord RecordLocator::LocateByKey(const std::vector<KeptField>& fields,
                                         const RecordType& type) {
    if (type.HasStates()) {
        return WithoutId();
    }
    std::string key;
    for (const std::size_t part : type.key) {
        const Field& field = type.fields[part];
        const auto found = std::find_if(fields.begin(), fields.end(), [&field](const auto& given) {
            return EqualNoCase(given.name, field.name);
        });
        if (found == fields.end()) {
            return WithoutId();
        }
        key += key.empty() ? "" : " ";
        key += found->keys.empty() ? found->value : found->keys.front();
    }
    const std::int64_t dbid = m_lookup.FindKey(type, key).dbid;
    return dbid == 0 ? Missing() : LocatedRecord{dbid, {}};
}

}  // namespace tool
