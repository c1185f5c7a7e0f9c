// The status strip between the sliders and the presets.
#pragma once

#include "win32/platform.h"

// Draws the content that CurrentStripContent returns. If the banner has been withdrawn, logs that once per
// run.
void DrawStatusStrip(HDC dc);
