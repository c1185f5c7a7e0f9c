#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

// One line of C:\lab\hardware.script: its kind, and fields as name=value, all separated by tabs. A value is
// UTF-8 with \t \n \r \\ for the characters that would end it.
//
//     display   index, count (what the counting call claims), count_error, fetch_error, delay
//     monitor   display, name, slot, present, description, minimum, maximum, capable, zero_handle, error,
//               capabilities_delay, read_delay, set_delay, and the behaviour (see knob.h)
//     panel     see wmi/panel.h
//     wmi       see wmi/steps.h
//
// In every line a delay is how long a call takes, in milliseconds.
struct Row {
    std::string kind;
    std::vector<std::pair<std::string, std::wstring>> fields;

    bool Has(const char* field) const;
    // "" when the field is not there.
    std::wstring Text(const char* field) const;
    // `missing` when the field is not there.
    LONG64 Number(const char* field, LONG64 missing = 0) const;
};

using Rows = std::vector<Row>;

// The script in force. The lab may replace it at any time, also while a call waits: what is held stays as it
// is.
std::shared_ptr<const Rows> ReadScript();

std::string ToUtf8(const std::wstring& text);
// Tab, line feed, carriage return and backslash as \t \n \r \\.
std::wstring Escape(const std::wstring& text);
