// The part of Windows that the fuzzed sources mention: types as wide as Windows' own, and declarations.
// windows.cpp and the files beside it define the functions that the fuzzed code calls; the others only let
// the program's headers compile.
#pragma once

#include <cstddef>
#include <cstdint>

static_assert(sizeof(wchar_t) == 2, "compile with -fshort-wchar");

#define WINAPI
#define CALLBACK
#define TRUE 1
#define FALSE 0
#define MAX_PATH 260

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using UINT = std::uint32_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using LSTATUS = LONG;
using HRESULT = LONG;
using SIZE_T = std::size_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using REGSAM = DWORD;
using GUID = struct GuidStruct;
using REFIID = const GUID&;

#define DECLARE_HANDLE(name) using name = struct name##Struct*
using HANDLE = void*;
using HGDIOBJ = void*;
using HGLOBAL = HANDLE;
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HDC);
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HBRUSH);
DECLARE_HANDLE(HFONT);
DECLARE_HANDLE(HBITMAP);
DECLARE_HANDLE(HRGN);
DECLARE_HANDLE(HICON);
DECLARE_HANDLE(HKEY);
DECLARE_HANDLE(HMONITOR);
DECLARE_HANDLE(HPOWERNOTIFY);
using HMODULE = HINSTANCE;
using HCURSOR = HICON;

struct RECT {
    LONG left, top, right, bottom;
};

struct SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

struct OSVERSIONINFOW {
    DWORD dwOSVersionInfoSize, dwMajorVersion, dwMinorVersion, dwBuildNumber;
};

struct ICONINFO {
    HBITMAP hbmMask, hbmColor;
};

struct SRWLOCK {
    bool held;
};
#define SRWLOCK_INIT \
    { false }

constexpr WORD PROCESSOR_ARCHITECTURE_INTEL = 0;
constexpr WORD PROCESSOR_ARCHITECTURE_ARM = 5;
constexpr WORD PROCESSOR_ARCHITECTURE_AMD64 = 9;
constexpr WORD PROCESSOR_ARCHITECTURE_ARM64 = 12;

// Only for the program's headers.
BOOL DeleteObject(HGDIOBJ object);
HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
HDC GetDC(HWND window);
int ReleaseDC(HWND window, HDC dc);
HDC CreateDCW(const wchar_t* driver, const wchar_t* device, const wchar_t* output, const void* mode);
HDC CreateCompatibleDC(HDC dc);
BOOL DeleteDC(HDC dc);
HRGN CreateRectRgn(int left, int top, int right, int bottom);
int GetClipRgn(HDC dc, HRGN region);
int SelectClipRgn(HDC dc, HRGN region);
constexpr UINT GMEM_MOVEABLE = 2;
HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);
HGLOBAL GlobalFree(HGLOBAL block);
BOOL OpenClipboard(HWND owner);
BOOL CloseClipboard();
BOOL GetIconInfo(HICON icon, ICONINFO* info);
BOOL FreeLibrary(HMODULE module);
void* GetProcAddress(HMODULE module, const char* name);

void AcquireSRWLockExclusive(SRWLOCK* lock);
void ReleaseSRWLockExclusive(SRWLOCK* lock);
BOOL TryAcquireSRWLockExclusive(SRWLOCK* lock);
void GetLocalTime(SYSTEMTIME* time);

// Files. Paths are ASCII.
inline HANDLE const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(-1);
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_APPEND_DATA = 4;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD FILE_SHARE_WRITE = 2;
constexpr DWORD FILE_SHARE_DELETE = 4;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD OPEN_ALWAYS = 4;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security, DWORD creation,
                   DWORD attributes, HANDLE pattern);
BOOL WriteFile(HANDLE file, const void* bytes, DWORD count, DWORD* written, void* overlapped);
BOOL FlushFileBuffers(HANDLE file);
BOOL CloseHandle(HANDLE handle);
BOOL DeleteFileW(const wchar_t* path);
BOOL MoveFileExW(const wchar_t* from, const wchar_t* to, DWORD flags);
BOOL CreateDirectoryW(const wchar_t* path, void* security);
DWORD GetModuleFileNameW(HMODULE module, wchar_t* path, DWORD capacity);
constexpr int CSTR_EQUAL = 2;
int CompareStringOrdinal(const wchar_t* one, int length, const wchar_t* other, int otherLength,
                         BOOL ignoreCase);

// UTF-8.
constexpr UINT CP_UTF8 = 65001;
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* bytes, int count, wchar_t* text,
                        int capacity);
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int count, char* bytes, int capacity,
                        const char* fallback, BOOL* usedFallback);

// Private-profile functions: profile.cpp.
DWORD GetPrivateProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* fallback,
                               wchar_t* text, DWORD capacity, const wchar_t* path);
UINT GetPrivateProfileIntW(const wchar_t* section, const wchar_t* key, int fallback, const wchar_t* path);
DWORD GetPrivateProfileSectionNamesW(wchar_t* names, DWORD capacity, const wchar_t* path);
BOOL WritePrivateProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* value,
                                const wchar_t* path);

// The registry: registry.cpp.
inline HKEY const HKEY_CURRENT_USER = reinterpret_cast<HKEY>(1);
inline HKEY const HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(2);
constexpr LSTATUS ERROR_SUCCESS = 0;
constexpr LSTATUS ERROR_FILE_NOT_FOUND = 2;
constexpr LSTATUS ERROR_MORE_DATA = 234;
constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_DWORD = 4;
constexpr REGSAM KEY_QUERY_VALUE = 1;
constexpr REGSAM KEY_SET_VALUE = 2;
constexpr REGSAM KEY_READ = 0x20019;
constexpr REGSAM KEY_WOW64_64KEY = 0x100;
LSTATUS RegOpenKeyExW(HKEY key, const wchar_t* name, DWORD options, REGSAM access, HKEY* opened);
LSTATUS RegCloseKey(HKEY key);
LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data,
                         DWORD* bytes);
LSTATUS RegSetValueExW(HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data,
                       DWORD bytes);
LSTATUS RegDeleteValueW(HKEY key, const wchar_t* name);
