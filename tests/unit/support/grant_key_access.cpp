// grant_key_access PATH all|read: grants everyone full or read-only access to a key of the current user.
// Exits with 0, or with 1 on failure.
#include <cwchar>

#include "support/key_access.h"

int wmain(int count, wchar_t** arguments) {
    if (count != 3) return 1;
    const bool all = std::wcscmp(arguments[2], L"all") == 0;
    const wchar_t* const access = all ? kAllAccess : kReadOnlyAccess;
    return GrantAccess(HKEY_CURRENT_USER, arguments[1], access) == ERROR_SUCCESS ? 0 : 1;
}
