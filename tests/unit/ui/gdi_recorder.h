// GDI without a screen: seams replace every GDI call of the drawing code, gdi_tracker.h tracks objects and
// device contexts, and each drawing operation is recorded as a line such as
//     fill (0,0)-(320,56) #191919
//     round (73,102)-(87,310) corner 4x4 pen 2 #000000 fill #000000
//     text "WARMTH" Caption #FF0000 (10,65)-(150,87) centre middle
// expected_drawing.h builds the same lines from literal numbers. Empty fills and empty texts are not
// recorded.
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
    bool paintFails = false;  // BeginPaint
    bool bitmapsFail = false;
};

extern GdiRecorder g_gdi;

// Resets the recorder and sets AppState's fonts to handles named after their roles.
void ResetGdi();

HDC ScreenContext();

// The clip of a context, as SelectClipRgn's line shows it; "none" at the start.
std::string ClipOf(HDC dc);
void SetClipOf(HDC dc, const std::string& clip);

// The recorded problems, and the objects and contexts that are not deleted or still selected. Empty after
// clean drawing.
Drawing GdiLeftovers();

// Names a handle that the test puts into AppState.
HICON NamedIcon(const std::string& name);
