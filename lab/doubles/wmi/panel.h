#pragma once

#include "../hardware/script.h"

#include <windows.h>

#include <oaidl.h>

// A built-in panel: a line `panel` of the script. Fields:
//     name              what the lab calls it
//     slot, behaviour   its knob (hardware/knob.h)
//     present           it is active
//     instance, path    its InstanceName and the __PATH of its methods
//     instance_type     bstr, nullbstr (VT_BSTR without a text), null, i4, missing (the property is not
//     there) path_type         the same brightness_type   i1, i2, i4, i8, ui1, ui2, ui4, ui8, r8, bool, bstr,
//     null, empty, unknown (an object),
//                       missing
//     without           the query, brightness or methods, that does not find it
//     fails, error      set: its method fails with that HRESULT
//     status            what its method returns: with another than 0 the call succeeds and sets nothing
//     delay             how long its method takes

// The active panels that the given query, brightness or methods, finds; all of them for "".
Rows ActivePanels(const wchar_t* query);

// The active panel whose methods have that path; false when there is none.
bool FindPanelByPath(const std::wstring& path, Row& found);

// Properties of a panel as Get answers them. Each fills an empty VARIANT, or fails.
HRESULT GetInstanceName(const Row& panel, VARIANT* value);
HRESULT GetPath(const Row& panel, VARIANT* value);
HRESULT GetBrightness(const Row& panel, LONG64 brightness, VARIANT* value);
