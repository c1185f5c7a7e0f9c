// Replaces the event log in a test program. Records each logged line as "log: ...".
#include <cstdarg>

#include "store/event_log.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(recorded_log);

AMBREL_REPLACE(void, LogFormatted, (const wchar_t* format, ...)) {
    wchar_t text[kLogMessageCapacity];
    va_list arguments;
    va_start(arguments, format);
    FormatWideArguments(text, kLogMessageCapacity, format, arguments);
    va_end(arguments);
    Record("log: ", Narrow(text));
}
