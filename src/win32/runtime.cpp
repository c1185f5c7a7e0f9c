// Replacements for functions of the C++ runtime. The runtime's own versions throw and would link the
// exception machinery, a demangler, a second printf and a thread library into the program file. These never
// throw: when an allocation fails, the nothrow forms return null and the others end the process.
//
// Linked into the program only; test programs use the compiler's runtime. If the program uses another error
// function of the standard library, the linker adds that runtime and reports the functions below as duplicate
// definitions: define the missing function here.
#include "win32/abnormal_end.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include <malloc.h>

namespace {

void* Allocate(std::size_t bytes) noexcept {
    return std::malloc(bytes != 0 ? bytes : 1);
}

void* AllocateAligned(std::size_t bytes, std::align_val_t alignment) noexcept {
    return __mingw_aligned_malloc(bytes != 0 ? bytes : 1, static_cast<std::size_t>(alignment));
}

void* BlockOrEndProcess(void* block) noexcept {
    if (block == nullptr) EndProcessAbnormally();
    return block;
}

}  // namespace

void* operator new(std::size_t bytes) {
    return BlockOrEndProcess(Allocate(bytes));
}
void* operator new[](std::size_t bytes) {
    return BlockOrEndProcess(Allocate(bytes));
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return Allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return Allocate(bytes);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return BlockOrEndProcess(AllocateAligned(bytes, alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    return BlockOrEndProcess(AllocateAligned(bytes, alignment));
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return AllocateAligned(bytes, alignment);
}
void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return AllocateAligned(bytes, alignment);
}

void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    __mingw_aligned_free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    __mingw_aligned_free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    __mingw_aligned_free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    __mingw_aligned_free(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    __mingw_aligned_free(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    __mingw_aligned_free(block);
}

// libstdc++ calls these where a container would throw; it declares them in <bits/functexcept.h>.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming)
namespace std {

void __throw_bad_alloc() {
    EndProcessAbnormally();
}
void __throw_bad_array_new_length() {
    EndProcessAbnormally();
}
void __throw_length_error(const char*) {
    EndProcessAbnormally();
}
void __throw_logic_error(const char*) {
    EndProcessAbnormally();
}
void __throw_out_of_range(const char*) {
    EndProcessAbnormally();
}
void __throw_out_of_range_fmt(const char*, ...) {
    EndProcessAbnormally();
}

}  // namespace std

// Called through the vtable entry of a pure virtual function.
extern "C" [[noreturn]] void __cxa_pure_virtual();
void __cxa_pure_virtual() {
    EndProcessAbnormally();
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming)
