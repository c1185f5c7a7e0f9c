#include "app/notices.h"

#include <gtest/gtest.h>

#include <string>

#include "app/state/app_state.h"
#include "support/seam.h"

namespace {

struct Box {
    HWND owner = nullptr;
    std::wstring text;
    std::wstring title;
    UINT type = 0;
};

Box g_box;
int g_boxes = 0;
void (*g_duringBox)() = nullptr;  // runs while the next box is open

int WINAPI FakeMessageBox(HWND owner, const wchar_t* text, const wchar_t* title, UINT type) {
    g_box = {owner, text, title, type};
    g_boxes += 1;
    if (g_duringBox != nullptr) {
        void (*const act)() = g_duringBox;
        g_duringBox = nullptr;
        act();
    }
    return IDOK;
}

HWND const kWindow = reinterpret_cast<HWND>(500);

class Notices : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_box = {};
        g_boxes = 0;
    }
};

}  // namespace

AMBREL_SEAM(MessageBoxW, FakeMessageBox);

TEST_F(Notices, TheLegacyModeNoticeIsOwnedByThePopup) {
    ShowLegacyNotice();
    EXPECT_EQ(g_boxes, 1);
    EXPECT_EQ(g_box.owner, kWindow);
    EXPECT_EQ(
        g_box.text,
        L"Ambrel detected that your graphics hardware doesn't support the modern color pipeline, so it "
        L"switched to Legacy Mode automatically. Everything is working \x2014 the warmth and brightness "
        L"sliders behave the same way.\n\nYou can change this any time in Settings (Legacy Mode).");
    EXPECT_EQ(g_box.title, L"Ambrel");
    EXPECT_EQ(g_box.type, 0x40U);
}

TEST_F(Notices, TheMagnificationErrorIsAWarningWithItsCode) {
    ShowMagnificationError(1400);
    EXPECT_EQ(g_boxes, 1);
    EXPECT_EQ(g_box.text, L"MagSetFullscreenColorEffect failed.\nError code: 1400");
    EXPECT_EQ(g_box.title, L"Ambrel");
    EXPECT_EQ(g_box.type, 0x30U);
}

TEST_F(Notices, TheErrorCodeIsASignedNumber) {
    ShowMagnificationError(-1);
    EXPECT_EQ(g_box.text, L"MagSetFullscreenColorEffect failed.\nError code: -1");
    ShowMagnificationError(-2147483647 - 1);
    EXPECT_EQ(g_box.text, L"MagSetFullscreenColorEffect failed.\nError code: -2147483648");
}

TEST_F(Notices, ABoxThatIsOpenDoesNotOpenASecondTime) {
    g_duringBox = [] { ShowLegacyNotice(); };
    ShowLegacyNotice();
    EXPECT_EQ(g_boxes, 1);

    g_duringBox = [] { ShowMagnificationError(6); };
    ShowMagnificationError(5);
    EXPECT_EQ(g_boxes, 2);
    EXPECT_EQ(g_box.text, L"MagSetFullscreenColorEffect failed.\nError code: 5");
}

TEST_F(Notices, ABoxOpensAgainOnceItWasClosed) {
    ShowLegacyNotice();
    ShowLegacyNotice();
    ShowMagnificationError(5);
    ShowMagnificationError(5);
    EXPECT_EQ(g_boxes, 4);
}

TEST_F(Notices, AnotherBoxOpensOverAnOpenOne) {
    g_duringBox = [] { ShowMagnificationError(5); };
    ShowLegacyNotice();
    EXPECT_EQ(g_boxes, 2);
}
