// RAII guards for COM: apartments, interface pointers, BSTRs and VARIANTs that live within one operation.
#pragma once

#include "win32/platform.h"

#include <objbase.h>
#include <oleauto.h>

// COM's multithreaded apartment, joined by the calling thread for the scope. COM calls from it do not depend
// on the message that the window's thread handles.
struct [[nodiscard]] MultithreadedApartment {
    HRESULT joined = CoInitializeEx(nullptr, COINIT_MULTITHREADED);

    MultithreadedApartment() = default;
    ~MultithreadedApartment() {
        if (SUCCEEDED(joined)) CoUninitialize();
    }
    MultithreadedApartment(const MultithreadedApartment&) = delete;
    MultithreadedApartment& operator=(const MultithreadedApartment&) = delete;
};

// A COM interface pointer, released at the end of the scope. Pass Out() to a call that returns one; the guard
// must be empty then.
template <typename Interface>
struct [[nodiscard]] ComPointer {
    Interface* pointer = nullptr;

    ComPointer() = default;
    ~ComPointer() {
        if (pointer != nullptr) pointer->Release();
    }
    ComPointer(const ComPointer&) = delete;
    ComPointer& operator=(const ComPointer&) = delete;

    Interface** Out() { return &pointer; }
    Interface* operator->() const { return pointer; }
};

// A BSTR copy of a string. `text` is null when the allocation fails.
struct [[nodiscard]] Bstr {
    BSTR text;

    explicit Bstr(const wchar_t* copied) : text(SysAllocString(copied)) {}
    ~Bstr() { SysFreeString(text); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
};

// A VARIANT, empty at first, cleared at the end of the scope.
struct [[nodiscard]] Variant {
    VARIANT value;

    Variant() { VariantInit(&value); }
    ~Variant() { VariantClear(&value); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
};
