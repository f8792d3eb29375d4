#ifndef ZTIMPORTER_VERID_H
#define ZTIMPORTER_VERID_H

// Version hooks of the library, kept for callers that look them up by name. They take nothing, do
// nothing and return nothing.
extern "C" {
__attribute__((visibility("default"))) void libztimporter_print_verid();
__attribute__((visibility("default"))) void libztimporter_sprintf_verid();
}

#endif
