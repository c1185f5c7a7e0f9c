// printf into a string, for the lines that drawing tests compare.
#pragma once

#include <string>

__attribute__((format(printf, 1, 2))) std::string Print(const char* format, ...);
