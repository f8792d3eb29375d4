#ifndef PLATFORM_FOUNDATION_OUT_OF_MEMORY_H
#define PLATFORM_FOUNDATION_OUT_OF_MEMORY_H

#include <new>

// Throws std::bad_alloc for a library in C that found no memory, as operator new does: the
// program's new-handler, when there is one, hears of it first.
[[noreturn]] inline void ThrowOutOfMemory() {
    if (const std::new_handler handler = std::get_new_handler()) {
        handler();
    }
    throw std::bad_alloc();
}

#endif
