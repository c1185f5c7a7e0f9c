// The switches of the settings panel, from the top.
#pragma once

#include "app/state/app_state.h"
#include "ui/regions.h"

struct SettingsRow {
    Region region;
    const wchar_t* label;
    bool AppState::*value;
};

inline constexpr SettingsRow kSettingsRows[] = {
    {Region::LaunchRow, L"LAUNCH AT STARTUP", &AppState::launchAtStart},
    {Region::ExtremeDimRow, L"ALLOW EXTREME DIM", &AppState::allowExtremeDim},
    {Region::LegacyRow, L"LEGACY MODE", &AppState::useLegacyGamma},
};
