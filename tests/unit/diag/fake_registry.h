// A registry with several keys. Only the values of the test exist.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(fake_registry);

struct RegistryValue {
    DWORD type = REG_NONE;
    std::vector<BYTE> data;
};

struct OpenedKey {
    std::wstring path;
    REGSAM access = 0;
};

using RegistryValues = std::map<std::wstring, RegistryValue>;

struct FakeRegistry {
    std::map<std::wstring, RegistryValues> keys;  // "HKLM\Path" or "HKCU\Path"
    std::vector<OpenedKey> opened;
    std::size_t closed = 0;
    LSTATUS queryAnswer = ERROR_SUCCESS;  // of every query, unless ERROR_SUCCESS
};

extern FakeRegistry g_keys;

// Text with or without its terminating zero, and a number.
RegistryValue RegistryText(const std::wstring& text, DWORD type = REG_SZ);
RegistryValue UnterminatedText(const std::wstring& text);
RegistryValue RegistryNumber(DWORD number);
