// Why not less: a line of the log must be in the file when the program is killed after it, and other programs
// may rename or delete the file between two lines, so it is opened and closed for each. The size decides
// whether the file has grown too large. Windows could replace a section of a private profile in one call, but
// that deletes the keys which the program does not know, such as those of a later version.
#include "floor_files.h"

void FloorAppend(const wchar_t* path, const char* bytes, DWORD length) {
    HANDLE file =
        CreateFileW(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    LARGE_INTEGER size;
    GetFileSizeEx(file, &size);
    DWORD written = 0;
    WriteFile(file, bytes, length, &written, nullptr);
    CloseHandle(file);
}

void FloorWriteSettings(const wchar_t* path) {
    static constexpr struct {
        const wchar_t* section;
        const wchar_t* key;
        const wchar_t* value;
    } kRows[] = {
        {L"Filter", L"Intensity", L"385"},      {L"Filter", L"Brightness", L"1000"},
        {L"Settings", L"LaunchAtStart", L"0"},  {L"Settings", L"AllowExtremeDim", L"0"},
        {L"Settings", L"UseLegacyGamma", L"0"}, {L"Settings", L"LegacyModeAutoSet", L"0"},
        {L"Settings", L"PWMSafeMode", L"0"},    {L"Settings", L"GammaFixEpoch", L"0"},
    };
    for (const auto& row : kRows)
        WritePrivateProfileStringW(row.section, row.key, row.value, path);
}

void FloorReadTail(const wchar_t* path) {
    static char bytes[16384];
    HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                              0, nullptr);
    SetFilePointer(file, -static_cast<LONG>(sizeof(bytes)), nullptr, FILE_END);
    DWORD read = 0;
    ReadFile(file, bytes, sizeof(bytes), &read, nullptr);
    CloseHandle(file);
}
