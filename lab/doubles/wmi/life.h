#pragma once

#include <windows.h>

// The reference count of a COM object of the double. While the object lives it counts in the shared state,
// and its end is recorded as a call "Released", so that the order of releases can be seen.
class Life {
public:
    // `name` is the object's target in the record and must stay valid.
    explicit Life(const wchar_t* name);
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;

    const wchar_t* Name() const { return name_; }
    ULONG Add();
    // Returns 0 when the object has to be deleted.
    ULONG Drop();

private:
    const wchar_t* name_;
    LONG references_ = 1;
};

// What a method answers that the double does not have: E_NOTIMPL, recorded as a mistake.
HRESULT NotImplemented(const wchar_t* method);
