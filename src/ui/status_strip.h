// The status strip between the sliders and the presets.
#pragma once

#include "win32/platform.h"

// Draws the content that CurrentStripContent returns. Logs once per run that the banner has been withdrawn.
void DrawStatusStrip(HDC dc);
