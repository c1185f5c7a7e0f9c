// A complete start of the program without Windows. g_system contains the results of the fakes; the record
// contains the calls.
#pragma once

#include <string>
#include <vector>

#include "diag/system_probe.h"
#include "support/call_record.h"
#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(startup_fakes);

constexpr HRESULT kAwarenessSetAlready = static_cast<HRESULT>(0x80070005);

struct FakeSystem {
    OsInfo os;
    std::wstring hardware = L"Contoso Slate 7";
    std::wstring processor = L"Contoso CPU @ 2.00GHz";
    std::wstring settingsPath = L"C:\\Users\\Ada\\AppData\\Roaming\\Ambrel2\\settings.ini";

    bool gammaRangeExpanded = false;
    int helperExitCode = 0;

    HRESULT awarenessAnswer = S_OK;
    DWORD mutexError = ERROR_SUCCESS;
    bool mutexCreated = true;
    HWND firstInstancesWindow = nullptr;
    bool classRegistered = true;
    bool windowCreated = true;
    bool windowDestroyed = false;  // while it is created
    UINT windowDpi = 96;
    bool trayAccepts = true;
    std::vector<MSG> messages;  // before WM_QUIT
    WPARAM quitCode = 0;
    bool otherProgramQuits = false;
    int failingReads = 0;  // of the message queue, at first
    bool everyOtherReadFails = false;
    int reads = 0;

    // Arguments that Windows received.
    WNDCLASSEXW windowClass = {};
    std::wstring className;
    std::wstring windowClassName;
    std::wstring windowTitle;
    DWORD windowStyle = 0;
    DWORD windowExtendedStyle = 0;
    int windowX = 0;
    int windowY = 0;
    HWND windowParent = nullptr;
    HMENU windowMenu = nullptr;
    HINSTANCE windowInstance = nullptr;
    std::vector<LOGFONTW> fonts;
};

extern FakeSystem g_system;

inline HINSTANCE const kInstance = MakeHandle<HINSTANCE>(9);
inline HWND const kWindow = MakeHandle<HWND>(500);
inline HANDLE const kMutex = MakeHandle<HANDLE>(0x5005);

// Resets the state; every fake succeeds.
void ResetSystem();

// Runs the program until it exits. The command line includes the program's name.
int Start(const wchar_t* commandLine = L"\"C:\\Tools\\ambrel.exe\"");

// The recorded calls that start with the prefix.
CallRecord CallsStarting(const std::string& prefix);

// Whether the first call that starts with `earlier` precedes the first one that starts with `later`.
bool IsBefore(const std::string& earlier, const std::string& later);

void InstallShcore();
void InstallDwm();
