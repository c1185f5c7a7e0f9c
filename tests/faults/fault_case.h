// One session in which a function fails, and what it must leave behind.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "faults/fault_table.h"
#include "faults/script.h"

struct Case {
    const FaultRow* row;  // null: nothing fails
    Occasion occasion;
    End end;
    bool isShort;  // the short form of the script
};

struct Outcome {
    std::uint32_t calls;
    std::vector<std::string> faults;
};

bool IsAnyOf(const Case& each, std::initializer_list<const char*> functions);

// Requires that the session has restored screen, cursors and displays, and has released its objects.
void CheckRestored(const Case& each, Outcome* outcome);

// Requires that the old log is kept and that no line of the session's log is untrue.
void CheckLog(const Case& each, Outcome* outcome);
