#include "filter/gdi_census.h"

#include <cstdint>

#include "support/seam.h"

#include <winternl.h>

namespace {

// Windows counts what belongs to a process. Wine's answer is always 0; there the handle table that the
// process environment block points to holds this process's objects and no others.
int CountGdiObjects() {
    const DWORD told = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (told != 0) return static_cast<int>(told);

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

// Wine takes a user handle without its upper half for the object of that index, and knows the icons of this
// process only: asking for every index finds them all.
int CountIcons() {
    const DWORD told = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    if (told != 0) return static_cast<int>(told);

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

GdiCensus TakeGdiCensus() {
    return {CountGdiObjects(), CountIcons()};
}

void PrintTo(const GdiCensus& census, std::ostream* out) {
    *out << census.gdiObjects << " GDI objects and " << census.icons << " icons";
}
