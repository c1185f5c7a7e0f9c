#include "replaced_cursors.h"

#include <vector>

#include "import_hook.h"

extern "C" decltype(&SetSystemCursor) __imp_SetSystemCursor;

namespace {

decltype(&SetSystemCursor) g_setSystemCursor;
std::vector<HCURSOR> g_replaced;

BOOL WINAPI CollectingSetSystemCursor(HCURSOR cursor, DWORD id) {
    g_replaced.push_back(cursor);
    return g_setSystemCursor(cursor, id);
}

}  // namespace

void CollectReplacedCursors() {
    g_replaced.reserve(100000);
    g_setSystemCursor = __imp_SetSystemCursor;
    SetImport(&__imp_SetSystemCursor, &CollectingSetSystemCursor);
}

void DestroyReplacedCursors() {
    for (HCURSOR cursor : g_replaced)
        DestroyCursor(cursor);
    g_replaced.clear();
}
