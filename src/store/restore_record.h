// The restore record: the section [Restore] of settings.ini. It contains the changes to the machine that this
// run has not undone yet, so that the next start can undo them after a kill, a crash or a power failure.
// Every write and every deletion is one call of a private-profile function; a kill between two of them loses
// nothing. Failures are silent, nothing is logged, and without a settings path nothing is read or written.
// Window thread only.
#pragma once

#include <map>

#include "store/restore_row.h"

using RestoreRows = std::map<int, RestoreRow>;  // by number, from 1

// Rows with a higher number are ignored. Enough for two new monitors a day during the 30 days that the row of
// a display is kept.
constexpr int kMaxRestoreRows = 64;

// Returns the valid rows. A row that is damaged, out of range or too long is skipped.
RestoreRows ReadRestoreRows();

// Replaces the row of that number. A row that is too long to be read again is not written.
void WriteRestoreRow(int number, const RestoreRow& row);

// Writes the row under a free number. If there is none, replaces the row whose display has not been connected
// for the longest time; if every display is connected, the row is not written.
void AddRestoreRow(const RestoreRow& row);

// Flushes the file to the disk.
void FlushRestoreRecord();

// Deletes a row and, if the record is then empty, the section.
void DeleteRestoreRow(int number);

// Whether the record says that a gamma ramp of the filter may be loaded.
bool IsRampRecorded();

// Records that a gamma ramp of the filter may be loaded.
void RecordRamp();

// Deletes that entry and, if the record is then empty, the section.
void DeleteRampRecord();

// Deletes the section if it contains nothing valid.
void DeleteEmptyRestoreRecord();
