// The modern pipeline: a full-screen colour matrix set through the Magnification API, which is loaded at run
// time so that the program starts on systems without it. Window thread only.
#pragma once

#include "win32/platform.h"

struct MatrixResult {
    bool accepted;
    DWORD error;  // GetLastError of a refused matrix
};

// Loads and initialises the API. Does nothing in Legacy Mode, at the program's end or when that is done
// already. A failure is shown in one message box and leaves the pipeline inert.
void InitMagnification();

// Sets the identity matrix, uninitialises and unloads the API, each as far as it was done.
void ShutdownMagnification();

// True when a matrix can be set.
bool IsMagnificationUsable();

// Sets the matrix of the current warmth and brightness. Only when IsMagnificationUsable().
MatrixResult SetFilterMatrix();

// Sets the identity matrix. False when no matrix can be set or Windows refuses this one.
bool SetIdentityMatrix();

// Removes a filter matrix that is still in force, before another pipeline takes over. When Windows refuses
// the identity matrix as well, the API is uninitialised and initialised again; the library stays loaded. Does
// nothing when no filter matrix is in force.
void RemoveMatrixInForce();
