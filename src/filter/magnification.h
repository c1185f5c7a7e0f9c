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

// Sets the identity matrix if one can be set.
void SetIdentityMatrix();
