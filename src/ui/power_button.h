// The power button: the big on/off button of the main panel.
#pragma once

#include "win32/platform.h"

void DrawPowerButton(HDC dc);
