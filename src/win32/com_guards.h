// Guards for COM: interface pointers, BSTRs and VARIANTs that live within one operation.
#pragma once

#include "win32/platform.h"

#include <oleauto.h>

// A COM interface pointer; Out() is where a call puts a new one.
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

// A text allocated for a COM call; text is null when memory ran out.
struct [[nodiscard]] Bstr {
    BSTR text;

    explicit Bstr(const wchar_t* copied) : text(SysAllocString(copied)) {}
    ~Bstr() { SysFreeString(text); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
};

// A value that a COM call fills or takes.
struct [[nodiscard]] Variant {
    VARIANT value;

    Variant() { VariantInit(&value); }
    ~Variant() { VariantClear(&value); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
};
