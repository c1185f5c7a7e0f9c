#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <string>

struct IAccessible;

// The accessible object of a window's client area; `object` is null if the window does not exist or has none.
struct AccessibleClient {
    IAccessible* object = nullptr;

    explicit AccessibleClient(const std::wstring& target);
    ~AccessibleClient();
    AccessibleClient(const AccessibleClient&) = delete;
    AccessibleClient& operator=(const AccessibleClient&) = delete;
};

VARIANT ChildId(LONG id);
