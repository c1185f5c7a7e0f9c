// Draws the sixteen system cursors untinted, tinted by EVENING, and tinted by NIGHT: cursor_sheet FILE.bmp
#include <cstdio>
#include <cwchar>

#include "filter/model/warmth.h"
#include "filter/tinted_cursor.h"
#include "win32/guards.h"

namespace {

constexpr int kCell = 48;
constexpr int kColumns = 16;
constexpr WORD kIds[kColumns] = {32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642,
                                 32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651};

struct Row {
    bool tinted;
    double intensity;
    double brightness;
};

constexpr Row kRows[] = {
    {false, 0.0, 1.0},
    {true, PresetIntensity(2700.0), 0.85},
    {true, PresetIntensity(0.0), 0.7},
};

constexpr int kWidth = kCell * kColumns;
constexpr int kHeight = kCell * static_cast<int>(sizeof(kRows) / sizeof(kRows[0]));

BITMAPINFOHEADER Header() {
    BITMAPINFOHEADER header = {};
    header.biSize = sizeof(header);
    header.biWidth = kWidth;
    header.biHeight = kHeight;
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biSizeImage = kWidth * kHeight * 3;
    return header;
}

void DrawRow(HDC dc, const Row& row, int top) {
    for (int column = 0; column < kColumns; ++column) {
        HCURSOR cursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(kIds[column]));
        HCURSOR tinted = row.tinted ? BuildTintedCursor(cursor, row.intensity, row.brightness) : nullptr;
        DrawIconEx(dc, column * kCell + 8, top + 8, tinted != nullptr ? tinted : cursor, 0, 0, 0, nullptr,
                   DI_NORMAL);
        if (tinted != nullptr) DestroyCursor(tinted);
    }
}

bool Save(const wchar_t* path, const void* bits) {
    std::FILE* file = nullptr;
    if (_wfopen_s(&file, path, L"wb") != 0) return false;
    const BITMAPINFOHEADER header = Header();
    BITMAPFILEHEADER fileHeader = {};
    fileHeader.bfType = 0x4D42;
    fileHeader.bfOffBits = sizeof(fileHeader) + sizeof(header);
    fileHeader.bfSize = fileHeader.bfOffBits + header.biSizeImage;
    const bool written = std::fwrite(&fileHeader, sizeof(fileHeader), 1, file) == 1 &&
                         std::fwrite(&header, sizeof(header), 1, file) == 1 &&
                         std::fwrite(bits, header.biSizeImage, 1, file) == 1;
    return std::fclose(file) == 0 && written;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 2) return 2;
    BITMAPINFO info = {};
    info.bmiHeader = Header();
    const ScreenDc screen;
    const MemoryDc memory(screen.dc);
    void* bits = nullptr;
    const OwnedGdi picture(CreateDIBSection(screen.dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const SelectedObject selected(memory.dc, picture.handle);
    const OwnedGdi grey(CreateSolidBrush(RGB(96, 96, 96)));
    const RECT whole = {0, 0, kWidth, kHeight};
    FillRect(memory.dc, &whole, grey.handle);
    int top = 0;
    for (const Row& row : kRows) {
        DrawRow(memory.dc, row, top);
        top += kCell;
    }
    GdiFlush();
    return Save(arguments[1], bits) ? 0 : 1;
}
