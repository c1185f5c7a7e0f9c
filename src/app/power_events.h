// Resume from sleep, and displays that were switched off and on again.
#pragma once

#include "win32/platform.h"

// Registers a window for the messages that OnPowerBroadcast decodes. On modern standby Windows sends neither
// a resume nor the state of the displays to a window that has not registered. Where a registration fails, the
// program misses those events and nothing else.
void RegisterPowerEvents(HWND window);

// Ends the registrations. Does nothing without them.
void UnregisterPowerEvents();

// WM_POWERBROADCAST. `data` is the message's lParam: a POWERBROADCAST_SETTING for PBT_POWERSETTINGCHANGE.
void OnPowerBroadcast(WPARAM event, LPARAM data);
