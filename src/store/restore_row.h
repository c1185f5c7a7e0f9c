// A row of the restore record as text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A display's brightness from before its first lock.
struct RestoreRow {
    std::uint32_t percent = 0;    // 0..100
    std::uint64_t awaySince = 0;  // seconds since 1970; 0: connected and identified at the last start
    std::wstring name;            // of the display target
    std::wstring path;            // the monitor's device path; empty for a built-in panel
};

// "PERCENT AWAYSINCE NAME PATH" in printable ASCII; a built-in panel's row ends with the name. Other
// characters are escaped as % and four hexadecimal digits.
std::wstring RestoreRowText(const RestoreRow& row);

// Reads a text of RestoreRowText. False, with `row` undefined, if the text is damaged or a number is out of
// range.
bool ParseRestoreRow(std::wstring_view text, RestoreRow* row);
