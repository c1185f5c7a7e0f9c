// A recoloured copy of one cursor.
#pragma once

#include "filter/model/cursor_pixels.h"
#include "win32/guards.h"

// The device contexts in which several cursors are built one after the other.
struct [[nodiscard]] TintContexts {
    ScreenDc screen;
    MemoryDc memory{screen.dc};
};

// A copy of the cursor with its colours scaled as the filter scales the screen's, with the same size and hot
// spot. A monochrome cursor is first converted to black and white pixels. The caller owns the copy. Null if
// the cursor is null, has no size or cannot be rebuilt; nothing leaks in that case.
HCURSOR BuildTintedCursor(HCURSOR cursor, double intensity, double brightness);

// BuildTintedCursor for several cursors: they share the contexts and the tables, and the caller has queried
// each cursor's `source`.
HCURSOR BuildTintedCursor(HCURSOR cursor, const IconInfo& source, const TintContexts& contexts,
                          const TintTables& tables);
