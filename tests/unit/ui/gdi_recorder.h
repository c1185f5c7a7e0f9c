// GDI without a screen: every call of the drawing code is taken at the import seam, objects and device
// contexts are kept in books, and what would be drawn becomes a list of lines such as
//     fill (0,0)-(320,56) #191919
//     round (73,102)-(87,310) corner 4x4 pen 2 #000000 fill #000000
//     text "WARMTH" Caption #FF0000 (10,65)-(150,87) centre middle
// expected_drawing.h makes the same lines from literal numbers. Fills of nothing and empty texts leave no
// line.
#pragma once

#include <string>
#include <vector>

#include "win32/platform.h"

using Drawing = std::vector<std::string>;

struct GdiRecorder {
    Drawing drawn;
    Drawing problems;    // objects deleted twice, deleted while selected, unknown handles
    int textWidth = 50;  // of every text that is measured
    SIZE client = {320, 540};
    bool bitmapsFail = false;
};

extern GdiRecorder g_gdi;

// Forgets everything and fills AppState's fonts with handles named after their roles.
void ResetGdi();

HDC ScreenContext();

// The clip of a context, as SelectClipRgn's line shows it; "none" at the start.
std::string ClipOf(HDC dc);
void SetClipOf(HDC dc, const std::string& clip);

// What is wrong with the books: the problems met, objects not deleted, contexts not deleted, objects still
// selected. Empty after clean drawing.
Drawing GdiLeftovers();

// Names a handle that the test puts into AppState.
HICON NamedIcon(const std::string& name);
