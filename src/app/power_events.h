// Resume from sleep, and displays that were switched off and on again.
#pragma once

#include "win32/platform.h"

// Registers a window for the messages that OnPowerBroadcast decodes. On modern standby Windows reports
// neither a resume nor the state of the displays to an unregistered window. If a registration fails, the
// program only misses those events.
void RegisterPowerEvents(HWND window);

// Ends the registrations, if there are any.
void UnregisterPowerEvents();

// WM_POWERBROADCAST. `data` is the message's lParam: the address of a POWERBROADCAST_SETTING for
// PBT_POWERSETTINGCHANGE, ignored if it cannot be read.
void OnPowerBroadcast(WPARAM event, LPARAM data);
