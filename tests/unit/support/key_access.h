// The access to a registry key, as a security descriptor in SDDL: L"D:P(A;;KR;;;WD)" allows everyone to read
// and no one to write.
#pragma once

#include "win32/platform.h"

#include <sddl.h>

// The key must permit changes of its access (WD in the middle), so that the access can be restored.
inline constexpr wchar_t kAllAccess[] = L"D:P(A;;KA;;;WD)";
inline constexpr wchar_t kReadOnlyAccess[] = L"D:P(A;;KRWD;;;WD)";

inline LSTATUS GrantAccess(HKEY root, const wchar_t* path, const wchar_t* descriptor) {
    PSECURITY_DESCRIPTOR security = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(descriptor, SDDL_REVISION_1, &security,
                                                              nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    HKEY key = nullptr;
    LSTATUS status = RegOpenKeyExW(root, path, 0, WRITE_DAC, &key);
    if (status == ERROR_SUCCESS) {
        status = RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, security);
        RegCloseKey(key);
    }
    LocalFree(security);
    return status;
}

// Restricts the access to the key during its lifetime.
struct RestrictedKey {
    RestrictedKey(HKEY keyRoot, const wchar_t* keyPath, const wchar_t* descriptor)
        : root(keyRoot), path(keyPath), status(GrantAccess(root, path, descriptor)) {}
    ~RestrictedKey() { GrantAccess(root, path, kAllAccess); }
    RestrictedKey(const RestrictedKey&) = delete;
    RestrictedKey& operator=(const RestrictedKey&) = delete;

    HKEY root;
    const wchar_t* path;
    LSTATUS status;  // of restricting it
};
