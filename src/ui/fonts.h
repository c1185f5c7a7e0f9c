// The popup's fonts, made once and alive for the whole run.
#pragma once

#include "win32/platform.h"

enum class FontRole { Title, Caption, Small, Value, Label, Preset, Toggle, Glyph };

// Heights are design units: the canvas' mapping scales them. A font that Windows cannot make stays null.
void CreateFonts();
void DeleteFonts();

// The font of a role. Where it is missing: the small font for captions, the label font for presets and
// glyphs; null when that is missing too.
HFONT FontFor(FontRole role);
