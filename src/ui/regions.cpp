#include "ui/regions.h"

#include "app/state/app_state.h"
#include "filter/gamma_banner.h"
#include "ui/slider_geometry.h"
#include "ui/strip_content.h"

namespace {

struct RegionRow {
    Region region;
    Panel panel;
    RECT rect;
};

// The travel of a slider, as wide as its thumb. Excludes the half thumb that overhangs each end.
constexpr RECT TrackRect(int centreX) {
    return {centreX - kThumbHalfWidth, kSliderBottom - kSliderTravel, centreX + kThumbHalfWidth,
            kSliderBottom};
}

// In hit-testing order, which is that of the enumeration.
constexpr RegionRow kRegions[] = {
    {Region::WarmthTrack, Panel::Main, TrackRect(kWarmthCentreX)},
    {Region::BrightnessTrack, Panel::Main, TrackRect(kBrightnessCentreX)},
    {Region::GammaBanner, Panel::Main, {22, 380, 298, 410}},
    {Region::PwmCard, Panel::Main, {24, 384, 296, 418}},
    {Region::DayPreset, Panel::Main, {30, 429, 110, 465}},
    {Region::EveningPreset, Panel::Main, {120, 429, 200, 465}},
    {Region::NightPreset, Panel::Main, {210, 429, 290, 465}},
    {Region::Power, Panel::Main, {24, 479, 296, 527}},
    {Region::Gear, Panel::Main, {280, 17, 304, 41}},
    {Region::Close, Panel::Settings, {252, 18, 300, 42}},
    {Region::LaunchRow, Panel::Settings, {24, 132, 296, 174}},
    {Region::ExtremeDimRow, Panel::Settings, {24, 182, 296, 224}},
    {Region::LegacyRow, Panel::Settings, {24, 232, 296, 274}},
    {Region::Support, Panel::Settings, {24, 462, 296, 516}},
};

constexpr bool RowsAreInEnumerationOrder() {
    int expected = 0;
    for (const RegionRow& row : kRegions) {
        if (static_cast<int>(row.region) != expected++) return false;
    }
    return expected == static_cast<int>(Region::None);
}
static_assert(RowsAreInEnumerationOrder(), "every region needs a row");

bool Contains(const RECT& rect, int x, int y) {
    return x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom;
}

bool IsInStrip(Region region) {
    return region == Region::GammaBanner || region == Region::PwmCard;
}

bool Reacts(Region region) {
    if (region == Region::GammaBanner) return CurrentStripContent() == StripContent::Banner;
    if (region == Region::PwmCard) return CurrentStripContent() == StripContent::Card;
    return true;
}

}  // namespace

RECT RegionRect(Region region) {
    for (const RegionRow& row : kRegions) {
        if (row.region == region) return row.rect;
    }
    return {};
}

Slider SliderOf(Region region) {
    if (region == Region::WarmthTrack) return Slider::Warmth;
    return region == Region::BrightnessTrack ? Slider::Brightness : Slider::None;
}

bool IsAvailable(Region region) {
    for (const RegionRow& row : kRegions) {
        if (row.region == region) return row.panel == g_app.panel && Reacts(region);
    }
    return false;
}

Region HitTest(int x, int y) {
    for (const RegionRow& row : kRegions) {
        if (row.panel != g_app.panel || !Contains(row.rect, x, y)) continue;
        if (IsInStrip(row.region)) LogBannerDemotionOnce();
        if (Reacts(row.region)) return row.region;
    }
    return Region::None;
}
