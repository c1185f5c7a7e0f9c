// A client in another thread, through the system's oleacc.dll and COM: calls arrive while the window thread
// handles messages. When the client has ended, only the program's reference remains.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "app/state/app_state.h"
#include "ui/accessible_host.h"
#include "win32/com_guards.h"

#include <oleacc.h>

namespace {

using FromWindow = HRESULT(WINAPI*)(HWND, DWORD, REFIID, void**);

FromWindow AccessibleFromWindow() {
    return reinterpret_cast<FromWindow>(
        GetProcAddress(LoadLibraryW(L"oleacc.dll"), "AccessibleObjectFromWindow"));
}

// Answers requests and ends the object's connection as the program's window does.
LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY && window == g_app.mainWindow) {
        g_app.windowDestroyed = true;
        ReleaseAccessibleObject();
        g_app.mainWindow = nullptr;
    }
    if (message == WM_GETOBJECT && static_cast<DWORD>(lParam) == static_cast<DWORD>(OBJID_CLIENT))
        return AnswerAccessibilityRequest(wParam);
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND MakeWindow() {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = WindowProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"AccessibleClientTest";
    RegisterClassW(&windowClass);
    return CreateWindowExW(0, windowClass.lpszClassName, L"", WS_POPUP, 100, 200, 320, 540, nullptr, nullptr,
                           windowClass.hInstance, nullptr);
}

// Runs the client in a separate thread and apartment, and handles messages until it ends.
template <typename Client>
void RunClient(Client client) {
    HANDLE ended = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread thread([&client, ended] {
        {
            const MultithreadedApartment apartment;
            client();
        }
        SetEvent(ended);
    });
    while (MsgWaitForMultipleObjects(1, &ended, FALSE, INFINITE, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
        MSG message = {};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
    thread.join();
    CloseHandle(ended);
}

class AccessibleClient : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        g_app = AppState{};
        g_app.mainWindow = MakeWindow();
        ASSERT_NE(g_app.mainWindow, nullptr);
    }
    void TearDown() override {
        ReleaseAccessibleObject();
        if (g_app.mainWindow != nullptr) DestroyWindow(g_app.mainWindow);
        CoUninitialize();
    }

    // The number of references, including the program's.
    static ULONG References() {
        g_app.accessibleObject->AddRef();
        return g_app.accessibleObject->Release();
    }
};

VARIANT Child(LONG id) {
    VARIANT child = {};
    child.vt = VT_I4;
    child.lVal = id;
    return child;
}

}  // namespace

TEST_F(AccessibleClient, ReadsTheTreeAndLeavesNoReference) {
    constexpr int kRounds = 5;
    const FromWindow fromWindow = AccessibleFromWindow();
    HWND window = g_app.mainWindow;
    int names = 0;
    RunClient([&] {
        for (int round = 0; round < kRounds; ++round) {
            ComPointer<IAccessible> object;
            if (FAILED(fromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                  reinterpret_cast<void**>(object.Out()))))
                return;
            LONG count = 0;
            object->get_accChildCount(&count);
            for (LONG id = 1; id <= count; ++id) {
                BSTR name = nullptr;
                if (object->get_accName(Child(id), &name) == S_OK) ++names;
                SysFreeString(name);
            }
        }
    });
    EXPECT_EQ(names, kRounds * 11);
    ASSERT_NE(g_app.accessibleObject, nullptr);
    EXPECT_EQ(References(), 1U);
}

TEST_F(AccessibleClient, AWindowThatIsDestroyedLeavesItsClientsAnObjectThatReturnsNotConnected) {
    const FromWindow fromWindow = AccessibleFromWindow();
    HWND window = g_app.mainWindow;
    IAccessible* kept = nullptr;
    std::vector<HRESULT> results;
    RunClient([&] {
        ComPointer<IAccessible> object;
        fromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                   reinterpret_cast<void**>(object.Out()));
        if (object.pointer == nullptr) return;
        kept = g_app.accessibleObject;
        kept->AddRef();
        SendMessageW(window, WM_CLOSE, 0, 0);
        LONG count = 0;
        BSTR name = nullptr;
        IDispatch* parent = nullptr;
        VARIANT answer = {};
        results = {object->get_accChildCount(&count), object->get_accName(Child(1), &name),
                   object->get_accParent(&parent), object->accHitTest(110, 210, &answer),
                   object->accDoDefaultAction(Child(2))};
    });
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(results, std::vector<HRESULT>(5, CO_E_OBJNOTCONNECTED));
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->Release(), 0U) << "references are left";
}

TEST_F(AccessibleClient, AnObjectThatOutlivesTheWindowReturnsNotConnected) {
    const FromWindow fromWindow = AccessibleFromWindow();
    HWND window = g_app.mainWindow;
    IAccessible* object = nullptr;
    HRESULT connected = E_FAIL;
    HRESULT afterwards = E_FAIL;
    RunClient([&] {
        fromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                   reinterpret_cast<void**>(&object));
        LONG count = 0;
        if (object == nullptr) return;
        connected = object->get_accChildCount(&count);
        g_app.windowDestroyed = true;
        afterwards = object->get_accChildCount(&count);
        object->Release();
    });
    EXPECT_EQ(connected, S_OK);
    EXPECT_EQ(afterwards, CO_E_OBJNOTCONNECTED);
    ASSERT_NE(g_app.accessibleObject, nullptr);
    EXPECT_EQ(References(), 1U);
}
