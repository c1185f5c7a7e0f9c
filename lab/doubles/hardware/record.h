#pragma once

#include "script.h"

// One call of the program, written as a line of C:\lab\hardware.log when it ends. Calls are numbered when
// they start, so that a call made while another one waits is ordered after it. The line's fields:
//     number, milliseconds since 1970, process, function, target, result, error, then name=value arguments
class CallRecord {
public:
    // `target` is the name of the simulated display, or of the object that was called.
    CallRecord(const wchar_t* function, const std::wstring& target);
    CallRecord(const CallRecord&) = delete;
    CallRecord& operator=(const CallRecord&) = delete;

    void Argument(const wchar_t* name, const std::wstring& value);
    void Argument(const wchar_t* name, LONG64 value);
    void SetTarget(const std::wstring& target) { target_ = target; }
    // Marks the call as one that no correct program makes.
    void MarkInvalid(const wchar_t* reason);

    // Writes the line, sets the last error and returns whether it is ERROR_SUCCESS.
    BOOL EndWithError(DWORD error);

    // Writes the line and returns the result.
    HRESULT EndWith(HRESULT result);

private:
    void Write(const wchar_t* result, DWORD error) const;

    LONG64 number_;
    LONG64 time_;
    std::wstring function_;
    std::wstring target_;
    std::wstring arguments_;
};

// Blocks for `delay` milliseconds or until the lab ends the delay. The thread dispatches nothing.
void Wait(LONG64 delay);
