#pragma once

#include "script.h"

// One call of the program, written as a line of C:\lab\hardware.log when it ends. Its number is taken when it
// begins, so calls made while another one waits are not mistaken for earlier ones. The line's fields:
//     number, milliseconds since 1970, process, function, target, result, error, then name=value arguments
class CallRecord {
public:
    // `target` is the name of the simulated display, or of what else was called.
    CallRecord(const wchar_t* function, const std::wstring& target);
    CallRecord(const CallRecord&) = delete;
    CallRecord& operator=(const CallRecord&) = delete;

    void Argument(const wchar_t* name, const std::wstring& value);
    void Argument(const wchar_t* name, LONG64 value);
    void SetTarget(const std::wstring& target) { target_ = target; }
    // Says that no correct program makes this call, and why.
    void Mistake(const wchar_t* reason);

    // Writes the line. The first answers as functions of Windows do that set the last error.
    BOOL EndWithError(DWORD error);
    HRESULT EndWith(HRESULT result);

private:
    void Write(const wchar_t* result, DWORD error) const;

    LONG64 number_;
    LONG64 time_;
    std::wstring function_;
    std::wstring target_;
    std::wstring arguments_;
};

// Lets a call take `delay` milliseconds, during which the thread dispatches nothing.
void Wait(LONG64 delay);
