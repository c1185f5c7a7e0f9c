// Legacy Mode's pipeline: a linear gamma ramp loaded into the displays. Windows may refuse a ramp, or accept
// it and load another, so every ramp of the filter is counted as accepted or rejected, by what Windows
// answers and by reading it back. Window thread only.
#pragma once

// Loads the linear gamma ramp for the current warmth and brightness into the display and reads it back.
// Ramp entries are 0..65535, 256 a channel, red first; with the filter off it is the identity.
// A refused ramp is counted and flagged, and logged once per change of result; it never opens a box. The
// cursors are tinted either way.
void ApplyLegacyRamp();

// Restores the cursors and loads the identity ramp, entry i = 257 i. A refusal is ignored.
void RestoreIdentityRamp();
