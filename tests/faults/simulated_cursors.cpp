// The system cursors.
#include <algorithm>
#include <iterator>

#include "faults/fault_injector.h"
#include "faults/simulated_function.h"
#include "faults/simulated_platform.h"

namespace {

constexpr WORD kArrow = 32512, kBeam = 32513, kHourglass = 32514;
constexpr WORD kExisting[] = {kArrow, kBeam, kHourglass};
constexpr unsigned kExistingCount = std::size(kExisting);

const auto g_destroyCursor = RealFunction<decltype(&DestroyCursor)>(L"user32.dll", "DestroyCursor");
const auto g_loadImage = RealFunction<decltype(&LoadImageW)>(L"user32.dll", "LoadImageW");
const auto g_loadCursor = RealFunction<decltype(&LoadCursorW)>(L"user32.dll", "LoadCursorW");
const auto g_copyImage = RealFunction<decltype(&CopyImage)>(L"user32.dll", "CopyImage");
const auto g_getIconInfo = RealFunction<decltype(&GetIconInfo)>(L"user32.dll", "GetIconInfo");
const auto g_deleteObject = RealFunction<decltype(&DeleteObject)>(L"gdi32.dll", "DeleteObject");

HANDLE g_hourglass = nullptr;  // the latest one loaded

BOOL WINAPI FakeSetSystemCursor(HCURSOR cursor, DWORD) {
    g_platform.cursorsReplaced = true;
    return g_destroyCursor(cursor);
}

// Most of a session's time goes to the cursors, so only arrow, beam and hourglass exist.
bool IsMissingCursor(const wchar_t* name) {
    if (!IS_INTRESOURCE(name)) return false;
    const auto id = static_cast<WORD>(reinterpret_cast<ULONG_PTR>(name));
    return std::find(std::begin(kExisting), std::end(kExisting), id) == std::end(kExisting);
}

HANDLE WINAPI FakeLoadImage(HINSTANCE instance, const wchar_t* name, UINT type, int width, int height,
                            UINT flags) {
    const bool isSystemCursor = instance == nullptr && type == IMAGE_CURSOR;
    if (isSystemCursor && IsMissingCursor(name)) return nullptr;
    HANDLE image = g_loadImage(instance, name, type, width, height, flags);
    if (isSystemCursor && name == MAKEINTRESOURCEW(kHourglass)) g_hourglass = image;
    return image;
}

HCURSOR WINAPI FakeLoadCursor(HINSTANCE instance, const wchar_t* name) {
    return instance == nullptr && IsMissingCursor(name) ? nullptr : g_loadCursor(instance, name);
}

HANDLE WINAPI FakeCopyImage(HANDLE image, UINT type, int width, int height, UINT flags) {
    if (g_platform.isComplete && image == g_hourglass) return nullptr;
    return g_copyImage(image, type, width, height, flags);
}

// Every third cursor has no mask: the last of the three that are tinted one after the other.
BOOL WINAPI FakeGetIconInfo(HICON icon, ICONINFO* info) {
    const BOOL known = g_getIconInfo(icon, info);
    if (known == FALSE) return known;
    if (++g_platform.iconsRead % kExistingCount != 0 || info->hbmColor == nullptr) return known;
    g_deleteObject(info->hbmMask);
    info->hbmMask = nullptr;
    return known;
}

}  // namespace

std::vector<SimulatedRow> SimulatedCursors() {
    return {
        {"LoadImageW", Address(&FakeLoadImage)},
        {"LoadCursorW", Address(&FakeLoadCursor)},
        {"CopyImage", Address(&FakeCopyImage)},
        {"SetSystemCursor", Address(&FakeSetSystemCursor)},
    };
}

void InstallCursorWithoutMask() {
    ReplaceImport("GetIconInfo", Address(&FakeGetIconInfo));
}
