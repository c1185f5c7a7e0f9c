// The registry value that lifts Windows' limit on strong gamma ramps. It takes effect after a restart.
#pragma once

// True when the registry holds the lifted limit. A value of another type, or one that cannot be read, is
// none.
bool IsGammaRangeExpanded();

// Writes the lifted limit, which requires administrator rights. False when Windows refuses.
bool ExpandGammaRange();
