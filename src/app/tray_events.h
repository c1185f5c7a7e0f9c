// What comes from the notification area: clicks on the icon, its menu, and the taskbar's own comings and
// goings.
#pragma once

#include "win32/platform.h"

// The shell's message for the icon; `mouseMessage` is what happened to it.
void OnTrayCallback(LPARAM mouseMessage);

// The taskbar was created anew, and with it went the icon. May come more than once.
void OnTaskbarCreated();

// Timer: the icon could not be added at start-up and is tried again, at most 20 times.
void OnTrayRetryTimer();
