// The report that a user pastes into a mail to support: the program's state and log, the machine and its
// displays. Built in one pass; nothing is written to disk, and nothing that cannot be read makes it fail.
// Window thread only.
#pragma once

#include <string>

// The whole report, lines ended by CR LF.
std::wstring BuildSupportBundle();

// The subject of the mail alone. It reads as much as the whole report does.
std::wstring BuildSupportSubject();
