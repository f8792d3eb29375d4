#ifndef TOOL_VERIFY_SINKS_DIFFERENCE_H
#define TOOL_VERIFY_SINKS_DIFFERENCE_H

#include <cstdint>
#include <string>

namespace tool {

// Something that a source says and the database does not, or the other way round. Texts in UTF-8,
// values whole.
struct Difference {
    std::string source;        // name of the source that says it; empty: none speaks of the record
    std::uint64_t record = 0;  // number of the record in the source, from 1; 0: no record's
    std::string unit = "record";  // what is counted there: a "row", say
    std::uint64_t line = 0;       // line in the source, from 1
    std::string sourceId;         // the record's original id, empty when it has none
    std::string type;             // name of the record type, empty when it is not known
    std::string id;               // what people call the record in the database, empty without one
    std::string field;            // field and part of it, empty when it is the record as a whole
    std::string sourceValue;      // empty: nothing
    std::string databaseValue;    // empty: nothing
    // What is wrong, for people, where the two values alone do not say it; else empty.
    std::string problem;
};

}  // namespace tool

#endif
