#include "tool.h"

// mode WIDTH HEIGHT: changes the desktop's mode; the result is 0 if Windows accepts it.
int ChangeMode(const Arguments& arguments, Json& answer) {
    DEVMODEW mode = {};
    mode.dmSize = sizeof(mode);
    mode.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;
    mode.dmPelsWidth = static_cast<DWORD>(Number(arguments[0]));
    mode.dmPelsHeight = static_cast<DWORD>(Number(arguments[1]));
    const LONG result = ChangeDisplaySettingsW(&mode, 0);
    answer = JsonObject({{"result", result}});
    return result == DISP_CHANGE_SUCCESSFUL ? kToolOk : kToolFailed;
}

// The desktop's size, work area and DPI, and the position of the pointer.
int ShowMetrics(const Arguments&, Json& answer) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY), &monitor);
    const RECT& work = monitor.rcWork;
    POINT cursor = {};
    GetCursorPos(&cursor);
    answer = JsonObject({{"width", GetSystemMetrics(SM_CXSCREEN)},
                         {"height", GetSystemMetrics(SM_CYSCREEN)},
                         {"work_left", work.left},
                         {"work_top", work.top},
                         {"work_right", work.right},
                         {"work_bottom", work.bottom},
                         {"dpi", GetDpiForSystem()},
                         {"cursor_x", cursor.x},
                         {"cursor_y", cursor.y}});
    return kToolOk;
}

// measure FACE HEIGHT WEIGHT TEXT: the font that GDI selects for the text, and the text's size.
int MeasureText(const Arguments& arguments, Json& answer) {
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
    answer = JsonObject({{"face", face},
                         {"weight", metric.tmWeight},
                         {"width", size.cx},
                         {"height", size.cy},
                         {"first_glyph", glyph == 0xFFFF ? -1 : static_cast<int>(glyph)}});
    SelectObject(dc, previous);
    DeleteObject(font);
    ReleaseDC(nullptr, dc);
    return kToolOk;
}
