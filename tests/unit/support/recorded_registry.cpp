#include "support/recorded_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(recorded_registry);

RecordedRegistry g_registry;

namespace {

HKEY const kKey = MakeHandle<HKEY>(0x4B0);

std::string RootName(HKEY root) {
    if (root == HKEY_CURRENT_USER) return "HKCU";
    return root == HKEY_LOCAL_MACHINE ? "HKLM" : "another root";
}

std::string Hex(REGSAM access) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%lx", access);
    return text;
}

std::string HexBytes(const BYTE* data, DWORD size) {
    std::string text;
    char pair[3];
    for (DWORD i = 0; i < size; ++i) {
        std::snprintf(pair, sizeof(pair), "%02x", data[i]);
        text += pair;
    }
    return text;
}

LSTATUS ReturnKey(LSTATUS answer, HKEY* key) {
    if (answer != ERROR_SUCCESS) return answer;
    ++g_registry.openKeys;
    *key = kKey;
    return answer;
}

LSTATUS WINAPI FakeRegOpenKeyEx(HKEY root, const wchar_t* path, DWORD options, REGSAM access, HKEY* key) {
    Record("open ", RootName(root), " ", Narrow(path), " options ", options, " access ", Hex(access));
    return ReturnKey((access & KEY_SET_VALUE) != 0 ? g_registry.openToSet : g_registry.openToQuery, key);
}

LSTATUS WINAPI FakeRegCreateKeyEx(HKEY root, const wchar_t* path, DWORD reserved, wchar_t* keyClass,
                                  DWORD options, REGSAM access, const LPSECURITY_ATTRIBUTES security,
                                  HKEY* key, DWORD* disposition) {
    EXPECT_EQ(reserved, 0U);
    EXPECT_TRUE(keyClass == nullptr && security == nullptr && disposition == nullptr);
    Record("create ", RootName(root), " ", Narrow(path), " options ", options, " access ", Hex(access));
    return ReturnKey(g_registry.create, key);
}

LSTATUS WINAPI FakeRegQueryValueEx(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data,
                                   DWORD* size) {
    EXPECT_EQ(key, kKey);
    EXPECT_EQ(reserved, nullptr);
    if (data != nullptr) {
        Record("query ", Narrow(name), " into ", *size, " bytes");
    } else {
        Record("query ", Narrow(name), " without a buffer", size != nullptr ? " but its size" : "");
    }
    if (g_registry.query != ERROR_SUCCESS) return g_registry.query;
    if (!g_registry.valueExists) return ERROR_FILE_NOT_FOUND;
    if (type != nullptr) *type = g_registry.type;
    if (data == nullptr) return ERROR_SUCCESS;
    const auto needed = static_cast<DWORD>(g_registry.data.size());
    const bool fits = needed <= *size;
    // Like Windows, may leave truncated data in the buffer if it does not fit.
    if (needed > 0) std::memcpy(data, g_registry.data.data(), std::min(needed, *size));
    *size = needed;
    return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

LSTATUS WINAPI FakeRegSetValueEx(HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data,
                                 DWORD size) {
    EXPECT_EQ(key, kKey);
    EXPECT_EQ(reserved, 0U);
    Record("set ", Narrow(name), " type ", type, " ", HexBytes(data, size));
    if (g_registry.set == ERROR_SUCCESS) StoreValue(type, {data, data + size});
    return g_registry.set;
}

LSTATUS WINAPI FakeRegDeleteValue(HKEY key, const wchar_t* name) {
    EXPECT_EQ(key, kKey);
    Record("delete ", Narrow(name));
    if (g_registry.remove == ERROR_SUCCESS) g_registry.valueExists = false;
    return g_registry.remove;
}

LSTATUS WINAPI FakeRegCloseKey(HKEY key) {
    EXPECT_EQ(key, kKey);
    Record("close");
    --g_registry.openKeys;
    return ERROR_SUCCESS;
}

}  // namespace

AMBREL_SEAM(RegOpenKeyExW, FakeRegOpenKeyEx);
AMBREL_SEAM(RegCreateKeyExW, FakeRegCreateKeyEx);
AMBREL_SEAM(RegQueryValueExW, FakeRegQueryValueEx);
AMBREL_SEAM(RegSetValueExW, FakeRegSetValueEx);
AMBREL_SEAM(RegDeleteValueW, FakeRegDeleteValue);
AMBREL_SEAM(RegCloseKey, FakeRegCloseKey);

void StoreValue(DWORD type, const std::vector<BYTE>& data) {
    g_registry.valueExists = true;
    g_registry.type = type;
    g_registry.data = data;
}

void StoreNumber(DWORD number) {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(&number);
    StoreValue(REG_DWORD, {bytes, bytes + sizeof(number)});
}

void StoreText(DWORD type, const std::wstring& text) {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    StoreValue(type, {bytes, bytes + (text.size() + 1) * sizeof(wchar_t)});
}
