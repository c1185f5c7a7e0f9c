// Simulates an extended desktop for a program that was started with one display. This library is injected
// into the program (see tools/inject.cpp) and replaces the program's imports that enumerate displays and
// access gamma ramps. It behaves like Windows since version 1903: with several displays the device context of
// the whole screen refuses every ramp. Each display's own context accepts the ramps that
// C:\lab\displays.script defines.
//
// The script is read at every call. It contains one word per display: "everything", "identity" (no other
// ramp), or "nothing". The first display is the lab's screen. The ramps of the others are stored in the files
// C:\lab\displays.ramp.NUMBER.
#include <windows.h>

#include "program_imports.h"
#include "script_file.h"

#include <cstring>
#include <cwchar>

namespace {

constexpr wchar_t kScriptPath[] = L"C:\\lab\\displays.script";
constexpr int kMaxDisplays = 8;
constexpr int kMaxContexts = 16;

struct Ramp {
    WORD channels[3][256];
};

enum class Accepts { Everything, Identity, Nothing };

struct Desktop {
    int count;
    Accepts displays[kMaxDisplays];
};

// A device context that was created for a display. It is a context of the lab's screen.
struct Context {
    HDC dc;
    int display;
};

Context g_contexts[kMaxContexts];

Desktop ReadDesktop() {
    char text[256] = {};
    ReadScriptFile(kScriptPath, text);
    Desktop desktop = {};
    char* rest = nullptr;
    for (const char* word = strtok_s(text, " \r\n", &rest); word && desktop.count < kMaxDisplays;
         word = strtok_s(nullptr, " \r\n", &rest)) {
        Accepts& accepts = desktop.displays[desktop.count++];
        accepts = std::strcmp(word, "everything") == 0 ? Accepts::Everything
                  : std::strcmp(word, "identity") == 0 ? Accepts::Identity
                                                       : Accepts::Nothing;
    }
    return desktop;
}

// The index of the context's display; -1 for the context of the whole screen.
int DisplayOf(HDC dc) {
    for (const Context& context : g_contexts) {
        if (dc && context.dc == dc) {
            return context.display;
        }
    }
    return -1;
}

Ramp IdentityRamp() {
    Ramp ramp;
    for (auto& channel : ramp.channels) {
        for (int i = 0; i < 256; ++i) {
            channel[i] = static_cast<WORD>(257 * i);
        }
    }
    return ramp;
}

struct Path {
    wchar_t text[MAX_PATH];
};

Path RampPath(int display) {
    Path path = {};
    wsprintfW(path.text, L"C:\\lab\\displays.ramp.%d", display + 1);
    return path;
}

BOOL ReadRamp(int display, Ramp* ramp) {
    *ramp = IdentityRamp();
    const HANDLE file = CreateFileW(RampPath(display).text, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        DWORD size = 0;
        ReadFile(file, ramp, sizeof(*ramp), &size, nullptr);
        CloseHandle(file);
    }
    return TRUE;
}

// Replaces the file in one step, because the tests read it while the program runs.
BOOL WriteRamp(int display, const Ramp& ramp) {
    const wchar_t* const incomplete = L"C:\\lab\\displays.incomplete";
    const HANDLE file = CreateFileW(incomplete, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return FALSE;
    }
    DWORD size = 0;
    const BOOL written = WriteFile(file, &ramp, sizeof(ramp), &size, nullptr);
    CloseHandle(file);
    return written && MoveFileExW(incomplete, RampPath(display).text, MOVEFILE_REPLACE_EXISTING);
}

bool AcceptsRamp(const Desktop& desktop, int display, const Ramp& ramp) {
    if (display < 0) {
        return desktop.count < 2;
    }
    const Ramp identity = IdentityRamp();
    return desktop.displays[display] == Accepts::Everything ||
           (desktop.displays[display] == Accepts::Identity &&
            std::memcmp(&ramp, &identity, sizeof(ramp)) == 0);
}

BOOL WINAPI EnumDisplayDevicesOfDesktop(LPCWSTR device, DWORD index, DISPLAY_DEVICEW* found, DWORD flags) {
    const Desktop desktop = ReadDesktop();
    if (device || desktop.count == 0) {
        return EnumDisplayDevicesW(device, index, found, flags);
    }
    if (index >= static_cast<DWORD>(desktop.count) || found->cb < sizeof(*found)) {
        return FALSE;
    }
    *found = {};
    found->cb = sizeof(*found);
    wsprintfW(found->DeviceName, L"\\\\.\\DISPLAY%lu", index + 1);
    lstrcpyW(found->DeviceString, L"Lab display");
    found->StateFlags =
        DISPLAY_DEVICE_ATTACHED_TO_DESKTOP | (index == 0 ? DWORD{DISPLAY_DEVICE_PRIMARY_DEVICE} : 0);
    return TRUE;
}

HDC WINAPI CreateDcOfDesktop(LPCWSTR driver, LPCWSTR device, LPCWSTR, const DEVMODEW*) {
    const Desktop desktop = ReadDesktop();
    int number = 0;
    // Without a device name Windows uses the primary display.
    if (driver && device && swscanf(device, L"\\\\.\\DISPLAY%d", &number) == 1) {
        --number;
    }
    if (number < 0 || number >= desktop.count) {
        return nullptr;
    }
    for (Context& context : g_contexts) {
        if (!context.dc) {
            context = {CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr), number};
            return context.dc;
        }
    }
    return nullptr;
}

BOOL WINAPI DeleteDcOfDesktop(HDC dc) {
    for (Context& context : g_contexts) {
        if (dc && context.dc == dc) {
            context = {};
        }
    }
    return DeleteDC(dc);
}

BOOL WINAPI SetRampOfDesktop(HDC dc, LPVOID data) {
    const int display = DisplayOf(dc);
    const Ramp& ramp = *static_cast<const Ramp*>(data);
    if (!AcceptsRamp(ReadDesktop(), display, ramp)) {
        return FALSE;
    }
    return display < 1 ? SetDeviceGammaRamp(dc, data) : WriteRamp(display, ramp);
}

BOOL WINAPI GetRampOfDesktop(HDC dc, LPVOID data) {
    const int display = DisplayOf(dc);
    return display < 1 ? GetDeviceGammaRamp(dc, data) : ReadRamp(display, static_cast<Ramp*>(data));
}

void ReplaceImports() {
    const struct {
        const char* name;
        void* replacement;
    } replacements[] = {
        {"EnumDisplayDevicesW", reinterpret_cast<void*>(&EnumDisplayDevicesOfDesktop)},
        {"CreateDCW", reinterpret_cast<void*>(&CreateDcOfDesktop)},
        {"DeleteDC", reinterpret_cast<void*>(&DeleteDcOfDesktop)},
        {"SetDeviceGammaRamp", reinterpret_cast<void*>(&SetRampOfDesktop)},
        {"GetDeviceGammaRamp", reinterpret_cast<void*>(&GetRampOfDesktop)},
    };
    for (const auto& each : replacements) {
        if (ULONG_PTR* slot = FindImport(each.name)) {
            Overwrite(slot, &each.replacement, sizeof(each.replacement));
        }
    }
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        ReplaceImports();
    }
    return TRUE;
}
