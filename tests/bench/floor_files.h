// The floors of the files that the program writes and reads.
#pragma once

#include "win32/platform.h"

// Appends `length` bytes to the file and closes it.
void FloorAppend(const wchar_t* path, const char* bytes, DWORD length);

// Writes eight values, as many as the settings are.
void FloorWriteSettings(const wchar_t* path);

// Reads the last 16 KiB of the file.
void FloorReadTail(const wchar_t* path);
