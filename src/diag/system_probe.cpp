#include "diag/system_probe.h"

#include <algorithm>

#include "win32/format_text.h"
#include "win32/guards.h"
#include "win32/system_library.h"

namespace {

constexpr wchar_t kWindowsKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr wchar_t kCpuKey[] = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";
constexpr wchar_t kBiosKey[] = L"HARDWARE\\DESCRIPTION\\System\\BIOS";
constexpr wchar_t kCryptographyKey[] = L"SOFTWARE\\Microsoft\\Cryptography";

constexpr std::size_t kMaxTextCharacters = 2048;

// A REG_SZ value of an open key; empty when it is missing, has another type or exceeds kMaxTextCharacters.
// The stored data may lack the terminating zero.
std::wstring ReadText(HKEY key, const wchar_t* value) {
    wchar_t text[kMaxTextCharacters];
    DWORD type = 0;
    DWORD bytes = sizeof(text);
    const LSTATUS status =
        RegQueryValueExW(key, value, nullptr, &type, reinterpret_cast<BYTE*>(text), &bytes);
    if (status != ERROR_SUCCESS || type != REG_SZ) return {};
    return {text, std::find(text, text + bytes / sizeof(wchar_t), L'\0')};
}

std::wstring ReadNumberAsText(HKEY key, const wchar_t* value) {
    DWORD type = 0;
    DWORD number = 0;
    DWORD bytes = sizeof(number);
    const LSTATUS status =
        RegQueryValueExW(key, value, nullptr, &type, reinterpret_cast<BYTE*>(&number), &bytes);
    if (status != ERROR_SUCCESS || type != REG_DWORD || bytes != sizeof(number)) return {};
    wchar_t text[16];
    FormatText(text, "%lu", number);
    return text;
}

void ReadVersionNumbers(OsInfo* info) {
    using RtlGetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);
    const SystemLibrary ntdll(L"ntdll.dll");
    const auto rtlGetVersion = ntdll.Find<RtlGetVersionFunction>("RtlGetVersion");
    if (rtlGetVersion == nullptr) return;

    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (rtlGetVersion(&version) != 0) return;
    info->major = version.dwMajorVersion;
    info->minor = version.dwMinorVersion;
    info->build = version.dwBuildNumber;
}

}  // namespace

std::wstring CorrectProductName(std::wstring name, DWORD major, DWORD build) {
    constexpr wchar_t kWindows10[] = L"Windows 10";
    const std::size_t found = name.find(kWindows10);
    if (major == 10 && build >= 22000 && found != std::wstring::npos) {
        name.replace(found, std::size(kWindows10) - 1, L"Windows 11");
    }
    return name;
}

OsInfo ReadOsInfo() {
    OsInfo info;
    ReadVersionNumbers(&info);

    RegistryKey windows;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kWindowsKey, 0, KEY_READ | KEY_WOW64_64KEY, windows.Out()) ==
        ERROR_SUCCESS) {
        info.productName = CorrectProductName(ReadText(windows.key, L"ProductName"), info.major, info.build);
        info.displayVersion = ReadText(windows.key, L"DisplayVersion");
        info.updateRevision = ReadNumberAsText(windows.key, L"UBR");
    }
    return info;
}

std::wstring ReadCpuName() {
    RegistryKey cpu;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kCpuKey, 0, KEY_QUERY_VALUE, cpu.Out()) != ERROR_SUCCESS) {
        return kUnknown;
    }
    const std::wstring name = ReadText(cpu.key, L"ProcessorNameString");
    return name.empty() ? kUnknown : name;
}

std::wstring ReadMachineGuid() {
    RegistryKey cryptography;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kCryptographyKey, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY,
                      cryptography.Out()) != ERROR_SUCCESS) {
        return {};
    }
    return ReadText(cryptography.key, L"MachineGuid");
}

std::wstring ReadHardwareName() {
    RegistryKey bios;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kBiosKey, 0, KEY_QUERY_VALUE, bios.Out()) != ERROR_SUCCESS) {
        return kUnknown;
    }
    std::wstring manufacturer = ReadText(bios.key, L"SystemManufacturer");
    std::wstring product = ReadText(bios.key, L"SystemProductName");
    if (manufacturer.empty() && product.empty()) return kUnknown;
    if (manufacturer.empty()) return product;
    if (product.empty()) return manufacturer;
    return manufacturer + L" " + product;
}
