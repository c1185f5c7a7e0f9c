#pragma once

#include "../../tools/tool.h"

struct CheckCommand {
    const wchar_t* name;
    size_t argumentCount;  // The minimum.
    int (*run)(const Arguments& arguments);
};

// Prints one row of the output: a line with a JSON array.
void PrintRow(const std::vector<Json>& values);

// The commands of the client. Each prints rows and returns a ToolResult.

// monitors: the values of every monitor of the first display monitor, read through dxva2.dll.
int ListMonitors(const Arguments& arguments);
// monitor-set INDEX VALUE
int SetMonitor(const Arguments& arguments);
// monitor-misuse: leaks all handles. monitor-misuse destroyed: uses and destroys a destroyed handle.
int MisuseMonitors(const Arguments& arguments);

// timer: whether a timer with the id 4 fires.
int TryTimer(const Arguments& arguments);

// panels: the results of the brightness query.
int ListPanels(const Arguments& arguments);
// panel-set INSTANCE PERCENT
int SetPanel(const Arguments& arguments);
// panel-misuse object|value|argument|literal: leaks an object, a property's string or an argument's string,
// or passes text that is not a BSTR.
int MisusePanels(const Arguments& arguments);
