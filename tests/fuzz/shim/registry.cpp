// A registry whose every query has its own answer, so that a value can change between two of them.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "shim.h"

namespace {

std::vector<RegistryAnswer> g_answers;
std::size_t g_next = 0;

}  // namespace

void SetRegistry(std::vector<RegistryAnswer> answers) {
    g_answers = std::move(answers);
    g_next = 0;
}

LSTATUS RegOpenKeyExW(HKEY key, const wchar_t*, DWORD, REGSAM, HKEY* opened) {
    if (g_next >= g_answers.size()) return ERROR_FILE_NOT_FOUND;
    *opened = key;
    return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY) {
    return ERROR_SUCCESS;
}

LSTATUS RegQueryValueExW(HKEY, const wchar_t*, DWORD*, DWORD* type, BYTE* data, DWORD* bytes) {
    if (g_next >= g_answers.size()) return ERROR_FILE_NOT_FOUND;
    const RegistryAnswer& answer = g_answers[g_next++];
    const DWORD capacity = bytes != nullptr ? *bytes : 0;
    const DWORD size = static_cast<DWORD>(answer.data.size());
    if (type != nullptr) *type = answer.type;
    if (bytes != nullptr) *bytes = size;
    if (data == nullptr) return ERROR_SUCCESS;
    if (size > capacity) return ERROR_MORE_DATA;
    std::memcpy(data, answer.data.data(), size);
    return ERROR_SUCCESS;
}

LSTATUS RegSetValueExW(HKEY, const wchar_t*, DWORD, DWORD, const BYTE*, DWORD) {
    return ERROR_SUCCESS;
}

LSTATUS RegDeleteValueW(HKEY, const wchar_t*) {
    return ERROR_SUCCESS;
}
