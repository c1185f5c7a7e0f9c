// The popup drawn by real GDI into a picture, at any DPI. Text is recorded, not drawn, because fonts differ
// between machines. Pictures are compared without text, and every text is measured as 50 units wide.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/seam.h"
#include "ui/picture.h"

AMBREL_USES_SEAMS(panel_rendering);

struct PanelState {
    const char* name;
    void (*set)();  // from the defaults of AppState
};

extern const PanelState kPanelStates[];
extern const std::size_t kPanelStateCount;

const PanelState& StateNamed(const std::string& name);

constexpr std::uint32_t kPictureDpis[] = {96, 120, 144, 192};

struct Rendering {
    Picture picture;
    std::vector<std::string> texts;  // with their colours: WARMTH #FF0000
};

// Paints the state into a picture of the popup's size at the DPI.
Rendering RenderPanel(const PanelState& state, std::uint32_t dpi);

// Paints an empty client area with real GDI; must return without a crash.
void PaintWithoutSize();
