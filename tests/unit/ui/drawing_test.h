// Fixture for the drawing tests: nothing is drawn at the start, nothing is leaked at the end.
#pragma once

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/seam.h"
#include "ui/gdi_recorder.h"

AMBREL_USES_SEAMS(gdi_recorder);

class DrawingTest : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        ResetGdi();
    }

    void TearDown() override {
        EXPECT_EQ(GdiLeftovers(), Drawing{});
        EXPECT_EQ(ClipOf(ScreenContext()), "none");
    }
};
