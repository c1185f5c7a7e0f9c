// The frame: one off-screen bitmap, copied in one call.
#include "ui/popup_painter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "app/state/app_state.h"
#include "support/seam.h"
#include "ui/drawing_test.h"
#include "ui/expected_drawing.h"
#include "ui/gdi_recorder.h"
#include "ui/main_panel.h"
#include "ui/settings_panel.h"

namespace {

HWND const kWindow = reinterpret_cast<HWND>(77);

Drawing CanvasOf(const std::string& viewport) {
    return {"client of 77",
            "map mode 8",
            "window extent 320x540",
            "viewport extent " + viewport,
            "viewport origin 0,0",
            "fill (0,0)-(320,540) #0D0D0D",
            "main panel"};
}

Drawing FrameOf(const std::string& size, const std::string& bitmap) {
    return Drawing{"begin paint 77", "client of 77", "context like the screen",
                   "bitmap " + size + " like the screen"} +
           CanvasOf(size) + Drawing{"map mode 1", "copy " + bitmap + " from (0,0) to (0,0) " + size};
}

class PopupPainter : public DrawingTest {
protected:
    void SetUp() override {
        DrawingTest::SetUp();
        g_app.mainWindow = kWindow;
    }
};

}  // namespace

AMBREL_REPLACE(void, DrawMainPanel, (HDC)) {
    g_gdi.drawn.push_back("main panel");
}
AMBREL_REPLACE(void, DrawSettingsPanel, (HDC)) {
    g_gdi.drawn.push_back("settings panel");
}

TEST_F(PopupPainter, TheCanvasIsStretchedOverTheClientArea) {
    PaintRoot(ScreenContext());
    Drawing expected = CanvasOf("320x540");
    expected[1] += " of the screen";
    EXPECT_EQ(g_gdi.drawn, expected);
}

TEST_F(PopupPainter, TheCanvasIsStretchedIndependentlyInBothDirections) {
    g_gdi.client = {480, 1080};
    PaintRoot(ScreenContext());
    EXPECT_EQ(g_gdi.drawn[3], "viewport extent 480x1080");
    EXPECT_EQ(g_gdi.drawn[5], "fill (0,0)-(320,540) #0D0D0D");
}

TEST_F(PopupPainter, APaintDrawsOffScreenAndCopiesInPlainPixels) {
    g_gdi.client = {400, 675};
    PaintPopup(kWindow);
    EXPECT_EQ(g_gdi.drawn, (FrameOf("400x675", "bitmap 400x675") +
                            Drawing{"delete bitmap 400x675", "delete context", "end paint 77"}));
}

TEST_F(PopupPainter, AnEmptyClientAreaIsStillPainted) {
    g_gdi.client = {0, 0};
    PaintPopup(kWindow);
    EXPECT_EQ(g_gdi.drawn, (FrameOf("0x0", "bitmap 0x0") +
                            Drawing{"delete bitmap 0x0", "delete context", "end paint 77"}));
}

TEST_F(PopupPainter, WithoutABitmapThePaintStillCompletes) {
    g_gdi.bitmapsFail = true;
    PaintPopup(kWindow);
    EXPECT_EQ(g_gdi.drawn, (FrameOf("320x540", "default") + Drawing{"delete context", "end paint 77"}));
}

TEST_F(PopupPainter, AWindowThatCannotBePaintedIsValidated) {
    g_gdi.paintFails = true;
    PaintPopup(kWindow);
    EXPECT_EQ(g_gdi.drawn, (Drawing{"begin paint 77", "validate 77"}));
}

TEST_F(PopupPainter, EveryPaintIsACompleteFrame) {
    PaintPopup(kWindow);
    const Drawing first = g_gdi.drawn;
    g_gdi.drawn.clear();
    PaintPopup(kWindow);
    EXPECT_EQ(g_gdi.drawn, first);
}

TEST_F(PopupPainter, TheSettingsPanelTakesTheMainPanelsPlaceOnTheSameCanvas) {
    PaintPopup(kWindow);
    Drawing expected = g_gdi.drawn;
    std::replace(expected.begin(), expected.end(), std::string("main panel"), std::string("settings panel"));
    g_gdi.drawn.clear();
    g_app.panel = Panel::Settings;
    PaintPopup(kWindow);
    EXPECT_EQ(g_gdi.drawn, expected);
    g_gdi.drawn.clear();
    g_app.panel = Panel::Main;
    PaintRoot(ScreenContext());
    EXPECT_EQ(g_gdi.drawn.back(), "main panel");
}
