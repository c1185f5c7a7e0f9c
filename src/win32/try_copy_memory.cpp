#include "win32/try_copy_memory.h"

#include "win32/platform.h"

bool TryCopyMemory(const void* address, void* copy, std::size_t bytes) {
    SIZE_T copied = 0;
    return ReadProcessMemory(GetCurrentProcess(), address, copy, bytes, &copied) != FALSE && copied == bytes;
}
