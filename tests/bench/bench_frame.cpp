// Compares one frame of the popup with the one block copy that it requires.
#include "app/state/app_state.h"
#include "stopwatch.h"
#include "ui/fonts.h"
#include "ui/popup_painter.h"

namespace {

HDC g_target;
HDC g_source;

void Frame(int) {
    HBITMAP bitmap = CreateCompatibleBitmap(g_target, 320, 540);
    HDC memory = CreateCompatibleDC(g_target);
    HGDIOBJ previous = SelectObject(memory, bitmap);
    PaintRoot(memory);
    SetMapMode(memory, MM_TEXT);
    BitBlt(g_target, 0, 0, 320, 540, memory, 0, 0, SRCCOPY);
    SelectObject(memory, previous);
    DeleteDC(memory);
    DeleteObject(bitmap);
    GdiFlush();
}

void BlockCopy(int) {
    BitBlt(g_target, 0, 0, 320, 540, g_source, 0, 0, SRCCOPY);
    GdiFlush();
}

}  // namespace

int main() {
    g_app.mainWindow = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 320, 540, nullptr,
                                       nullptr, nullptr, nullptr);
    CreateFonts();
    g_app.filterOn = true;
    g_target = GetDC(g_app.mainWindow);
    g_source = CreateCompatibleDC(g_target);
    SelectObject(g_source, CreateCompatibleBitmap(g_target, 320, 540));
    Compare("a frame of the popup / one block copy", Frame, BlockCopy, 20);
    return 0;
}
