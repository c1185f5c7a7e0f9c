#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include "json.h"

// The words after a command's name, from the command line or from one line of the resident tool's input.
using Arguments = std::vector<std::wstring>;

// The result of a command, and the process exit code of a single command.
enum ToolResult : int {
    kToolOk = 0,
    kToolNotFound = 1,
    kToolFailed = 2,
    kToolUsage = 3,
};

struct Command {
    const wchar_t* name;
    size_t argumentCount;  // The minimum.
    int (*run)(const Arguments& arguments, Json& answer);
};

// Runs the named command. Returns kToolUsage for an unknown name or too few arguments. `answer` stays null if
// the command has no output.
int RunCommand(const std::wstring& name, const Arguments& arguments, Json& answer);

// Writes bytes (UTF-8) to standard output unchanged.
void PrintBytes(const std::string& bytes);
void FlushOutput();
// Reports to the lab that a command which keeps running is ready.
void PrintReady();

std::wstring FromUtf8(const std::string& text);
std::string ToUtf8(const std::wstring& text);

// How long a command waits for another program, in ms. Less than the lab waits for the command.
constexpr UINT kAnswerTimeoutMs = 20000;

// Decimal, or hexadecimal with 0x; a minus sign is allowed. 0 if the text is not a number.
long long Number(const std::wstring& text);

// Finds a window by its handle (0x...) or by its class. Null if it does not exist.
HWND FindTarget(const std::wstring& target);
// The handle as "0x...".
std::wstring HandleText(HWND window);

// The commands. Their arguments and output are documented at their definitions.
int Serve(const Arguments& arguments, Json& answer);
int ShowAccessible(const Arguments& arguments, Json& answer);
int PressAccessible(const Arguments& arguments, Json& answer);
int SetAccessibleValue(const Arguments& arguments, Json& answer);
int SelectAccessible(const Arguments& arguments, Json& answer);
int HitAccessible(const Arguments& arguments, Json& answer);
int NavigateAccessible(const Arguments& arguments, Json& answer);
int HoldAccessible(const Arguments& arguments, Json& answer);
int ReportEvents(const Arguments& arguments, Json& answer);
int CallAtRandom(const Arguments& arguments, Json& answer);
int ListWindows(const Arguments& arguments, Json& answer);
int DescribeWindow(const Arguments& arguments, Json& answer);
int SendToWindow(const Arguments& arguments, Json& answer);
int SendWithData(const Arguments& arguments, Json& answer);
int SendAtRandom(const Arguments& arguments, Json& answer);
int ListBoxes(const Arguments& arguments, Json& answer);
int PressButton(const Arguments& arguments, Json& answer);
int ListTrayIcons(const Arguments& arguments, Json& answer);
int GetClipboardText(const Arguments& arguments, Json& answer);
int SetClipboardText(const Arguments& arguments, Json& answer);
int HoldClipboard(const Arguments& arguments, Json& answer);
int ChangeMode(const Arguments& arguments, Json& answer);
int ShowMetrics(const Arguments& arguments, Json& answer);
int TakeForeground(const Arguments& arguments, Json& answer);
int DescribeProcess(const Arguments& arguments, Json& answer);
int FindMutex(const Arguments& arguments, Json& answer);
int HoldMutex(const Arguments& arguments, Json& answer);
int RegistryGet(const Arguments& arguments, Json& answer);
int RegistrySet(const Arguments& arguments, Json& answer);
int RegistryDelete(const Arguments& arguments, Json& answer);
int InjectLibrary(const Arguments& arguments, Json& answer);
int CallMagnification(const Arguments& arguments, Json& answer);
int MeasureText(const Arguments& arguments, Json& answer);
