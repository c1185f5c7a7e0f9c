#include "ui/accessible_fixture.h"

#include "store/event_log.h"
#include "ui/accessible_object.h"

AMBREL_SEAM_SET(accessible_fixture);

AccessibleWindow g_accessibleWindow;

namespace {

HWND const kWindow = MakeHandle<HWND>(0x1234);

BOOL WINAPI FakeIsWindowVisible(HWND window) {
    EXPECT_EQ(window, kWindow);
    return g_accessibleWindow.visible;
}

BOOL WINAPI FakeIsWindowEnabled(HWND window) {
    return window == kWindow && g_accessibleWindow.enabled;
}

BOOL WINAPI FakeClientToScreen(HWND window, LPPOINT point) {
    EXPECT_EQ(window, kWindow);
    point->x += g_accessibleWindow.origin.x;
    point->y += g_accessibleWindow.origin.y;
    return TRUE;
}

BOOL WINAPI FakeGetClientRect(HWND window, LPRECT client) {
    EXPECT_EQ(window, kWindow);
    const int dpi = static_cast<int>(g_app.dpi);
    *client = {0, 0, MulDiv(320, dpi, 96), MulDiv(540, dpi, 96)};
    return TRUE;
}

int WINAPI FakeMapWindowPoints(HWND from, HWND to, LPPOINT points, UINT count) {
    EXPECT_EQ(from, kWindow);
    EXPECT_EQ(to, nullptr);
    for (UINT i = 0; i < count; ++i)
        FakeClientToScreen(from, &points[i]);
    return 1;
}

BOOL WINAPI FakePostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    EXPECT_EQ(window, kWindow);
    if (g_accessibleWindow.postingFails) return FALSE;
    Record("post ", message, " ", wParam, " ", lParam);
    return TRUE;
}

void WINAPI FakeNotifyWinEvent(DWORD event, HWND window, LONG object, LONG child) {
    EXPECT_EQ(window, kWindow);
    EXPECT_EQ(object, OBJID_CLIENT);
    Record("event ", std::hex, event, " of ", std::dec, child);
}

}  // namespace

AMBREL_SEAM(IsWindowVisible, FakeIsWindowVisible);
AMBREL_SEAM(IsWindowEnabled, FakeIsWindowEnabled);
AMBREL_SEAM(ClientToScreen, FakeClientToScreen);
AMBREL_SEAM(GetClientRect, FakeGetClientRect);
AMBREL_SEAM(MapWindowPoints, FakeMapWindowPoints);
AMBREL_SEAM(PostMessageW, FakePostMessageW);
AMBREL_SEAM(NotifyWinEvent, FakeNotifyWinEvent);

VARIANT ChildId(LONG id) {
    VARIANT child = {};
    child.vt = VT_I4;
    child.lVal = id;
    return child;
}

void AccessibleTest::SetUp() {
    g_app = AppState{};
    g_app.mainWindow = kWindow;
    g_accessibleWindow = AccessibleWindow{};
    g_calls.clear();
    object = CreateAccessibleObject();
    ASSERT_NE(object, nullptr);
}

void AccessibleTest::TearDown() {
    EXPECT_EQ(object->Release(), 0U) << "references are left";
}

TextAnswer AccessibleTest::Text(HRESULT (STDMETHODCALLTYPE IAccessible::*method)(VARIANT, BSTR*),
                                int child) const {
    wchar_t garbage = L'?';
    BSTR text = &garbage;
    const HRESULT result = (object->*method)(ChildId(child), &text);
    if (result != S_OK) {
        EXPECT_EQ(text, nullptr);
        return {result, L""};
    }
    const std::wstring copy(text, SysStringLen(text));
    SysFreeString(text);
    return {result, copy};
}

LONG AccessibleTest::Role(int child) const {
    VARIANT role = {};
    EXPECT_EQ(object->get_accRole(ChildId(child), &role), S_OK);
    EXPECT_EQ(role.vt, VT_I4);
    return role.lVal;
}

LONG AccessibleTest::State(int child) const {
    VARIANT state = {};
    EXPECT_EQ(object->get_accState(ChildId(child), &state), S_OK);
    EXPECT_EQ(state.vt, VT_I4);
    return state.lVal;
}

LONG AccessibleTest::Count() const {
    LONG count = -1;
    EXPECT_EQ(object->get_accChildCount(&count), S_OK);
    return count;
}

RECT AccessibleTest::Location(int child) const {
    LONG left = 0;
    LONG top = 0;
    LONG width = 0;
    LONG height = 0;
    EXPECT_EQ(object->accLocation(&left, &top, &width, &height, ChildId(child)), S_OK);
    return {left, top, left + width, top + height};
}

ChildAnswer AccessibleTest::HitTest(LONG x, LONG y) const {
    VARIANT child = {};
    const HRESULT result = object->accHitTest(x, y, &child);
    return {result, child.vt == VT_I4 ? static_cast<int>(child.lVal) : -1};
}

ChildAnswer AccessibleTest::Navigate(LONG direction, int child) const {
    VARIANT end = {};
    const HRESULT result = object->accNavigate(direction, ChildId(child), &end);
    return {result, end.vt == VT_I4 ? static_cast<int>(end.lVal) : -1};
}

HRESULT AccessibleTest::SetValue(int child, const wchar_t* text) const {
    const Bstr value(text);
    return object->put_accValue(ChildId(child), value.text);
}
