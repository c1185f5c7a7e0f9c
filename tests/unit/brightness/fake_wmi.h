// WMI without Windows: CoCreateInstance hands out a locator of our own, and everything behind it answers as
// g_wmi says. Each call is a line of the record; each object that ends is a line "release NAME".
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/call_record.h"
#include "support/seam.h"
#include "win32/platform.h"

#include <wbemcli.h>

AMBREL_USES_SEAMS(fake_wmi);

// The answer of a call that hands an object out.
struct Step {
    HRESULT result = S_OK;
    bool handsOut = true;
};

constexpr HRESULT kFailed = static_cast<HRESULT>(WBEM_E_FAILED);

constexpr Step kRefused = {kFailed, false};
constexpr Step kNullHandedOut = {S_OK, false};

// A property as Get answers it. A text is handed out for VT_BSTR; without `hasText` the BSTR is null.
struct Property {
    HRESULT result = S_OK;
    VARTYPE type = VT_EMPTY;
    std::wstring text;
    long number = 0;
    bool hasText = true;
};

Property Text(const std::wstring& text);
Property Number(VARTYPE type, long number);

using Properties = std::map<std::wstring, Property>;

// One answer of Next. After the last the enumeration is at its end.
struct Found {
    Properties properties;
    HRESULT result = WBEM_S_NO_ERROR;
    bool handsOut = true;
};

// What both queries find of a panel; the path is "path of NAME".
Found Panel(const std::wstring& name, long percent = 50);

struct FakeWmi {
    Step locator, connect, query, getObject, getMethod, spawn;
    HRESULT blanket = S_OK, putTimeout = S_OK, putBrightness = S_OK, exec = S_OK;
    std::vector<Found> found;
};

extern FakeWmi g_wmi;

// Everything works and there is no panel; the record and the books are empty.
void ResetWmi();

// Fails the test when an object, a text or a variant is left, or when one was given back too often.
void CheckNothingIsLeft();

// The record of an operation as far as the connection, which all have in common.
inline const CallRecord kConnected = {"create locator", "connect ROOT\\WMI", "blanket"};

// Lists one after the other.
CallRecord operator+(const CallRecord& first, const CallRecord& second);
