// The modern pipeline: a full-screen colour matrix set through the Magnification API, which is loaded at run
// time so that the program starts on systems without it. Window thread only.
#pragma once

#include "win32/platform.h"

struct MatrixResult {
    bool accepted;
    DWORD error;  // GetLastError of a refused matrix
};

// Loads and initialises the API. Does nothing in Legacy Mode, while the program is terminating, or if the API
// is already initialised. A failure is shown in one message box and leaves the pipeline without effect.
void InitMagnification();

// Sets the identity matrix, uninitialises the API and unloads it; skips steps that were never performed.
void ShutdownMagnification();

// Whether a matrix can be set.
bool IsMagnificationUsable();

// Sets the matrix for the current warmth and brightness. Requires IsMagnificationUsable().
MatrixResult SetFilterMatrix();

// Sets the identity matrix. False if no matrix can be set or Windows refuses this one.
bool SetIdentityMatrix();

// Removes a filter matrix that is still applied, before the other pipeline is used. If Windows refuses
// the identity matrix as well, uninitialises and reinitialises the API; the library stays loaded. Does
// nothing if no filter matrix is applied.
void RemoveAppliedMatrix();
