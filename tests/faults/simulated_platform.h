// The parts of Windows that a console program in the lab lacks or that would wait for a user: gamma ramps,
// the colour matrix, a monitor, a built-in panel, a second display, system cursors, the notification area,
// boxes, menus, timers and messages.
// They are set in the import table for the whole process and always succeed; a fault is injected in front of
// them.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "win32/platform.h"

struct SimulatedPlatform {
    std::uint16_t ramp[3][256] = {};
    std::uint16_t secondRamp[3][256] = {};  // of the second display
    bool secondDisplay = false;  // without DDC/CI; with it, only a display's own context takes ramps
    HDC displayContexts[2] = {};
    bool refusesRamps = false;  // all but the identity
    bool matrixIsIdentity = true;
    DWORD monitorPercent = 40;
    bool monitorConnected = true;
    bool monitorMissesAnswers = false;  // every other one
    unsigned monitorAnswers = 0;
    // A built-in panel, a decoder for pictures and a cursor that can only be copied as an icon. Without them
    // sessions are shorter.
    bool isComplete = false;
    DWORD panelPercent = 60;
    unsigned iconsRead = 0;
    bool isFirstInstance = true;
    bool refusesDpiAwareness = false;
    bool otherInForeground = false;  // a window of another thread, which keeps the foreground
    bool refusesPainting = false;    // once
    bool refusesClipboard = false;   // once
    bool cursorsReplaced = false;
    int boxes = 0;
    std::set<UINT_PTR> timers;
    UINT menuChoice = 0;             // of the next menu
    int answer = IDNO;               // to a question
    std::vector<void (*)()> script;  // steps, performed one by one while the queue is empty
    std::size_t nextStep = 0;
    int messagesSinceStep = 0;
    bool busyLoop = false;      // more messages between two steps than any of them causes
    bool scriptRanOut = false;  // the message loop continued after the last step
};

extern SimulatedPlatform g_platform;

void InstallSimulatedPlatform();

// One of the three cursors has no mask. CurrentGdiCounts cannot be used then.
void InstallCursorWithoutMask();

// A new platform: identity ramps, the monitor at 40 % and the panel at 60 %.
void ResetSimulatedPlatform();

// As the driver does in sleep: every display shows the identity ramp.
void DropRamps();

// Whether every display shows the identity ramp.
bool IsRampIdentity();

// The simulated function that the program looks up, or null for one of a real DLL.
void* SimulatedFunction(const char* name);
