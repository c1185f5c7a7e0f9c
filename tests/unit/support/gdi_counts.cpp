#include "support/gdi_counts.h"

#include <cstdint>

#include "support/seam.h"

#include <winternl.h>

// Windows counts the objects of a process. Wine always returns 0; there the handle table in the process
// environment block contains only the objects of this process.
int CountGdiObjects() {
    const DWORD reported = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (reported != 0) return static_cast<int>(reported);

    struct HandleEntry {
        std::uint64_t object;
        std::uint32_t owner;
        std::uint16_t unique;
        std::uint8_t type;
        std::uint8_t flags;
        std::uint64_t user;
    };
    static_assert(sizeof(HandleEntry) == 24);
    constexpr std::size_t kTableOffset = 0xF8;  // GdiSharedHandleTable of the 64-bit block
    constexpr std::size_t kHandles = 0x4000;
    PROCESS_BASIC_INFORMATION basic = {};
    NtQueryInformationProcess(GetCurrentProcess(), ProcessBasicInformation, &basic, sizeof(basic), nullptr);
    const auto* block = reinterpret_cast<const char*>(basic.PebBaseAddress);
    const auto* table = *reinterpret_cast<const HandleEntry* const*>(block + kTableOffset);
    int count = 0;
    for (std::size_t i = 0; i < kHandles; ++i)
        count += table[i].type != 0 ? 1 : 0;
    return count;
}

namespace {

// Wine accepts a user handle without its upper half as the object of that index, and knows only the icons of
// this process. Querying every index finds them all.
int CountIcons() {
    const DWORD reported = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    if (reported != 0) return static_cast<int>(reported);

    constexpr std::uintptr_t kFirst = 0x20, kLast = 0xFFEF;
    const auto ask = Real(&GetIconInfo);
    const auto erase = Real(&DeleteObject);
    int count = 0;
    for (std::uintptr_t handle = kFirst; handle <= kLast; handle += 2) {
        ICONINFO info = {};
        if (ask(reinterpret_cast<HICON>(handle), &info) == FALSE) continue;
        count += 1;
        if (info.hbmMask != nullptr) erase(info.hbmMask);
        if (info.hbmColor != nullptr) erase(info.hbmColor);
    }
    return count;
}

}  // namespace

GdiCounts CurrentGdiCounts() {
    return {CountGdiObjects(), CountIcons()};
}

void PrintTo(const GdiCounts& counts, std::ostream* out) {
    *out << counts.gdiObjects << " GDI objects and " << counts.icons << " icons";
}
