#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include "json.h"

// The words after a command's name, as given on the command line or by one line of the resident tool's input.
using Arguments = std::vector<std::wstring>;

// How a command ended; it is also the process exit code of a single command.
enum ToolResult : int {
    kToolOk = 0,
    kToolNotFound = 1,
    kToolFailed = 2,
    kToolUsage = 3,
};

struct Command {
    const wchar_t* name;
    size_t argumentCount;  // The fewest arguments it takes.
    int (*run)(const Arguments& arguments, Json& answer);
};

// Runs the named command; an unknown name or too few arguments give kToolUsage. `answer` stays null when
// there is nothing to tell.
int RunCommand(const std::wstring& name, const Arguments& arguments, Json& answer);

// Prints UTF-8 to standard output as it is.
void PrintBytes(const std::string& bytes);
void FlushOutput();
// Tells the lab that a command which stays has done what it was started for.
void PrintReady();

std::wstring FromUtf8(const std::string& text);
std::string ToUtf8(const std::wstring& text);

// Decimal, or hexadecimal with 0x; a minus sign is allowed. What is not a number counts as 0.
long long Number(const std::wstring& text);

// A window named by its handle (0x...) or by its class; null when there is none.
HWND FindTarget(const std::wstring& target);
// The handle as "0x...".
std::wstring HandleText(HWND window);

int Serve(const Arguments& arguments, Json& answer);
int ListWindows(const Arguments& arguments, Json& answer);
int ShowWindowFacts(const Arguments& arguments, Json& answer);
int SendToWindow(const Arguments& arguments, Json& answer);
int SendWithData(const Arguments& arguments, Json& answer);
int ListBoxes(const Arguments& arguments, Json& answer);
int PressButton(const Arguments& arguments, Json& answer);
int ListTrayIcons(const Arguments& arguments, Json& answer);
int GetClipboardText(const Arguments& arguments, Json& answer);
int SetClipboardText(const Arguments& arguments, Json& answer);
int HoldClipboard(const Arguments& arguments, Json& answer);
int ChangeMode(const Arguments& arguments, Json& answer);
int ShowMetrics(const Arguments& arguments, Json& answer);
int TakeForeground(const Arguments& arguments, Json& answer);
int ShowProcessFacts(const Arguments& arguments, Json& answer);
int RegistryGet(const Arguments& arguments, Json& answer);
int RegistrySet(const Arguments& arguments, Json& answer);
int RegistryDelete(const Arguments& arguments, Json& answer);
int InjectLibrary(const Arguments& arguments, Json& answer);
int CallMagnification(const Arguments& arguments, Json& answer);
int MeasureText(const Arguments& arguments, Json& answer);
