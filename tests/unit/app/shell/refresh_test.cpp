#include "app/shell/refresh.h"

#include <gtest/gtest.h>

#include "app/shell/tray_icon.h"
#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_REPLACE(void, UpdateTrayIcon, ()) {
    Record("update tray icon");
}

namespace {

BOOL WINAPI FakeInvalidateRect(HWND window, const RECT* area, BOOL erase) {
    Record("invalidate ", ValueOf(window), area == nullptr ? " whole" : " part", erase ? " erase" : "");
    return TRUE;
}

}  // namespace

AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);

TEST(Refresh, InvalidatesTheEntirePopupWithoutErasingAndUpdatesTheTrayIcon) {
    g_calls.clear();
    g_app = AppState{};
    g_app.mainWindow = MakeHandle<HWND>(500);
    RefreshPopupAndTray();
    EXPECT_EQ(g_calls, (CallRecord{"invalidate 500 whole", "update tray icon"}));
}

TEST(Refresh, WithoutAWindowNothingHappens) {
    g_calls.clear();
    g_app = AppState{};
    RefreshPopupAndTray();
    EXPECT_TRUE(g_calls.empty());
}
