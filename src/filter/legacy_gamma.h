// Legacy Mode's pipeline: a linear gamma ramp loaded into the displays. Windows may refuse a ramp, or accept
// it and load a different one. Each ramp of the filter is therefore read back and counted as accepted or
// rejected. Window thread only.
#pragma once

// Loads the linear gamma ramp for the current warmth and brightness and reads it back; with the filter off,
// loads the identity ramp. Ramp entries are 0..65535, 256 per channel, red first. A rejected ramp is counted,
// flagged, and logged when the result changes; no box is shown. The cursors are tinted in either case.
void ApplyLegacyRamp();

// Restores the cursors and loads the identity ramp, entry i = 257 i. A refusal is ignored; while the program
// terminates, the call is retried once.
void RestoreIdentityRamp();

// At the start: loads the identity ramp if the last run has terminated without doing so.
void ResetRampOfLastRun();
