// Replaces the cursor tinting in a test program. Records each call as "tint cursors", "restore cursors" and
// so on. Each call sets an unrelated last error, so that an error that is read too late is detected.
#include "filter/cursor_tint.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_SEAM_SET(recorded_cursors);

namespace {

void RecordCursors(const char* call) {
    Record(call);
    SetLastError(7777);
}

}  // namespace

AMBREL_REPLACE(void, TintSystemCursors, ()) {
    RecordCursors("tint cursors");
}

AMBREL_REPLACE(void, RestoreSystemCursors, ()) {
    RecordCursors("restore cursors");
}

AMBREL_REPLACE(void, ResetSystemCursors, ()) {
    RecordCursors("reset cursors");
}

AMBREL_REPLACE(void, ReleaseCursorCopies, ()) {
    RecordCursors("release cursor copies");
}
