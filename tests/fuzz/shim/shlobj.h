#pragma once

#include <windows.h>

constexpr HRESULT S_OK = 0;
constexpr int CSIDL_APPDATA = 26;
HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD flags, wchar_t* path);
