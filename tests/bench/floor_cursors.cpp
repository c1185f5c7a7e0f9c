// Why not less: Windows has no call that changes the colours of a cursor. A cursor's picture is only
// reachable by drawing the cursor, a new cursor is only made from a picture and a mask, and each of the
// system's cursors is set by its own call. The context of the screen and the one to draw in serve all
// cursors. GetIconInfo copies the mask and the hot spot, which the new cursor needs; keeping both instead
// would hold sixteen GDI objects for the whole run.
#include "floor_cursors.h"

#include <cstdint>
#include <vector>

namespace {

BITMAPINFO PictureShape(int size) {
    BITMAPINFO shape = {};
    shape.bmiHeader.biSize = sizeof(shape.bmiHeader);
    shape.bmiHeader.biWidth = size;
    shape.bmiHeader.biHeight = -size;
    shape.bmiHeader.biPlanes = 1;
    shape.bmiHeader.biBitCount = 32;
    return shape;
}

HCURSOR CreatePlainCursor(int size, int variant) {
    const BITMAPINFO shape = PictureShape(size);
    void* bits = nullptr;
    HBITMAP colour = CreateDIBSection(nullptr, &shape, DIB_RGB_COLORS, &bits, nullptr, 0);
    auto* pixel = static_cast<std::uint32_t*>(bits);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x)
            *pixel++ =
                x + y < size ? 0xFF000000U | static_cast<std::uint32_t>(x * 7919 + y * 104729 + variant) : 0;
    }
    const std::vector<std::uint8_t> bytes(static_cast<std::size_t>((size + 15) / 16 * 2 * size));
    ICONINFO info = {};
    info.hbmMask = CreateBitmap(size, size, 1, 1, bytes.data());
    info.hbmColor = colour;
    HCURSOR cursor = static_cast<HCURSOR>(CreateIconIndirect(&info));
    DeleteObject(info.hbmMask);
    DeleteObject(colour);
    return cursor;
}

}  // namespace

void CreatePlainCursors(HCURSOR* cursors, int count, int size) {
    for (int i = 0; i < count; ++i)
        cursors[i] = CreatePlainCursor(size, i);
}

void FloorReplaceCursors(const HCURSOR* cursors, const DWORD* ids, int count, int size) {
    const BITMAPINFO shape = PictureShape(size);
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    for (int i = 0; i < count; ++i) {
        ICONINFO info = {};
        GetIconInfo(cursors[i], &info);
        void* bits = nullptr;
        HBITMAP picture = CreateDIBSection(screen, &shape, DIB_RGB_COLORS, &bits, nullptr, 0);
        HGDIOBJ previous = SelectObject(memory, picture);
        DrawIconEx(memory, 0, 0, cursors[i], size, size, 0, nullptr, DI_NORMAL);
        SelectObject(memory, previous);
        DeleteObject(info.hbmColor);
        info.hbmColor = picture;
        SetSystemCursor(static_cast<HCURSOR>(CreateIconIndirect(&info)), ids[i]);
        DeleteObject(info.hbmMask);
        DeleteObject(picture);
    }
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
}
