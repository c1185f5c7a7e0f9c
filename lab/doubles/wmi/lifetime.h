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

// Base of a COM object with one interface and a reference count. `Base` implements some of the methods of
// `Interface`.
template <typename Interface, typename Base = Interface>
class CountedObject : public Base {
public:
    explicit CountedObject(const wchar_t* name) : lifetime_(name) {}
    virtual ~CountedObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(Interface);
        *out = known ? static_cast<Interface*>(this) : nullptr;
        if (!known) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return lifetime_.AddReference(); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = lifetime_.ReleaseReference();
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    ObjectLifetime lifetime_;
};

// The result of a method that the double does not implement: E_NOTIMPL, recorded as an invalid call.
HRESULT NotImplemented(const wchar_t* method);
