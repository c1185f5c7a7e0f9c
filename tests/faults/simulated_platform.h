// The parts of Windows that a console program in the lab lacks or that would wait for a user: gamma ramps,
// the colour matrix, a monitor, system cursors, the notification area, boxes, menus, timers and messages.
// They are set in the import table for the whole process and always succeed; a fault is injected in front of
// them.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "win32/platform.h"

struct SimulatedPlatform {
    std::uint16_t ramp[3][256] = {};
    bool refusesRamps = false;  // all but the identity
    bool matrixIsIdentity = true;
    DWORD monitorPercent = 40;
    bool monitorConnected = true;
    bool monitorMissesAnswers = false;  // every other one
    unsigned monitorAnswers = 0;
    bool cursorsReplaced = false;
    int boxes = 0;
    std::set<UINT_PTR> timers;
    UINT menuChoice = 0;             // of the next menu
    std::vector<void (*)()> script;  // steps, performed one by one while the queue is empty
    std::size_t nextStep = 0;
    int messagesSinceStep = 0;
    bool busyLoop = false;      // more messages between two steps than any of them causes
    bool scriptRanOut = false;  // the message loop continued after the last step
};

extern SimulatedPlatform g_platform;

void InstallSimulatedPlatform();

// A new platform: identity ramp, the monitor at 40 %.
void ResetSimulatedPlatform();

bool IsRampIdentity();

// The simulated function that the program looks up, or null for one of a real DLL.
void* SimulatedFunction(const char* name);
