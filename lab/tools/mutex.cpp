#include "tool.h"

// mutex NAME: whether a mutex of this name exists; kToolNotFound if it does not.
int FindMutex(const Arguments& arguments, Json&) {
    const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, arguments[0].c_str());
    if (!mutex) {
        return GetLastError() == ERROR_FILE_NOT_FOUND ? kToolNotFound : kToolFailed;
    }
    CloseHandle(mutex);
    return kToolOk;
}

// mutex-hold NAME: creates and owns the mutex until the process is killed. Prints "ready" when it is created.
int HoldMutex(const Arguments& arguments, Json&) {
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, arguments[0].c_str());
    if (!mutex || GetLastError() == ERROR_ALREADY_EXISTS) {
        return kToolFailed;
    }
    PrintReady();
    Sleep(INFINITE);
    return kToolOk;
}
