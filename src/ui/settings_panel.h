// The panel behind the gear: three switches and the support button.
#pragma once

#include "win32/platform.h"

// Draws the whole panel from AppState onto the canvas, over its background.
void DrawSettingsPanel(HDC dc);
