// grant_key_access PATH all|read: lets everybody write to, or only read, a key of the current user. Exits
// with 0, or with 1 when that failed.
#include <cwchar>

#include "support/key_access.h"

int wmain(int count, wchar_t** arguments) {
    if (count != 3) return 1;
    const bool all = std::wcscmp(arguments[2], L"all") == 0;
    const wchar_t* const access = all ? kAllAccess : kReadOnlyAccess;
    return GrantAccess(HKEY_CURRENT_USER, arguments[1], access) == ERROR_SUCCESS ? 0 : 1;
}
