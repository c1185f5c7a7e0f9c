// The floor of the support report.
#pragma once

// Queries Windows for everything that the report contains, and reads the end of the log.
void FloorReport(const wchar_t* logPath);
