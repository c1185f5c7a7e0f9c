// Takes the cursor tinting's place in a test program: "tint cursors", "restore cursors" and the like in the
// record. Each leaves a last error that is nobody's, so that an error read too late is seen.
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
