#ifndef RECORDDB_EXPORT_H
#define RECORDDB_EXPORT_H

// Marks what the shared library shows to programs that link it; everything else stays inside.
#define RECORDDB_API __attribute__((visibility("default")))

#endif
