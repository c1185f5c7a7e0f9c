#include "filter/cursor_gdi_tracker.h"

#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(cursor_gdi_tracker);

CursorGdiTracker g_tracker;

namespace {

bool g_open = false;

bool Fails(GdiCall call) {
    if (!g_open || g_tracker.failing.count(call) == 0) return false;
    const int time = ++g_tracker.failingSoFar[call];
    return g_tracker.failingTime == 0 || g_tracker.failingTime == time;
}

void Track(HANDLE handle, const char* kind) {
    if (!g_open || handle == nullptr) return;
    if (g_tracker.open.count(handle) != 0) g_tracker.errors.push_back(std::string("made again: ") + kind);
    g_tracker.open[handle] = kind;
    g_tracker.created[kind] += 1;
}

void Untrack(HANDLE handle, const char* how) {
    if (!g_open) return;
    if (g_tracker.open.erase(handle) == 0)
        g_tracker.errors.push_back(std::string(how) + " of what is not ours");
}

template <typename... Parts>
void RecordOpen(const Parts&... parts) {
    if (g_open) Record(parts...);
}

void DeleteAndClear(HBITMAP* bitmap) {
    if (*bitmap != nullptr) Real (&DeleteObject)(*bitmap);
    *bitmap = nullptr;
}

BOOL WINAPI FakeGetIconInfo(HICON icon, ICONINFO* info) {
    RecordOpen("ask");
    if (Fails(GdiCall::GetIconInfo)) {
        if (g_tracker.staleOnFailure) info->hbmMask = info->hbmColor = MakeHandle<HBITMAP>(0xBAD0);
        return FALSE;
    }
    const BOOL known = Real(&GetIconInfo)(icon, info);
    if (!g_open || known == FALSE) return known;
    if (g_tracker.withoutColour) DeleteAndClear(&info->hbmColor);
    if (g_tracker.withoutMask) DeleteAndClear(&info->hbmMask);
    Track(info->hbmColor, "info bitmap");
    Track(info->hbmMask, "info bitmap");
    g_tracker.source = *info;
    return TRUE;
}

int WINAPI FakeGetObjectW(HANDLE object, int bytes, LPVOID out) {
    if (Fails(GdiCall::GetObjectW)) return 0;
    return Real(&GetObjectW)(object, bytes, out);
}

int WINAPI FakeGetSystemMetrics(int index) {
    if (g_open && g_tracker.cursorMetrics.cx != 0) {
        if (index == SM_CXCURSOR) return g_tracker.cursorMetrics.cx;
        if (index == SM_CYCURSOR) return g_tracker.cursorMetrics.cy;
    }
    return Real(&GetSystemMetrics)(index);
}

HDC WINAPI FakeGetDC(HWND window) {
    if (Fails(GdiCall::GetDC)) return nullptr;
    HDC dc = Real(&GetDC)(window);
    Track(dc, "screen context");
    return dc;
}

int WINAPI FakeReleaseDC(HWND window, HDC dc) {
    Untrack(dc, "release");
    return Real(&ReleaseDC)(window, dc);
}

HDC WINAPI FakeCreateCompatibleDC(HDC like) {
    if (Fails(GdiCall::CreateCompatibleDC)) return nullptr;
    HDC dc = Real(&CreateCompatibleDC)(like);
    Track(dc, "memory context");
    return dc;
}

BOOL WINAPI FakeDeleteDC(HDC dc) {
    Untrack(dc, "deletion");
    return Real(&DeleteDC)(dc);
}

HBITMAP WINAPI FakeCreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, VOID** bits, HANDLE section,
                                    DWORD offset) {
    const BITMAPINFOHEADER& header = info->bmiHeader;
    RecordOpen("dib ", header.biWidth, "x", header.biHeight, " planes=", header.biPlanes,
               " bits=", header.biBitCount, " compression=", header.biCompression, " header=", header.biSize,
               " usage=", usage);
    if (Fails(GdiCall::CreateDIBSection)) return nullptr;
    HBITMAP dib = Real(&CreateDIBSection)(dc, info, usage, bits, section, offset);
    Track(dib, "dib");
    g_tracker.lastDib = dib;
    return dib;
}

