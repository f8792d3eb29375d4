#ifndef RECORDDB_LAYOUT_H
#define RECORDDB_LAYOUT_H

namespace recorddb {

// How a database keeps its tables.
enum class Layout {
    Plain,   // the engine keeps unique keys and all references
    Sharded  // tables can stand spread over machines: see recorddb/store/tables/table_layout.h
};

}  // namespace recorddb

#endif
