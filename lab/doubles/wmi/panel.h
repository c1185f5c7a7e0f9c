#pragma once

#include "../hardware/script.h"

#include <windows.h>

#include <oaidl.h>

// A built-in panel: a line `panel` of the script. Fields:
//
//     name              its name in the lab
//     slot, behaviour   its brightness (hardware/brightness.h)
//     present           it is active
//     instance, path    its InstanceName and the __PATH of its methods
//     instance_type     bstr, nullbstr (VT_BSTR with a null pointer), null, i4, missing (no such property)
//     path_type         like instance_type
//     brightness_type   i1, i2, i4, i8, ui1, ui2, ui4, ui8, r8, bool, bstr, null, empty, missing,
//                       unknown (an object)
//     without           the query, brightness or methods, that does not return it
//     fails, error      set: its method fails with that HRESULT
//     status            the return value of its method; unless it is 0, the call succeeds and sets nothing
//     delay             the duration of its method in ms

// The active panels that the given query, brightness or methods, returns; all active panels for "".
Rows ActivePanels(const wchar_t* query);

// Finds the active panel whose methods have the path. False if there is none.
bool FindPanelByPath(const std::wstring& path, Row& found);

// Properties of a panel, as Get returns them. Each fills an empty VARIANT, or fails.
HRESULT GetInstanceName(const Row& panel, VARIANT* value);
HRESULT GetPath(const Row& panel, VARIANT* value);
HRESULT GetBrightness(const Row& panel, LONG64 brightness, VARIANT* value);
