#include "diag/fake_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(fake_registry);

FakeRegistry g_keys;

namespace {

constexpr std::uintptr_t kFirstKey = 0x4B00;

LSTATUS WINAPI FakeRegOpenKeyEx(HKEY root, const wchar_t* path, DWORD options, REGSAM access, HKEY* key) {
    EXPECT_TRUE(root == HKEY_LOCAL_MACHINE || root == HKEY_CURRENT_USER);
    EXPECT_EQ(options, 0U);
    const std::wstring name = (root == HKEY_LOCAL_MACHINE ? L"HKLM\\" : L"HKCU\\") + std::wstring(path);
    if (!g_keys.keys.contains(name)) return ERROR_FILE_NOT_FOUND;
    *key = MakeHandle<HKEY>(kFirstKey + g_keys.opened.size());
    g_keys.opened.push_back({name, access});
    return ERROR_SUCCESS;
}

LSTATUS WINAPI FakeRegQueryValueEx(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data,
                                   DWORD* size) {
    EXPECT_EQ(reserved, nullptr);
    if (g_keys.queryAnswer != ERROR_SUCCESS) return g_keys.queryAnswer;
    RegistryValues& values = g_keys.keys[g_keys.opened.at(ValueOf(key) - kFirstKey).path];
    const auto found = values.find(name);
    if (found == values.end()) return ERROR_FILE_NOT_FOUND;
    const RegistryValue& value = found->second;
    const auto needed = static_cast<DWORD>(value.data.size());
    if (type != nullptr) *type = value.type;
    const DWORD room = size != nullptr ? *size : 0;
    if (size != nullptr) *size = needed;
    // Like Windows, leaves truncated data in the buffer if it does not fit.
    if (data != nullptr && needed > 0) std::memcpy(data, value.data.data(), std::min(needed, room));
    return data == nullptr || needed <= room ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

LSTATUS WINAPI FakeRegCloseKey(HKEY key) {
    EXPECT_LT(ValueOf(key) - kFirstKey, g_keys.opened.size());
    ++g_keys.closed;
    return ERROR_SUCCESS;
}

RegistryValue BytesOf(const std::wstring& text, DWORD type) {
    RegistryValue value{type, std::vector<BYTE>(text.size() * sizeof(wchar_t))};
    if (!text.empty()) std::memcpy(value.data.data(), text.data(), value.data.size());
    return value;
}

}  // namespace

AMBREL_SEAM(RegOpenKeyExW, FakeRegOpenKeyEx);
AMBREL_SEAM(RegQueryValueExW, FakeRegQueryValueEx);
AMBREL_SEAM(RegCloseKey, FakeRegCloseKey);

RegistryValue RegistryText(const std::wstring& text, DWORD type) {
    return BytesOf(text + L'\0', type);
}

RegistryValue UnterminatedText(const std::wstring& text) {
    return BytesOf(text, REG_SZ);
}

RegistryValue RegistryNumber(DWORD number) {
    RegistryValue value{REG_DWORD, std::vector<BYTE>(sizeof(number))};
    std::memcpy(value.data.data(), &number, sizeof(number));
    return value;
}
