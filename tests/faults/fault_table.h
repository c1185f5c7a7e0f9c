// The ways in which each function of Windows can fail.
#pragma once

#include <vector>

#include "faults/fault_injector.h"

struct FaultRow {
    const char* function;
    bool lookedUp;  // by GetProcAddress
    Failure failure;
};

// One row for each function and way.
std::vector<FaultRow> AllFaults();
