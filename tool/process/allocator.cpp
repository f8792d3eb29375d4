// The operators new and delete of the program, over mimalloc. Those of the library as it is
// packaged end the process when there is no memory, since it is compiled as C; these throw, as C++
// has it.

#include <mimalloc.h>

#include <cstddef>
#include <new>

namespace {

// Asks `allocate` for memory until it has some or the handler for its want gives up.
template <typename Allocate>
void* AllocateOrThrow(Allocate allocate) {
    while (true) {
        if (void* const memory = allocate()) {
            return memory;
        }
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) {
            throw std::bad_alloc();
        }
        handler();
    }
}

template <typename Allocate>
void* AllocateOrNull(Allocate allocate) noexcept {
    try {
        return AllocateOrThrow(allocate);
    } catch (...) {
        return nullptr;
    }
}

auto Plain(std::size_t size) {
    return [size] { return mi_malloc(size); };
}

auto Aligned(std::size_t size, std::align_val_t alignment) {
    return
        [size, alignment] { return mi_malloc_aligned(size, static_cast<std::size_t>(alignment)); };
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(Plain(size));
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(Plain(size));
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNull(Plain(size));
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNull(Plain(size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(Aligned(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(Aligned(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment,
                   const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNull(Aligned(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment,
                     const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNull(Aligned(size, alignment));
}

// mi_free takes memory of any alignment.
void operator delete(void* memory) noexcept {
    mi_free(memory);
}
void operator delete[](void* memory) noexcept {
    mi_free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    mi_free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    mi_free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    mi_free(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
    mi_free(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
    mi_free(memory);
}
void operator delete[](void* memory, std::align_val_t /*alignment*/) noexcept {
    mi_free(memory);
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    mi_free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/,
                       std::align_val_t /*alignment*/) noexcept {
    mi_free(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/,
                     const std::nothrow_t& /*tag*/) noexcept {
    mi_free(memory);
}
void operator delete[](void* memory, std::align_val_t /*alignment*/,
                       const std::nothrow_t& /*tag*/) noexcept {
    mi_free(memory);
}
