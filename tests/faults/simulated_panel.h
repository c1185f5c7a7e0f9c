// A built-in panel behind WMI. As strict as Windows: a call without a text that it requires fails.
#pragma once

#include <cstdint>

#include "win32/platform.h"

// What CoCreateInstance returns for WMI's locator, whose services have one active panel. The panel's
// brightness is g_platform.panelPercent.
HRESULT CreateWmiLocator(REFIID iid, void** object);

// The number of objects that the program has not released.
int UnreleasedWmiObjects();

// A part of the panel's instance name, which is also in its row of the restore record.
inline constexpr wchar_t kPanelName[] = L"SIM0001";
