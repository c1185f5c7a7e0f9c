#include "filter/tinted_cursor.h"

#include <cstring>
#include <memory>
#include <new>

#include "filter/filter_colour.h"
#include "win32/top_down_dib.h"

namespace {

using Bytes = std::unique_ptr<std::uint8_t[]>;

Bytes ZeroedBytes(std::size_t count) {
    return Bytes(new (std::nothrow) std::uint8_t[count]());
}

SIZE SizeOfBitmap(HBITMAP bitmap) {
    BITMAP shape = {};
    GetObjectW(bitmap, sizeof(shape), &shape);
    return {shape.bmWidth, shape.bmHeight};
}

SIZE SizeOf(const ICONINFO& info) {
    if (info.hbmColor != nullptr) return SizeOfBitmap(info.hbmColor);
    if (info.hbmMask == nullptr) return {GetSystemMetrics(SM_CXCURSOR), GetSystemMetrics(SM_CYCURSOR)};
    // A monochrome mask contains the AND half above the XOR half.
    const SIZE halves = SizeOfBitmap(info.hbmMask);
    return {halves.cx, halves.cy / 2};
}

// A DIB section of the cursor's size, all pixels zero.
HBITMAP CreatePicture(HDC screen, SIZE size, CursorPixel** pixels) {
    BITMAPINFO info = {};
    info.bmiHeader = TopDownHeader(size.cx, size.cy, 32);
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    *pixels = static_cast<CursorPixel*>(bits);
    if (bitmap != nullptr) {
        std::memset(
            bits, 0,
            sizeof(CursorPixel) * static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy));
    }
    return bitmap;
}

// False for a cursor that is not monochrome, or whose mask cannot be read.
bool ExpandFromMask(HDC screen, const ICONINFO& source, SIZE size, CursorPixel* pixels,
                    std::uint8_t* newMask) {
    if (source.hbmColor != nullptr || source.hbmMask == nullptr) return false;
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colours[2];
    } info = {TopDownHeader(size.cx, size.cy * 2, 1), {}};
    const auto lines = static_cast<UINT>(size.cy * 2);
    const Bytes halves = ZeroedBytes(DibMaskRowBytes(size.cx) * lines);
    if (halves == nullptr) return false;
    if (GetDIBits(screen, source.hbmMask, 0, lines, halves.get(), reinterpret_cast<BITMAPINFO*>(&info),
                  DIB_RGB_COLORS) != static_cast<int>(lines)) {
        return false;
    }
    ExpandMonochrome(halves.get(), size.cx, size.cy, pixels, newMask);
    return true;
}

bool DrawCursorInto(HDC memory, HBITMAP picture, HCURSOR cursor, SIZE size) {
    const SelectedObject selected(memory, picture);
    if (DrawIconEx(memory, 0, 0, cursor, size.cx, size.cy, 0, nullptr, DI_NORMAL) == FALSE) return false;
    // The pixels are read next, and GDI may have batched the drawing.
    GdiFlush();
    return selected.previous != nullptr;
}

void Tint(CursorPixel* pixels, SIZE size, const TintTables& tables) {
    TintPixels(pixels, static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy), tables);
}

HCURSOR CreateColourCursor(const ICONINFO& source, HBITMAP mask, HBITMAP picture) {
    ICONINFO info = {};
    info.fIcon = FALSE;
    info.xHotspot = source.xHotspot;
    info.yHotspot = source.yHotspot;
    info.hbmMask = mask;
    info.hbmColor = picture;
    return static_cast<HCURSOR>(CreateIconIndirect(&info));
}

}  // namespace

HCURSOR BuildTintedCursor(HCURSOR cursor, double intensity, double brightness) {
    if (cursor == nullptr) return nullptr;
    const IconInfo source(cursor);
    if (!source.known) return nullptr;
    TintTables tables;
    BuildTintTables(FilterColourOf(intensity, brightness), &tables);
    return BuildTintedCursor(cursor, source, TintContexts(), tables);
}

HCURSOR BuildTintedCursor(HCURSOR cursor, const IconInfo& source, const TintContexts& contexts,
                          const TintTables& tables) {
    if (!source.known) return nullptr;
    const SIZE size = SizeOf(source.info);
    if (size.cx < 1 || size.cy < 1) return nullptr;

    HDC screen = contexts.screen.dc;
    CursorPixel* pixels = nullptr;
    const OwnedGdi picture(CreatePicture(screen, size, &pixels));
    if (picture.handle == nullptr) return nullptr;

    if (source.info.hbmColor != nullptr && source.info.hbmMask != nullptr) {
        if (!DrawCursorInto(contexts.memory.dc, picture.handle, cursor, size)) return nullptr;
        Tint(pixels, size, tables);
        return CreateColourCursor(source.info, source.info.hbmMask, picture.handle);
    }

    const Bytes maskBits = ZeroedBytes(MaskRowBytes(size.cx) * static_cast<std::size_t>(size.cy));
    if (maskBits == nullptr) return nullptr;
    if (!ExpandFromMask(screen, source.info, size, pixels, maskBits.get())) {
        if (!DrawCursorInto(contexts.memory.dc, picture.handle, cursor, size)) return nullptr;
        BuildMaskFromPixels(pixels, size.cx, size.cy, maskBits.get());
    }
    Tint(pixels, size, tables);
    const OwnedGdi mask(CreateBitmap(size.cx, size.cy, 1, 1, maskBits.get()));
    return CreateColourCursor(source.info, mask.handle, picture.handle);
}
