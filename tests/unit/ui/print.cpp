#include "ui/print.h"

#include <cstdarg>
#include <cstdio>

std::string Print(const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return text;
}
