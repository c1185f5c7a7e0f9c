// The Magnification API and the calls that load it, as the tests want them to be. Each call leaves a line in
// the record; each but a failing one leaves a last error that is nobody's, so that an error read too late is
// seen.
#pragma once

#include "support/seam.h"
#include "win32/platform.h"

#include <magnification.h>

#include <string>
#include <vector>

AMBREL_USES_SEAMS(fake_magnification);

constexpr DWORD kNobodysError = 7777;

struct FakeMagnification {
    DWORD loadError = 0;  // 0: the library loads
    bool hasInitialize = true;
    bool hasUninitialize = true;
    bool hasSetEffect = true;
    DWORD initializeError = 0;  // 0: the API initialises
    DWORD uninitializeError = 0;
    std::vector<DWORD> effectErrors;   // of the next matrices, one each; 0: accepted
    DWORD laterEffectErrors = 0;       // of every matrix after those
    std::vector<MAGCOLOREFFECT> seen;  // every matrix, refused ones too
    int modulesHeld = 0;               // loaded and not freed
    void (*duringBox)() = nullptr;     // what happens while a message box is open
};

extern FakeMagnification g_magnification;

// The handle of the loaded library.
HMODULE FakeModule();

// The state after a successful load, reached without the loader.
void PutFakeMagnificationInPlace();

// "matrix" lines read "identity matrix" for exactly that, and "matrix" for every other.
bool IsIdentity(const MAGCOLOREFFECT& effect);
