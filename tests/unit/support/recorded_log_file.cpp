// Replaces the file of the event log in a test program. Records "open log PATH".
#include "store/event_log.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(recorded_log_file);

AMBREL_REPLACE(void, OpenEventLogFile, (const std::wstring& path)) {
    Record("open log ", Narrow(path));
}
