#pragma once

#include <windows.h>

// The reference count of a COM object of the double. The shared state counts the object until its last
// release, which is recorded as a call "Released", so that tests can check the order of releases.
class ObjectLifetime {
public:
    // `name` is the object's target in the record and must stay valid.
    explicit ObjectLifetime(const wchar_t* name);
    ObjectLifetime(const ObjectLifetime&) = delete;
    ObjectLifetime& operator=(const ObjectLifetime&) = delete;

    const wchar_t* Name() const { return name_; }
    ULONG AddReference();
    // Returns 0 if the object has to be deleted.
    ULONG ReleaseReference();

private:
    const wchar_t* name_;
    LONG references_ = 1;
};

// The result of a method that the double does not implement: E_NOTIMPL, recorded as an invalid call.
HRESULT NotImplemented(const wchar_t* method);
