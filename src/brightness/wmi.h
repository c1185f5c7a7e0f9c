// Built-in panels through WMI. Each operation opens its own connection and releases it; each call waits for
// WMI, and messages may be dispatched meanwhile. COM must be initialised with the process-wide security that
// start-up sets. Failures contribute nothing. For the window's thread, or the one that it waits for at the
// session's end.
#pragma once

#include <cstdint>
#include <string>

#include "brightness/display_target.h"
#include "win32/platform.h"

#include <oleauto.h>

// Appends one target for each active panel, in the order in which the query returns them.
void EnumerateWmiTargets(DisplayTargetList* list);

// Sets the panel of that instance name to a percentage; above 100 counts as 100. True when the method call
// succeeded.
bool SetWmiBrightness(const std::wstring& name, std::uint32_t percent);

// A panel's CurrentBrightness, 0..100, whatever integer type the driver gave it; other types read as 0.
std::uint32_t PercentFromVariant(const VARIANT& value);
