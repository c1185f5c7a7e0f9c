// The registry value that removes Windows' limit on strong gamma ramps. It takes effect after a restart.
#pragma once

// Whether the registry contains the expanded range. A value of another type, or one that cannot be read, is
// treated as missing.
bool IsGammaRangeExpanded();

// Writes the expanded range, which requires administrator rights. False if Windows refuses.
bool ExpandGammaRange();
