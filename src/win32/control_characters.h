// Text from outside the program: the registry, a display's name, a file. A control character in it could end
// a line of the log or of the report and start another one that the program never wrote.
#pragma once

#include <cstddef>

// Replaces every control character, Unicode's line and paragraph separators included, with U+FFFD.
void ReplaceControlCharacters(wchar_t* text, std::size_t length);
