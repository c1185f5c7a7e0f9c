#include "filter/counted_allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

int g_allocations = 0;

}  // namespace

int AllocationsSoFar() {
    return g_allocations;
}

// The array and nothrow forms of the C++ library call this one.
void* operator new(std::size_t size) {
    g_allocations += 1;
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) std::abort();
    return block;
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
