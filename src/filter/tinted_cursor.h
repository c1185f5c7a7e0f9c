// One recoloured copy of a cursor.
#pragma once

#include "filter/model/cursor_pixels.h"
#include "win32/platform.h"

// A copy of the cursor with its colours scaled as the filter scales the screen's, at the same size and hot
// spot. A monochrome cursor becomes black and white first. The caller owns the copy. Null when the cursor is
// null, has no size, or cannot be rebuilt; nothing is leaked then.
HCURSOR BuildTintedCursor(HCURSOR cursor, double intensity, double brightness);

// The same with the filter's tables at hand, for a row of cursors.
HCURSOR BuildTintedCursor(HCURSOR cursor, const TintTables& tables);
