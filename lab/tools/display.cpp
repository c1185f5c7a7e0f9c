#include "tool.h"

// mode WIDTH HEIGHT: changes the desktop's mode; result=0 when Windows accepted it.
int ChangeMode(const Arguments& arguments) {
    DEVMODEW mode = {};
    mode.dmSize = sizeof(mode);
    mode.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;
    mode.dmPelsWidth = static_cast<DWORD>(Number(arguments[0]));
    mode.dmPelsHeight = static_cast<DWORD>(Number(arguments[1]));
    const LONG result = ChangeDisplaySettingsW(&mode, 0);
    Print(L"result=%ld\n", result);
    return result == DISP_CHANGE_SUCCESSFUL ? kToolOk : kToolFailed;
}

// The desktop's measures as name=value lines.
int ShowMetrics(const Arguments&) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY), &monitor);
    const RECT& work = monitor.rcWork;
    POINT cursor = {};
    GetCursorPos(&cursor);
    Print(L"width=%d\nheight=%d\n", GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN));
    Print(L"work_left=%ld\nwork_top=%ld\nwork_right=%ld\nwork_bottom=%ld\n", work.left, work.top, work.right,
          work.bottom);
    Print(L"dpi=%u\ncursor_x=%ld\ncursor_y=%ld\n", GetDpiForSystem(), cursor.x, cursor.y);
    return kToolOk;
}

// measure FACE HEIGHT WEIGHT TEXT: what GDI draws such a text with and how wide it comes out.
int MeasureText(const Arguments& arguments) {
    const HDC dc = GetDC(nullptr);
    const HFONT font =
        CreateFontW(static_cast<int>(Number(arguments[1])), 0, 0, 0, static_cast<int>(Number(arguments[2])),
                    FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                    CLEARTYPE_QUALITY, DEFAULT_PITCH, arguments[0].c_str());
    const HGDIOBJ previous = SelectObject(dc, font);
    const std::wstring& text = arguments[3];
    wchar_t face[LF_FACESIZE] = {};
    SIZE size = {};
    WORD glyph = 0xFFFF;
    TEXTMETRICW metric = {};
    GetTextFaceW(dc, LF_FACESIZE, face);
    GetTextMetricsW(dc, &metric);
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    GetGlyphIndicesW(dc, text.c_str(), 1, &glyph, GGI_MARK_NONEXISTING_GLYPHS);
    Print(L"face=%ls\nweight=%ld\nwidth=%ld\nheight=%ld\nfirst_glyph=%d\n", Escape(face).c_str(),
          metric.tmWeight, size.cx, size.cy, glyph == 0xFFFF ? -1 : static_cast<int>(glyph));
    SelectObject(dc, previous);
    DeleteObject(font);
    ReleaseDC(nullptr, dc);
    return kToolOk;
}
