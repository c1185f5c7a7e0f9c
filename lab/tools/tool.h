#pragma once

#include <string>
#include <vector>

#include <windows.h>

// The words after a command's name, as given on the command line or by one line of the resident tool's input.
using Arguments = std::vector<std::wstring>;

// What a command answers besides its output; it is also the process exit code of a single command.
enum ToolResult : int {
    kToolOk = 0,
    kToolNotFound = 1,
    kToolFailed = 2,
    kToolUsage = 3,
};

struct Command {
    const wchar_t* name;
    size_t argumentCount;  // The fewest arguments it takes.
    int (*run)(const Arguments& arguments);
};

// Runs the named command; an unknown name or too few arguments give kToolUsage.
int RunCommand(const std::wstring& name, const Arguments& arguments);

// Prints formatted wide text to standard output as UTF-8. At most 64 KiB of text a call; longer text is cut.
void Print(const wchar_t* format, ...);
// Prints text of any length as it is.
void PrintText(const std::wstring& text);
void FlushOutput();

// Tab, line feed, carriage return and backslash as \t \n \r \\ so that a value stays one field of one line.
std::wstring Escape(const std::wstring& text);
std::wstring Unescape(const std::wstring& text);

std::wstring FromUtf8(const std::string& text);
std::string ToUtf8(const std::wstring& text);

// Decimal, or hexadecimal with 0x; a minus sign is allowed. What is not a number counts as 0.
long long Number(const std::wstring& text);

// A window named by its handle (0x...) or by its class; null when there is none.
HWND FindTarget(const std::wstring& target);

int Serve(const Arguments& arguments);
int ListWindows(const Arguments& arguments);
int ShowWindowFacts(const Arguments& arguments);
int SendToWindow(const Arguments& arguments);
int ListBoxes(const Arguments& arguments);
int PressButton(const Arguments& arguments);
int ListTrayIcons(const Arguments& arguments);
int GetClipboardText(const Arguments& arguments);
int SetClipboardText(const Arguments& arguments);
int HoldClipboard(const Arguments& arguments);
int ChangeMode(const Arguments& arguments);
int ShowMetrics(const Arguments& arguments);
int TakeForeground(const Arguments& arguments);
int ShowProcessFacts(const Arguments& arguments);
int RegistryGet(const Arguments& arguments);
int RegistrySet(const Arguments& arguments);
int RegistryDelete(const Arguments& arguments);
int InjectLibrary(const Arguments& arguments);
int CallMagnification(const Arguments& arguments);
int MeasureText(const Arguments& arguments);
