#include "filter/gamma_range.h"

#include "win32/guards.h"

namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM";
constexpr wchar_t kValue[] = L"GdiIcmGammaRange";
constexpr DWORD kExpanded = 256;  // or more

}  // namespace

bool IsGammaRangeExpanded() {
    RegistryKey icm;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, icm.Out()) !=
        ERROR_SUCCESS) {
        return false;
    }
    DWORD type = 0;
    DWORD range = 0;
    DWORD bytes = sizeof(range);
    const LSTATUS status =
        RegQueryValueExW(icm.key, kValue, nullptr, &type, reinterpret_cast<BYTE*>(&range), &bytes);
    // The registry does not enforce the size of a REG_DWORD.
    return status == ERROR_SUCCESS && type == REG_DWORD && bytes == sizeof(range) && range >= kExpanded;
}

bool ExpandGammaRange() {
    RegistryKey icm;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, icm.Out(), nullptr) != ERROR_SUCCESS) {
        return false;
    }
    return RegSetValueExW(icm.key, kValue, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&kExpanded),
                          sizeof(kExpanded)) == ERROR_SUCCESS;
}
