// Takes the cursor tinting's place in a test program: "tint cursors", "restore cursors" and the like in the
// record. Each leaves a last error that is nobody's, so that an error read too late is seen.
#include "filter/cursor_tint.h"
#include "support/call_record.h"

namespace {

void RecordCursors(const char* call) {
    Record(call);
    SetLastError(7777);
}

}  // namespace

void TintSystemCursors() {
    RecordCursors("tint cursors");
}

void RestoreSystemCursors() {
    RecordCursors("restore cursors");
}

void ResetSystemCursors() {
    RecordCursors("reset cursors");
}

void ReleaseCursorCopies() {
    RecordCursors("release cursor copies");
}
