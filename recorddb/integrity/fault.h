#ifndef RECORDDB_INTEGRITY_FAULT_H
#define RECORDDB_INTEGRITY_FAULT_H

#include <functional>
#include <string>

namespace recorddb {

// Something in a database that breaks its own rules, which nothing that writes through this library
// leaves behind. Texts in UTF-8, but for values, which are as they are stored.
struct Fault {
    std::string type;     // a record type, or one of the database's own tables
    std::string id;       // the record as people call it; in own tables what tells the row
    std::string field;    // field and part of it; empty when it is the record or row as a whole
    std::string value;    // what stands there; empty: nothing, or not to be shown
    std::string problem;  // what is wrong, for people
};

using TakeFault = std::function<void(const Fault&)>;

}  // namespace recorddb

#endif
