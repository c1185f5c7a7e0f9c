// The automatic fallback to Legacy Mode, for graphics that do not support the colour matrix. Window thread
// only.
#pragma once

#include "win32/platform.h"

// A matrix was refused with this error code. The second consecutive error 87 switches to Legacy Mode, applies
// its ramp, saves the settings and posts the notice, unless SuppressFallback was called. Any other error, and
// in that case error 87 as well, is posted to be shown once per run.
void OnMatrixRefused(DWORD error);

// A matrix was accepted: restarts the count of consecutive errors.
void OnMatrixAccepted();

// The user has chosen the modern pipeline: no automatic fallback for the rest of the run.
void SuppressFallback();
