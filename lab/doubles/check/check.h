#pragma once

#include "../../tools/tool.h"

struct CheckCommand {
    const wchar_t* name;
    size_t argumentCount;  // The fewest arguments it takes.
    int (*run)(const Arguments& arguments);
};

// Prints one row of an answer: a line with a JSON array.
void PrintRow(const std::vector<Json>& values);

// What the checking program can be told. Each command prints rows and returns a ToolResult.

// monitors: what dxva2.dll says of every monitor of the first display monitor, handles destroyed at the end.
int ListMonitors(const Arguments& arguments);
// monitor-set INDEX VALUE
int SetMonitor(const Arguments& arguments);
// monitor-misuse: leaves all handles; monitor-misuse destroyed: uses and destroys one after its end
int MisuseMonitors(const Arguments& arguments);

// panels: what the brightness query finds.
int ListPanels(const Arguments& arguments);
// panel-set INSTANCE PERCENT
int SetPanel(const Arguments& arguments);
// panel-misuse object|value|argument|literal: leaves an object, a property's text or an argument's text, or
// passes text that is no BSTR.
int MisusePanels(const Arguments& arguments);
