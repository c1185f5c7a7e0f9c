// The import table of the program into which a library of the lab is injected.
#pragma once

#include <windows.h>

#include <cstring>

// The address at an offset from the start of the program's image.
template <typename T>
T* At(ULONG_PTR offset) {
    return reinterpret_cast<T*>(reinterpret_cast<ULONG_PTR>(GetModuleHandleW(nullptr)) + offset);
}

// Returns the import pointer of the function. Null if the program does not import it by name.
inline ULONG_PTR* FindImport(const char* function) {
    const auto* dos = At<IMAGE_DOS_HEADER>(0);
    const auto* headers = At<IMAGE_NT_HEADERS>(static_cast<ULONG_PTR>(dos->e_lfanew));
    const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(table); library->Name; ++library) {
        const auto* name = At<IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
        auto* slot = At<ULONG_PTR>(library->FirstThunk);
        for (; name->u1.AddressOfData; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                continue;
            }
            const auto* byName = At<IMAGE_IMPORT_BY_NAME>(name->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(byName->Name), function) == 0) {
                return slot;
            }
        }
    }
    return nullptr;
}

// Writes over memory of the program, regardless of its protection.
inline void Overwrite(void* address, const void* bytes, std::size_t count) {
    DWORD before = 0;
    VirtualProtect(address, count, PAGE_EXECUTE_READWRITE, &before);
    std::memcpy(address, bytes, count);
    VirtualProtect(address, count, before, &before);
    FlushInstructionCache(GetCurrentProcess(), address, count);
}
