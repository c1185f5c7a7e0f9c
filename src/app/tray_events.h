// Events from the notification area: clicks on the icon and the creation of the taskbar.
#pragma once

#include "win32/platform.h"

// The shell's message for the icon. `mouseMessage` is the mouse message that the icon received.
void OnTrayCallback(LPARAM mouseMessage);

// The taskbar was created again and lacks the icon. May arrive more than once.
void OnTaskbarCreated();

// Timer. Tries again to add the icon that could not be added at start-up, at most 20 times.
void OnTrayRetryTimer();
