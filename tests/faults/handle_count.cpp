#include "faults/handle_count.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "win32/platform.h"

#include <winternl.h>

int CountHandles() {
    struct Entry {
        void* object;
        std::uintptr_t process;
        std::uintptr_t handle;
        ULONG access;
        USHORT traceIndex;
        USHORT type;
        ULONG attributes;
        ULONG reserved;
    };
    static_assert(sizeof(Entry) == 40);
    struct Header {
        std::uintptr_t count;
        std::uintptr_t reserved;
    };
    constexpr ULONG kExtendedHandles = 64;  // out of range of the header's enumeration
    using Query = NTSTATUS(NTAPI*)(ULONG kind, void* list, ULONG size, ULONG* needed);
    const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(&NtQuerySystemInformation));
    constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

    static std::vector<char> list(std::size_t{1} << 18);
    NTSTATUS status = 0;
    while ((status = query(kExtendedHandles, list.data(), static_cast<ULONG>(list.size()), nullptr)) < 0 &&
           list.size() < kMaxBytes) {
        list.resize(2 * list.size());
    }
    if (status < 0) return 0;
    const auto* header = reinterpret_cast<const Header*>(list.data());
    const auto* first = reinterpret_cast<const Entry*>(header + 1);
    const std::uintptr_t own = GetCurrentProcessId();
    return static_cast<int>(std::count_if(first, first + header->count,
                                          [own](const Entry& entry) { return entry.process == own; }));
}
