#include "store/autostart.h"

#include "app/state/app_state.h"
#include "store/event_log.h"
#include "win32/guards.h"
#include "win32/program_path.h"

namespace {

constexpr wchar_t kRunKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kValueName[] = L"Ambrel2";

constexpr DWORD kTextCharacters = 1024;
constexpr DWORD kReadableBytes =
    (kTextCharacters - 1) * sizeof(wchar_t);  // leaves room for a missing terminator

bool OpenRunKey(RegistryKey* run, REGSAM access) {
    return RegOpenKeyExW(HKEY_CURRENT_USER, kRunKey, 0, access, run->Out()) == ERROR_SUCCESS;
}

bool ValueExists() {
    RegistryKey run;
    return OpenRunKey(&run, KEY_QUERY_VALUE) &&
           RegQueryValueExW(run.key, kValueName, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

// A path that is too long for the Run key is treated as a failed write, because a truncated one would launch
// nothing.
void WriteProgramPath(HKEY run) {
    const std::wstring path = ProgramPath();
    if (path.empty()) return;
    const auto bytes = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t));
    RegSetValueExW(run, kValueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(path.c_str()), bytes);
}

}  // namespace

std::wstring ReadAutostartValue() {
    RegistryKey run;
    if (!OpenRunKey(&run, KEY_QUERY_VALUE)) return {};
    wchar_t text[kTextCharacters] = {};
    DWORD type = 0;
    DWORD bytes = kReadableBytes;
    const LSTATUS status =
        RegQueryValueExW(run.key, kValueName, nullptr, &type, reinterpret_cast<BYTE*>(text), &bytes);
    if (status != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) return {};
    const auto characters = static_cast<DWORD>(bytes / sizeof(wchar_t));
    if (characters < kTextCharacters) text[characters] = L'\0';
    return text;
}

void SetAutostart(bool on) {
    RegistryKey run;
    if (OpenRunKey(&run, KEY_SET_VALUE)) {
        if (on) {
            WriteProgramPath(run.key);
        } else {
            RegDeleteValueW(run.key, kValueName);
        }
    }
    g_app.launchAtStart = on;
}

void RepairAutostartEntry() {
    if (!ValueExists() && !g_app.launchAtStart) return;
    const std::wstring text = ReadAutostartValue();
    if (text.empty()) {
        LogEvent("Autostart entry missing (INI says ON) - restoring");
    } else if (!IsProgramPath(text)) {
        LogEvent("Autostart entry pointed at '%ls' - rewriting to current exe", text.c_str());
    }
    SetAutostart(true);
}
