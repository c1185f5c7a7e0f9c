#pragma once

#include "../hardware/record.h"

// What the script's line `wmi` says of one step of a WMI operation. Its fields are named after the steps:
//     locator, connect, blanket, query, get_object, get_method, spawn, put_timeout, put_brightness, exec
//     next, query_methods, next_methods    `query` and `next` are for the brightness query, these two for the
//     other
//     delay_STEP           how long the step takes
// An answer is an HRESULT as a number, `null` (success, but nothing is handed out) or `timedout` (for next).
// `next` and `next_methods` are lists, separated by commas: one answer for each call of an enumeration; what
// comes after the list's end works.
struct Answer {
    HRESULT result;
    bool nothing;  // It succeeds and hands nothing out.
};

// The step's answer, after its delay, or COM's refusal (apartment.h). `call` counts from 0 within a list.
Answer AnswerOf(const char* step, size_t call = 0);
