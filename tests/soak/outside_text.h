// Checks of the report and of lines of the log that contain text from outside the program.
#pragma once

#include <string>

// Whether the text contains a character that ends or forges a line.
bool HasControlCharacter(const std::wstring& text);

// That the lines of a report contain no control character.
void RequireReportLines(const std::wstring& report);

int CountLines(const std::wstring& report);
