// The record of what must be restored: the section [Restore] of settings.ini. It contains what a run has
// changed and not restored yet, so that the next start can restore it after a kill, a crash or a power
// failure. Every write and every deletion concerns one key; a kill between two of them loses nothing.
// Failures are silent, nothing is logged, and without a settings path nothing is read or written. Window
// thread only.
#pragma once

#include <cstdint>
#include <map>
#include <string>

// A display's brightness from before its first lock.
struct RestoreRow {
    std::uint32_t percent = 0;    // 0..100
    std::uint64_t awaySince = 0;  // seconds since 1970; 0: not away at the last start
    std::wstring name;            // of the display target
    std::wstring path;            // the monitor's device path; empty for a built-in panel
};

using RestoreRows = std::map<int, RestoreRow>;  // by number, from 1

// Rows with a higher number are ignored.
constexpr int kMaxRestoreRows = 32;

// The valid rows. A row that is damaged, out of range or too long is skipped.
RestoreRows ReadRestoreRows();

// Replaces the row of that number. A row that is too long
// to be read again is not written.
void WriteRestoreRow(int number, const RestoreRow& row);

// Writes the row under a free number. If there is none, it replaces the row that has been away longest; if no
// row is away, it is not written.
void AddRestoreRow(const RestoreRow& row);

// Returns when everything written is on the disk.
void FlushRestoreRecord();

// Deletes a row, and with the last one the section.
void DeleteRestoreRow(int number);

// Whether the gamma ramp may differ from the identity, and changes of that key.
bool IsRampRecorded();
void RecordRamp();
void DeleteRampRecord();

// Deletes the section if it contains nothing valid.
void TidyRestoreRecord();
