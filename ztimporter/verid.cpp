#include "ztimporter/verid.h"

void libztimporter_print_verid() {}

void libztimporter_sprintf_verid() {}
