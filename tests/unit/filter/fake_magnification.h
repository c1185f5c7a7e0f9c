// Configurable fakes of the Magnification API and of the calls that load it. Records each call. Successful
// calls set an unrelated last error, so that an error that is read too late is detected.
#pragma once

#include "support/seam.h"
#include "win32/platform.h"

#include <magnification.h>

#include <string>
#include <vector>

AMBREL_USES_SEAMS(fake_magnification);

constexpr DWORD kUnrelatedError = 7777;

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
    void (*duringBox)() = nullptr;     // runs while a message box is open
};

extern FakeMagnification g_magnification;

// The handle of the loaded library.
HMODULE FakeModule();

// Sets the state after a successful load, without the loader.
void InstallFakeMagnification();

// Recorded as "identity matrix" if it is exactly that, and as "matrix" otherwise.
bool IsIdentity(const MAGCOLOREFFECT& effect);
