#include "filter/counted_allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

int g_allocations = 0;
int g_frees = 0;

void Free(void* block) {
    if (block != nullptr) g_frees += 1;
    std::free(block);
}

}  // namespace

int AllocationsSoFar() {
    return g_allocations;
}

int FreesSoFar() {
    return g_frees;
}

// The array and nothrow forms of the C++ library call this one.
void* operator new(std::size_t size) {
    g_allocations += 1;
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) std::abort();
    return block;
}

void operator delete(void* block) noexcept {
    Free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
