// A library under the name of one of Windows' DLLs, planted where a program must not look for it. Each
// process that loads it adds a line to C:\lab\planted.log: the path of the library.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void*) {
    if (reason != DLL_PROCESS_ATTACH) {
        return TRUE;
    }
    char line[MAX_PATH + 2] = {};
    DWORD length = GetModuleFileNameA(library, line, MAX_PATH);
    line[length++] = '\n';
    const HANDLE file = CreateFileW(L"C:\\lab\\planted.log", FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, line, length, &written, nullptr);
    CloseHandle(file);
    return TRUE;
}
