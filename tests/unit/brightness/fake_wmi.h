// Replaces WMI: CoCreateInstance returns a fake locator, and g_wmi configures the results of all calls on it.
// The record names each call, and each final release of an object as "release NAME".
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/call_record.h"
#include "support/seam.h"
#include "win32/platform.h"

#include <wbemcli.h>

AMBREL_USES_SEAMS(fake_wmi);

// The result of a call that returns an object.
struct CallResult {
    HRESULT result = S_OK;
    bool returnsObject = true;
};

constexpr HRESULT kFailed = static_cast<HRESULT>(WBEM_E_FAILED);

constexpr CallResult kRefused = {kFailed, false};
constexpr CallResult kNullReturned = {S_OK, false};

// A property as Get returns it. `text` is returned for VT_BSTR; without `hasText` the BSTR is null.
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

// The result of one call of Next. After the last the enumeration ends.
struct QueryResult {
    Properties properties;
    HRESULT result = WBEM_S_NO_ERROR;
    bool returnsObject = true;
};

// A result for both queries: a panel whose object path is "path of NAME".
QueryResult Panel(const std::wstring& name, long percent = 50);

struct FakeWmi {
    CallResult locator, connect, query, getObject, getMethod, spawn;
    HRESULT blanket = S_OK, putTimeout = S_OK, putBrightness = S_OK, exec = S_OK;
    std::vector<QueryResult> results;
};

extern FakeWmi g_wmi;

// Resets the record and the trackers: every call succeeds and there is no panel.
void ResetWmi();

// Fails the test if an object, a string or a variant has not been released, or has been released twice.
void ExpectNoLeaks();

// The calls that open the connection, with which every operation starts.
inline const CallRecord kConnected = {"create locator", "connect ROOT\\WMI", "blanket"};

// Concatenates two records.
CallRecord operator+(const CallRecord& first, const CallRecord& second);
