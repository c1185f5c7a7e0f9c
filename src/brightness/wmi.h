// Built-in panels through WMI. Each operation opens a connection and releases it. Each call blocks until WMI
// answers; on the window thread COM dispatches messages during the wait. COM must be initialised with the
// process-wide security that start-up sets. Window thread, or the release thread at the end of the session.
#pragma once

#include <cstdint>
#include <string>

#include "brightness/display_target.h"
#include "win32/platform.h"

#include <oleauto.h>

// Appends one target for each active panel, in the order of the query's results. Stops at the first failure.
void EnumerateWmiTargets(DisplayTargetList* list);

// Sets the active panel with the instance name to a percentage; above 100 is treated as 100. False if there
// is no such panel or WMI fails.
bool SetWmiBrightness(const std::wstring& name, std::uint32_t percent);

// Converts a panel's CurrentBrightness to 0..100. Drivers use different integer types; any other type reads
// as 0.
std::uint32_t PercentFromVariant(const VARIANT& value);
