// Holds timers of the program: with the line "timers" and the field "held" in the script, a comma-separated
// list of ids, the program's SetTimer succeeds for these ids and starts no timer. A test then decides when
// each one fires.
#include <string>

#include "../program_imports.h"
#include "script.h"

namespace {

bool IsHeld(UINT_PTR id) {
    const auto script = ReadScript();
    for (const Row& row : *script) {
        if (row.kind == "timers") {
            const std::wstring list = L"," + row.Text("held") + L",";
            return list.find(L"," + std::to_wstring(id) + L",") != std::wstring::npos;
        }
    }
    return false;
}

UINT_PTR WINAPI SetTimerUnlessHeld(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    if (!window || !IsHeld(id)) {
        return SetTimer(window, id, period, procedure);
    }
    KillTimer(window, id);
    return id;
}

ULONG_PTR g_before = 0;

}  // namespace

// Each double contains this file. The one that is loaded later takes the import over until it is unloaded.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    ULONG_PTR* const slot = FindImport("SetTimer");
    const ULONG_PTR own = reinterpret_cast<ULONG_PTR>(&SetTimerUnlessHeld);
    if (slot && reason == DLL_PROCESS_ATTACH) {
        g_before = *slot;
        Overwrite(slot, &own, sizeof(own));
    } else if (slot && reason == DLL_PROCESS_DETACH && *slot == own) {
        Overwrite(slot, &g_before, sizeof(g_before));
    }
    return TRUE;
}
