// The popup's fonts, created at start-up and deleted when the window is destroyed.
#pragma once

#include "win32/platform.h"

enum class FontRole { Title, Caption, Small, Value, Label, Preset, Toggle, Glyph };

// Heights are design units; the mapping mode of the canvas scales them. A font that cannot be created stays
// null.
void CreateFonts();
void DeleteFonts();

// The font of a role. Fallbacks when it is missing: Small for Caption, Label for Preset and Glyph. Null when
// that font is missing too, or the role has no fallback.
HFONT FontFor(FontRole role);
