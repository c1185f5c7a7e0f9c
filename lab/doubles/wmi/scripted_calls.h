#pragma once

#include "../hardware/record.h"

// The script's line `wmi` defines the results of the calls of a WMI operation. A field is named after its
// call:
//
//     locator, connect, blanket      opening the connection
//     query, next                    the brightness query
//     query_methods, next_methods    the methods query
//     get_object, get_method, spawn, put_timeout, put_brightness, exec
//     delay_CALL                     the duration of the call in ms
//
// A result is an HRESULT as a number, `null` (success without an object) or `timedout` (for next). `next` and
// `next_methods` are comma-separated lists with one result for each call on an enumerator; calls beyond the
// list succeed.
struct CallResult {
    HRESULT result;
    bool returnsNothing;  // The call returns no object.
};

// Waits for the call's delay and returns its result, or COM's rejection (apartment.h). `index` is the
// position in a list, from 0.
CallResult ScriptedResult(const char* call, size_t index = 0);
