// The floor of a query of the displays.
#pragma once

#include "win32/platform.h"

// Reads the brightness of every panel and monitor. Returns how many answered.
int FloorPoll();
