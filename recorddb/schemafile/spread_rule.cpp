#include "recorddb/schemafile/spread_rule.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

namespace recorddb::schema {

namespace {

void Spread(const YamlSource& source, ReadType& read, const std::string& reason) {
    if (read.spread == false) {
        source.Fail(read.spreadPlace,
                    fmt::format("record type '{}' has to be spread: {}; leave 'spread' out",
                                read.type.name, reason));
    }
    read.type.spread = true;
}

// The first reference of a type to one that is spread; null when there is none.
const PendingReference* ReferenceToSpread(const ReadType& read,
                                          const std::vector<ReadType>& types) {
    const auto found = std::find_if(
        read.references.begin(), read.references.end(), [&](const PendingReference& reference) {
            const std::int64_t target = read.type.fields[reference.field].target;
            return types[static_cast<std::size_t>(target - 1)].type.spread;
        });
    return found == read.references.end() ? nullptr : &*found;
}

}  // namespace

void DecideSpread(const YamlSource& source, std::vector<ReadType>& types) {
    for (ReadType& read : types) {
        if (read.type.HasStates()) {
            Spread(source, read, "it has states");
        } else if (read.spread == true) {
            read.type.spread = true;
        }
    }
    // Others may refer to a type that becomes spread, so this goes on until no type changes.
    for (bool hasChanged = true; hasChanged;) {
        hasChanged = false;
        for (ReadType& read : types) {
            const PendingReference* const reference =
                read.type.spread ? nullptr : ReferenceToSpread(read, types);
            if (reference != nullptr) {
                Spread(
                    source, read,
                    fmt::format("its field '{}' refers to the record type '{}', which is",
                                read.type.fields[reference->field].name, reference->target.text));
                hasChanged = true;
            }
        }
    }
}

}  // namespace recorddb::schema
