#include "app/shell/header_icon.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/seam.h"

namespace {

HICON const kOldIcon = MakeHandle<HICON>(70);
HICON const kNewIcon = MakeHandle<HICON>(71);

bool g_iconLoads = true;

HANDLE WINAPI FakeLoadImage(HINSTANCE instance, const wchar_t* name, UINT type, int width, int height,
                            UINT flags) {
    EXPECT_EQ(instance, g_app.instance);
    EXPECT_EQ(type, static_cast<UINT>(IMAGE_ICON));
    EXPECT_EQ(flags & LR_SHARED, 0U) << "a shared icon must not be destroyed";
    Record("load icon ", ValueOf(name), " ", width, "x", height);
    return g_iconLoads ? kNewIcon : nullptr;
}

BOOL WINAPI FakeDestroyIcon(HICON icon) {
    Record("destroy icon ", ValueOf(icon), " with ", ValueOf(g_app.headerIcon), " in place");
    return TRUE;
}

class HeaderIcon : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.instance = MakeHandle<HINSTANCE>(9);
        g_app.headerIcon = kOldIcon;
        g_app.scaledResourcesBuilt = true;
        g_iconLoads = true;
        g_calls.clear();
    }

    static void ExpectIconAt(std::uint32_t dpi, const char* call) {
        g_calls.clear();
        g_app.dpi = dpi;
        g_app.headerIcon = nullptr;
        RebuildScaledResources();
        EXPECT_EQ(g_calls, (CallRecord{call}));
    }
};

}  // namespace

AMBREL_SEAM(LoadImageW, FakeLoadImage);
AMBREL_SEAM(DestroyIcon, FakeDestroyIcon);

TEST_F(HeaderIcon, TheIconIs22UnitsSquareAtEveryScale) {
    ExpectIconAt(96, "load icon 103 22x22");
    ExpectIconAt(120, "load icon 103 28x28");
    ExpectIconAt(144, "load icon 103 33x33");
    ExpectIconAt(192, "load icon 103 44x44");
    ExpectIconAt(0, "load icon 103 22x22");
}

TEST_F(HeaderIcon, ThePreviousIconIsDestroyedOnceTheNewOneIsInPlace) {
    RebuildScaledResources();
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 22x22", "destroy icon 70 with 71 in place"}));
    EXPECT_EQ(g_app.headerIcon, kNewIcon);
}

TEST_F(HeaderIcon, TheFirstIconReplacesNone) {
    g_app.headerIcon = nullptr;
    g_app.scaledResourcesBuilt = false;
    RebuildScaledResources();
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 22x22"}));
    EXPECT_TRUE(g_app.scaledResourcesBuilt);
}

TEST_F(HeaderIcon, WithoutANewIconThePreviousOneStays) {
    g_iconLoads = false;
    RebuildScaledResources();
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 22x22"}));
    EXPECT_EQ(g_app.headerIcon, kOldIcon);
}
