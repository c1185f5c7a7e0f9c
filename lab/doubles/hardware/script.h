#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

// One line of C:\lab\hardware.script: its kind, and fields as name=value, all separated by tabs. A value is
// UTF-8; tab, line feed, carriage return and backslash are escaped as \t \n \r \\.
//
//     display   index, count (the number that Windows reports, if not the actual one), count_error,
//               fetch_error, delay
//     monitor   display, name, slot, present, description, minimum, maximum, capable, zero_handle, error,
//               capabilities_delay, read_delay, set_delay, and the behaviour (see brightness.h)
//     panel     see wmi/panel.h
//     wmi       see wmi/scripted_calls.h
//     timers    see timers.cpp
//
// Every delay is the duration of a call in milliseconds.
struct Row {
    std::string kind;
    std::vector<std::pair<std::string, std::wstring>> fields;

    bool Has(const char* field) const;
    // "" if the field is missing.
    std::wstring Text(const char* field) const;
    // `missing` if the field is missing.
    LONG64 Number(const char* field, LONG64 missing = 0) const;
};

using Rows = std::vector<Row>;

// Returns the current script. The lab may replace it at any time, even while a call waits; a script that is
// in use does not change.
std::shared_ptr<const Rows> ReadScript();

std::string ToUtf8(const std::wstring& text);

// Escapes tab, line feed, carriage return and backslash as \t \n \r \\.
std::wstring Escape(const std::wstring& text);
