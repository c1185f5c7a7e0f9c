// Replaces the registry in a test program with one key that has one value. The results of the calls are
// configurable. Records each call:
//     open HKCU SOFTWARE\Path options 0 access 0x1
//     query Name into 4 bytes
//     set Name type 4 00010000
//     close
#pragma once

#include <string>
#include <vector>

#include "support/seam.h"
#include "win32/platform.h"

AMBREL_USES_SEAMS(recorded_registry);

struct RecordedRegistry {
    LSTATUS openToQuery = ERROR_SUCCESS;
    LSTATUS openToSet = ERROR_SUCCESS;
    LSTATUS create = ERROR_SUCCESS;
    LSTATUS query = ERROR_SUCCESS;  // with it, a missing value is not found and a long one is "more data"
    LSTATUS set = ERROR_SUCCESS;
    LSTATUS remove = ERROR_SUCCESS;

    bool valueExists = false;
    DWORD type = REG_NONE;
    std::vector<BYTE> data;

    int openKeys = 0;  // opened or created and not closed yet
};

extern RecordedRegistry g_registry;

// A value of the type. The terminating zero of a string is part of the data.
void StoreValue(DWORD type, const std::vector<BYTE>& data);
void StoreNumber(DWORD number);
void StoreText(DWORD type, const std::wstring& text);
