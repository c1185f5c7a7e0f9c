// Reads memory at an address that may be invalid. Any program of the user can send the window a message
// whose pointer is invalid in this process.
#pragma once

#include <cstddef>

// Copies `bytes` bytes from an address of this process without ever raising an exception. False if any of
// them cannot be read; `copy` is then undefined.
bool TryCopyMemory(const void* address, void* copy, std::size_t bytes);