int WINAPI FakeGetDIBits(HDC dc, HBITMAP bitmap, UINT first, UINT lines, LPVOID bits, LPBITMAPINFO info,
                         UINT usage) {
    const BITMAPINFOHEADER& header = info->bmiHeader;
    RecordOpen("read ", bitmap == g_tracker.source.hbmMask ? "mask " : "something else ", header.biWidth, "x",
               header.biHeight, " bits=", header.biBitCount, " lines ", first, "+", lines);
    if (Fails(GdiCall::GetDIBits)) return 0;
    const UINT wanted = g_open ? lines - g_tracker.linesMissing : lines;
    return Real(&GetDIBits)(dc, bitmap, first, wanted, bits, info, usage);
}

BOOL WINAPI FakeDrawIconEx(HDC dc, int x, int y, HICON icon, int width, int height, UINT step, HBRUSH brush,
                           UINT flags) {
    RecordOpen("draw at ", x, ",", y, " ", width, "x", height, " step=", step, " brush=", ValueOf(brush),
               " flags=", flags);
    if (Fails(GdiCall::DrawIconEx)) return FALSE;
    return Real(&DrawIconEx)(dc, x, y, icon, width, height, step, brush, flags);
}

HBITMAP WINAPI FakeCreateBitmap(int width, int height, UINT planes, UINT bitCount, const void* bits) {
    RecordOpen("mask ", width, "x", height, " planes=", planes, " bits=", bitCount);
    if (g_open && bits != nullptr) {
        const auto* bytes = static_cast<const unsigned char*>(bits);
        g_tracker.maskBits.assign(bytes, bytes + (width + 15) / 16 * 2 * height);
    }
    if (Fails(GdiCall::CreateBitmap)) return nullptr;
    HBITMAP bitmap = Real(&CreateBitmap)(width, height, planes, bitCount, bits);
    Track(bitmap, "mask");
    g_tracker.lastMask = bitmap;
    return bitmap;
}

HICON WINAPI FakeCreateIconIndirect(PICONINFO info) {
    const char* mask = info->hbmMask == nullptr                    ? "none"
                       : info->hbmMask == g_tracker.source.hbmMask ? "its own"
                       : info->hbmMask == g_tracker.lastMask       ? "new"
                                                                   : "unknown";
    RecordOpen("make icon=", info->fIcon, " hot=", info->xHotspot, ",", info->yHotspot, " mask=", mask,
               " colour=", info->hbmColor == g_tracker.lastDib ? "dib" : "unknown");
    g_tracker.result = *info;
    if (Fails(GdiCall::CreateIconIndirect)) return nullptr;
    HICON icon = Real(&CreateIconIndirect)(info);
    Track(icon, "cursor");
    return icon;
}

BOOL WINAPI FakeDeleteObject(HGDIOBJ object) {
    Untrack(object, "deletion");
    return Real(&DeleteObject)(object);
}

BOOL WINAPI FakeDestroyCursor(HCURSOR cursor) {
    Untrack(cursor, "destruction");
    return Real(&DestroyCursor)(cursor);
}

}  // namespace

AMBREL_SEAM(GetIconInfo, FakeGetIconInfo);
AMBREL_SEAM(GetObjectW, FakeGetObjectW);
AMBREL_SEAM(GetSystemMetrics, FakeGetSystemMetrics);
AMBREL_SEAM(GetDC, FakeGetDC);
AMBREL_SEAM(ReleaseDC, FakeReleaseDC);
AMBREL_SEAM(CreateCompatibleDC, FakeCreateCompatibleDC);
AMBREL_SEAM(DeleteDC, FakeDeleteDC);
AMBREL_SEAM(CreateDIBSection, FakeCreateDIBSection);
AMBREL_SEAM(GetDIBits, FakeGetDIBits);
AMBREL_SEAM(DrawIconEx, FakeDrawIconEx);
AMBREL_SEAM(CreateBitmap, FakeCreateBitmap);
AMBREL_SEAM(CreateIconIndirect, FakeCreateIconIndirect);
AMBREL_SEAM(DeleteObject, FakeDeleteObject);
AMBREL_SEAM(DestroyCursor, FakeDestroyCursor);

void StartTracking() {
    g_tracker = CursorGdiTracker{};
    g_calls.clear();
    g_open = true;
}

void StopTracking() {
    g_open = false;
}
