// Sessions of the program on the simulated platform, one after the other in the same process.
#pragma once

#include <string>
#include <vector>

// Describes the running case in the report of a crash or a hang.
extern char g_currentCase[256];

// From now on a crash, or 90 s without NoteProgress, prints the case and ends the process with exit code 3.
void ReportCrashesAndHangs();
void NoteProgress();

// A new platform and a new AppState. RunAmbrel then performs the steps of the script.
void PrepareSession(std::vector<void (*)()> script);

// Ends a session as the end of the process would, and deletes the files and the gamma range of the program.
void CleanUpSession();

// The program's folder under the application data, with a backslash at its end.
std::wstring ProgramFolder();
