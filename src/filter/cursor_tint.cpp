#include "filter/cursor_tint.h"

#include <cmath>

#include "app/state/app_state.h"
#include "filter/filter_colour.h"
#include "filter/tinted_cursor.h"

namespace {

// Ids of the system cursors for LoadImage and SetSystemCursor (winuser.h hides their OCR_ names).
constexpr DWORD kCursorIds[kSystemCursorCount] = {
    32512,  // OCR_NORMAL
    32513,  // OCR_IBEAM
    32514,  // OCR_WAIT
    32515,  // OCR_CROSS
    32516,  // OCR_UP
    32640,  // OCR_SIZE
    32641,  // OCR_ICON
    32642,  // OCR_SIZENWSE
    32643,  // OCR_SIZENESW
    32644,  // OCR_SIZEWE
    32645,  // OCR_SIZENS
    32646,  // OCR_SIZEALL
    32648,  // OCR_NO
    32649,  // OCR_HAND
    32650,  // OCR_APPSTARTING
    32651,  // OCR_HELP
};

// A smaller change of warmth or brightness is not visible, and would rebuild sixteen cursors at each step of
// a drag.
constexpr double kDeadBand = 0.002;

bool IsWithinDeadBand() {
    return g_app.cursorsTinted && std::fabs(g_app.lastCursorTint.intensity - g_app.intensity) < kDeadBand &&
           std::fabs(g_app.lastCursorTint.brightness - g_app.brightness) < kDeadBand;
}

// A private copy, because SetSystemCursor replaces the cursor behind the shared handle.
HCURSOR CopyOfSystemCursor(DWORD id) {
    const wchar_t* name = MAKEINTRESOURCEW(id);
    HANDLE shared = LoadImageW(nullptr, name, IMAGE_CURSOR, 0, 0, LR_DEFAULTSIZE | LR_SHARED);
    if (shared == nullptr) shared = LoadCursorW(nullptr, name);
    if (shared == nullptr) return nullptr;
    HANDLE copy = CopyImage(shared, IMAGE_CURSOR, 0, 0, LR_COPYFROMRESOURCE);
    if (copy == nullptr) copy = CopyIcon(static_cast<HICON>(shared));
    return static_cast<HCURSOR>(copy);
}

void LoadBaseCursorsOnce() {
    if (g_app.baseCursorsLoaded) return;
    for (int i = 0; i < kSystemCursorCount; ++i)
        g_app.baseCursors[i] = CopyOfSystemCursor(kCursorIds[i]);
    g_app.baseCursorsLoaded = true;
}

// Monochrome cursors keep their system look. A cursor whose state cannot be read is treated as coloured.
bool IsMonochrome(const IconInfo& source) {
    return source.known && source.info.hbmColor == nullptr;
}

// SetSystemCursor takes ownership of the cursor, unless it fails.
bool TintOne(HCURSOR copy, DWORD id, const TintContexts& contexts, const TintTables& tables) {
    if (copy == nullptr) return false;
    const IconInfo source(copy);
    if (IsMonochrome(source)) return false;
    HCURSOR tinted = BuildTintedCursor(copy, source, contexts, tables);
    if (tinted == nullptr) return false;
    if (SetSystemCursor(tinted, id) != FALSE) return true;
    DestroyCursor(tinted);
    return false;
}

}  // namespace

void TintSystemCursors() {
    if (!g_app.filterOn || g_app.ending) {
        RestoreSystemCursors();
        return;
    }
    if (IsWithinDeadBand()) return;
    LoadBaseCursorsOnce();
    TintTables tables;
    BuildTintTables(CurrentFilterColour(), &tables);
    const TintContexts contexts;
    bool anySet = false;
    for (int i = 0; i < kSystemCursorCount; ++i) {
        if (TintOne(g_app.baseCursors[i], kCursorIds[i], contexts, tables)) anySet = true;
    }
    if (!anySet) return;
    g_app.lastCursorTint = {g_app.intensity, g_app.brightness};
    g_app.cursorsTinted = true;
}

void RestoreSystemCursors() {
    if (g_app.cursorsTinted) ResetSystemCursors();
}

void ResetSystemCursors() {
    const BOOL reloaded = SystemParametersInfoW(SPI_SETCURSORS, 0, nullptr, 0);
    if (reloaded == FALSE && g_app.ending) SystemParametersInfoW(SPI_SETCURSORS, 0, nullptr, 0);
    g_app.lastCursorTint = {};
    g_app.cursorsTinted = false;
}

void ReleaseCursorCopies() {
    RestoreSystemCursors();
    for (HCURSOR& copy : g_app.baseCursors) {
        if (copy != nullptr) DestroyCursor(copy);
        copy = nullptr;
    }
    g_app.baseCursorsLoaded = false;
}
