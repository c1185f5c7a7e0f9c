// Takes the event log's file's place in a test program: "open log PATH" in the record.
#include "store/event_log.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(recorded_log_file);

AMBREL_REPLACE(void, OpenEventLogFile, (const std::wstring& path)) {
    Record("open log ", Narrow(path));
}
