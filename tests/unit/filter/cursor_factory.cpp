#include "filter/cursor_factory.h"

#include "support/seam.h"
#include "win32/top_down_dib.h"

namespace {

struct MonochromeInfo {
    BITMAPINFOHEADER header;
    RGBQUAD colours[2];
};

std::size_t Index(int x, int y, int width) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
}

// CreateBitmap expects rows of 16 bits with the first pixel in the highest bit.
HBITMAP MakeMask(int width, int height, const std::vector<std::uint8_t>& mask) {
    const int rowBytes = (width + 15) / 16 * 2;
    std::vector<std::uint8_t> bits(Index(0, height, rowBytes));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t& byte = bits[Index(x / 8, y, rowBytes)];
            if (mask[Index(x, y, width)] != 0) byte = static_cast<std::uint8_t>(byte | (0x80 >> (x % 8)));
        }
    }
    return Real(&CreateBitmap)(width, height, 1, 1, bits.data());
}

HBITMAP MakePixels(const CursorPicture& picture) {
    BITMAPINFO info = {};
    info.bmiHeader = TopDownHeader(picture.width, picture.height, 32);
    void* bits = nullptr;
    HBITMAP bitmap = Real(&CreateDIBSection)(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap == nullptr) return nullptr;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        static_cast<Argb*>(bits)[i] = picture.pixels[i];
    return bitmap;
}

std::vector<std::uint8_t> ReadMask(HDC dc, HBITMAP bitmap, int width, int height) {
    const int rowBytes = (width + 31) / 32 * 4;
    std::vector<std::uint8_t> bits(Index(0, height, rowBytes));
    MonochromeInfo info = {TopDownHeader(width, height, 1), {}};
    Real (&GetDIBits)(dc, bitmap, 0, static_cast<UINT>(height), bits.data(),
                      reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS);
    std::vector<std::uint8_t> mask(Index(0, height, width));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            mask[Index(x, y, width)] = (bits[Index(x / 8, y, rowBytes)] & (0x80 >> (x % 8))) != 0;
    }
    return mask;
}

std::vector<Argb> ReadPixels(HDC dc, HBITMAP bitmap, int width, int height) {
    std::vector<Argb> pixels(Index(0, height, width));
    BITMAPINFO info = {};
    info.bmiHeader = TopDownHeader(width, height, 32);
    Real (&GetDIBits)(dc, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    return pixels;
}

void Delete(HGDIOBJ object) {
    if (object != nullptr) Real (&DeleteObject)(object);
}

}  // namespace

Argb CursorPicture::PixelAt(int x, int y) const {
    return pixels[Index(x, y, width)];
}

bool CursorPicture::MaskAt(int x, int y) const {
    return mask[Index(x, y, width)] != 0;
}

CursorPicture PlainPicture(int width, int height, Argb colour) {
    CursorPicture picture;
    picture.width = width;
    picture.height = height;
    picture.pixels.assign(Index(0, height, width), colour);
    picture.mask.assign(Index(0, height, width), false);
    return picture;
}

HCURSOR MakeCursor(const CursorPicture& picture) {
    ICONINFO info = {};
    info.xHotspot = picture.hotX;
    info.yHotspot = picture.hotY;
    info.hbmMask =
        MakeMask(picture.width, picture.coloured ? picture.height : 2 * picture.height, picture.mask);
    if (picture.coloured) info.hbmColor = MakePixels(picture);
    HICON cursor = Real(&CreateIconIndirect)(&info);
    Delete(info.hbmMask);
    Delete(info.hbmColor);
    return static_cast<HCURSOR>(cursor);
}

CursorPicture ReadCursor(HCURSOR cursor) {
    CursorPicture picture;
    ICONINFO info = {};
    if (Real(&GetIconInfo)(cursor, &info) == FALSE || info.fIcon != FALSE) return picture;
    BITMAP shape = {};
    picture.coloured = info.hbmColor != nullptr;
    Real (&GetObjectW)(picture.coloured ? info.hbmColor : info.hbmMask, sizeof(shape), &shape);
    picture.width = shape.bmWidth;
    picture.height = picture.coloured ? shape.bmHeight : shape.bmHeight / 2;
    picture.hotX = info.xHotspot;
    picture.hotY = info.yHotspot;
    HDC dc = Real(&CreateCompatibleDC)(nullptr);
    if (picture.coloured) picture.pixels = ReadPixels(dc, info.hbmColor, picture.width, picture.height);
    picture.mask = ReadMask(dc, info.hbmMask, picture.width, shape.bmHeight);
    Real (&DeleteDC)(dc);
    Delete(info.hbmMask);
    Delete(info.hbmColor);
    return picture;
}

std::vector<Argb> DrawnPixels(HCURSOR cursor, int width, int height) {
    HBITMAP bitmap = MakePixels(PlainPicture(width, height, 0));
    HDC dc = Real(&CreateCompatibleDC)(nullptr);
    HGDIOBJ previous = SelectObject(dc, bitmap);
    Real (&DrawIconEx)(dc, 0, 0, cursor, width, height, 0, nullptr, DI_NORMAL);
    SelectObject(dc, previous);
    std::vector<Argb> pixels = ReadPixels(dc, bitmap, width, height);
    Real (&DeleteDC)(dc);
    Delete(bitmap);
    return pixels;
}

void DestroyCreatedCursor(HCURSOR cursor) {
    if (cursor != nullptr) Real (&DestroyCursor)(cursor);
}
