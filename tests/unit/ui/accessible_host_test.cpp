// oleacc.dll is loaded once, on the first request, and receives the popup's only accessible object.
#include "ui/accessible_host.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/fake_libraries.h"
#include "support/seam.h"

#include <oleacc.h>

namespace {

LRESULT g_answer = 0;
IUnknown* g_passedObject = nullptr;
bool g_windowEndsInside = false;
ULONG g_referencesInside = 0;

LRESULT WINAPI FakeLresultFromObject(REFIID iid, WPARAM wParam, IUnknown* object) {
    EXPECT_TRUE(IsEqualIID(iid, __uuidof(IAccessible)));
    Record("object for ", wParam);
    g_passedObject = object;
    if (g_windowEndsInside) {
        ReleaseAccessibleObject();
        object->AddRef();
        g_referencesInside = object->Release();
    }
    return g_answer;
}

class AccessibleHost : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(0x1234);
        g_answer = 49152;
        g_passedObject = nullptr;
        g_windowEndsInside = false;
        g_referencesInside = 0;
        RemoveLibraries();
        g_calls.clear();
    }
    void TearDown() override {
        ReleaseAccessibleObject();
        RemoveLibraries();
    }

    static void Install() {
        InstallLibrary(L"oleacc.dll", {{"LresultFromObject", EntryPoint(&FakeLresultFromObject)}});
    }
};

}  // namespace

TEST_F(AccessibleHost, NothingIsLoadedWithoutARequest) {
    Install();
    ReleaseAccessibleObject();
    EXPECT_EQ(g_calls, CallRecord{});
}

TEST_F(AccessibleHost, EveryRequestGetsANewAnswerForTheSameObject) {
    Install();
    EXPECT_EQ(AnswerAccessibilityRequest(5), 49152);
    IUnknown* const first = g_passedObject;
    g_answer = 49153;
    EXPECT_EQ(AnswerAccessibilityRequest(6), 49153);
    EXPECT_EQ(g_passedObject, first);
    EXPECT_EQ(g_calls, (CallRecord{"load oleacc.dll", "object for 5", "object for 6"}));
}

TEST_F(AccessibleHost, AnErrorGivesNoAnswer) {
    Install();
    g_answer = E_NOINTERFACE;
    EXPECT_EQ(AnswerAccessibilityRequest(5), 0);
}

TEST_F(AccessibleHost, AMissingLibraryIsSoughtOnlyOnce) {
    EXPECT_EQ(AnswerAccessibilityRequest(5), 0);
    EXPECT_EQ(AnswerAccessibilityRequest(5), 0);
    EXPECT_EQ(g_calls, CallRecord{"load oleacc.dll"});
}

TEST_F(AccessibleHost, WithoutTheFunctionThereIsNoAnswer) {
    InstallLibrary(L"oleacc.dll", {});
    EXPECT_EQ(AnswerAccessibilityRequest(5), 0);
}

TEST_F(AccessibleHost, AWindowThatIsBeingCreatedGivesNoObject) {
    Install();
    g_app.mainWindow = nullptr;  // WM_CREATE sets it
    EXPECT_EQ(AnswerAccessibilityRequest(5), 0);
    EXPECT_EQ(g_calls, CallRecord{});
}

TEST_F(AccessibleHost, AWindowThatIsBeingDestroyedGivesNoObject) {
    Install();
    g_app.windowDestroyed = true;
    EXPECT_EQ(AnswerAccessibilityRequest(5), 0);
    EXPECT_EQ(g_calls, CallRecord{});
}

TEST_F(AccessibleHost, TheClientsReferenceOutlivesThePrograms) {
    Install();
    AnswerAccessibilityRequest(5);
    g_passedObject->AddRef();
    ReleaseAccessibleObject();
    EXPECT_EQ(g_app.accessibleObject, nullptr);
    EXPECT_EQ(g_passedObject->Release(), 0U);
}

TEST_F(AccessibleHost, AWindowThatIsDestroyedInsideTheCallDoesNotTakeTheObjectAway) {
    Install();
    AnswerAccessibilityRequest(5);
    g_passedObject->AddRef();  // keeps the object for the checks in any case
    g_windowEndsInside = true;
    EXPECT_EQ(AnswerAccessibilityRequest(6), 49152);
    EXPECT_EQ(g_referencesInside, 2U) << "this test's and the call's";
    EXPECT_EQ(g_app.accessibleObject, nullptr);
    EXPECT_EQ(g_passedObject->Release(), 0U);
}
