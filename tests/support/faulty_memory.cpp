// Memory that is counted and fails as planned, for a whole program: C++'s by its operators,
// SQLite's, expat's and ICU's by the means that they offer.

#include <expat.h>
#include <sqlite3.h>
#include <unicode/uclean.h>

#include <cstdlib>
#include <new>

#include "fault_points.h"

namespace {

bool Fails() {
    return faults::Meet(faults::Kind::Allocation).error != 0;
}

void* Allocate(std::size_t size) {
    return Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* Reallocate(void* block, std::size_t size) {
    return Fails() ? nullptr : std::realloc(block, size == 0 ? 1 : size);
}

// What operator new does without memory: the handler is asked for more, or throws.
void* AllocateOrThrow(std::size_t size) {
    while (true) {
        if (void* block = Allocate(size)) {
            return block;
        }
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) {
            throw std::bad_alloc();
        }
        handler();
    }
}

void* AllocateOrNothing(std::size_t size) noexcept {
    try {
        return AllocateOrThrow(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// SQLite's own means of allocation, counted.
sqlite3_mem_methods g_sqlite;

void* AllocateForSqlite(int size) {
    return Fails() ? nullptr : g_sqlite.xMalloc(size);
}

void* ReallocateForSqlite(void* block, int size) {
    return Fails() ? nullptr : g_sqlite.xRealloc(block, size);
}

void* AllocateForIcu(const void* /*context*/, std::size_t size) {
    return Allocate(size);
}

void* ReallocateForIcu(const void* /*context*/, void* block, std::size_t size) {
    return Reallocate(block, size);
}

void FreeForIcu(const void* /*context*/, void* block) {
    std::free(block);
}

// Before main, since each of them has to be told before its first use.
const bool kTold = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_sqlite);
    sqlite3_mem_methods counted = g_sqlite;
    counted.xMalloc = AllocateForSqlite;
    counted.xRealloc = ReallocateForSqlite;
    sqlite3_config(SQLITE_CONFIG_MALLOC, &counted);
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, AllocateForIcu, ReallocateForIcu, FreeForIcu, &status);
    return true;
}();

const XML_Memory_Handling_Suite kExpatMemory = {Allocate, Reallocate, std::free};

}  // namespace

extern "C" XML_Parser XML_ParserCreate(const XML_Char* encoding) {
    return XML_ParserCreate_MM(encoding, &kExpatMemory, nullptr);
}

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNothing(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNothing(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
