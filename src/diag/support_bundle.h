// The report that a user pastes into an e-mail to support: the program's state and log, the machine and its
// displays. Never fails: a value that cannot be read is reported as missing. Nothing is written to disk.
// Window thread only.
#pragma once

#include <string>

// The whole report; lines end with CR LF.
std::wstring BuildSupportBundle();

// The subject of the e-mail. Queries the machine as extensively as BuildSupportBundle does.
std::wstring BuildSupportSubject();
