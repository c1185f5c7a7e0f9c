// The header at the top of each panel.
#pragma once

#include "win32/platform.h"

// Fills the header band of a panel.
void FillHeaderBand(HDC dc);

// Draws the header band with the title and the subtitle; the gear and the dot are optional.
void DrawPanelHeader(HDC dc, const wchar_t* subtitle, COLORREF subtitleColour, bool showGear, bool showDot);
