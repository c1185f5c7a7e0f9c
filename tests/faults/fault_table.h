// The ways in which each function of Windows can fail.
#pragma once

#include <vector>

#include "faults/fault_injector.h"

struct FaultRow {
    const char* function;
    bool lookedUp;  // by GetProcAddress
    Failure failure;
    const char* notReached = nullptr;  // why no session calls it
};

// One row for each function and way, or one in all for a function that no session calls.
std::vector<FaultRow> AllFaults();
