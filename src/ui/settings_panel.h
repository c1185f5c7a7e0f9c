// The settings panel, opened with the gear: three switches and the support button.
#pragma once

#include "win32/platform.h"

// Draws the whole panel from AppState onto the canvas.
void DrawSettingsPanel(HDC dc);
