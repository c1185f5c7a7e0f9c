#include "soak/painted_popup.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "app/state/dpi.h"
#include "soak/attack.h"
#include "ui/popup_painter.h"
#include "ui/regions.h"

namespace {

constexpr int kRegionCount = static_cast<int>(Region::None);

// An edge may be this far from its place: the ring around a button and the width of its outline.
constexpr double kEdgeUnits = 1.5;
constexpr double kEdgePixels = 1.5;
constexpr int kMargin = 4;  // units on both sides of an edge that are searched

constexpr std::uint32_t kAccentWarmth = 0xFF0000, kAccentBrightness = 0xFFFFFF, kAccentOff = 0x505050;
constexpr std::uint32_t kBannerRed = 0xFF0000;

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t At(int x, int y) const {
        if (x < 0 || y < 0 || x >= width || y >= height) return 0xFF000000;
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)] &
               0xFFFFFF;
    }
};

// Paints the popup as WM_PAINT does.
Picture Paint() {
    RECT client = {};
    GetClientRect(g_app.mainWindow, &client);
    Picture picture = {client.right, client.bottom, {}};
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = client.right;
    info.bmiHeader.biHeight = -client.bottom;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    HDC dc = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap != nullptr) {
        HGDIOBJ previous = SelectObject(dc, bitmap);
        PaintRoot(dc);
        GdiFlush();
        const auto* first = static_cast<const std::uint32_t*>(bits);
        picture.pixels.assign(
            first, first + static_cast<std::size_t>(client.right) * static_cast<std::size_t>(client.bottom));
        SelectObject(dc, previous);
        DeleteObject(bitmap);
    }
    DeleteDC(dc);
    return picture;
}

double Scale() {
    return g_app.dpi / 96.0;
}

// A line of pixels across an edge, from outside to inside.
struct Crossing {
    const char* edge;
    POINT at;          // units, on the edge
    int stepX, stepY;  // towards the inside
};

// The number of pixels from the start of the crossing, kMargin units outside, to the first other colour; -1
// if there is none.
int FirstChange(const Picture& picture, const Crossing& crossing) {
    const int length = static_cast<int>(2 * kMargin * Scale());
    const int x = static_cast<int>((crossing.at.x - crossing.stepX * kMargin) * Scale());
    const int y = static_cast<int>((crossing.at.y - crossing.stepY * kMargin) * Scale());
    const std::uint32_t outside = picture.At(x, y);
    for (int i = 1; i < length; ++i) {
        if (picture.At(x + crossing.stepX * i, y + crossing.stepY * i) != outside) return i;
    }
    return -1;
}

bool HasSurface(Region region) {
    switch (region) {
        case Region::PwmCard:
        case Region::DayPreset:
        case Region::EveningPreset:
        case Region::NightPreset:
        case Region::Power:
        case Region::LaunchRow:
        case Region::ExtremeDimRow:
        case Region::LegacyRow:
        case Region::Support: return true;
        default: return false;
    }
}

std::string Name(Region region) {
    return "region " + std::to_string(static_cast<int>(region)) + " at " + std::to_string(g_app.dpi) + " DPI";
}

void RequireSurface(const Picture& picture, Region region) {
    const RECT rect = RegionRect(region);
    const LONG middleX = rect.left + 14;  // beside the text in the middle
    const LONG middleY = (rect.top + rect.bottom) / 2;
    const Crossing crossings[] = {{"left", {rect.left, middleY}, 1, 0},
                                  {"right", {rect.right, middleY}, -1, 0},
                                  {"top", {middleX, rect.top}, 0, 1},
                                  {"bottom", {middleX, rect.bottom}, 0, -1}};
    for (const Crossing& crossing : crossings) {
        const int change = FirstChange(picture, crossing);
        const double distance = std::abs(change - kMargin * Scale());
        Require(change >= 0 && distance <= kEdgeUnits * Scale() + kEdgePixels,
                Name(region) + ": the " + crossing.edge + " edge is painted " +
                    std::to_string(change - kMargin * Scale()) + " pixels inside its place");
    }
}

bool Contains(const RECT& rect, int x, int y) {
    return x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom;
}

// Whether a pixel in the rectangle has the colour.
bool IsPaintedIn(const Picture& picture, const RECT& units, std::uint32_t colour) {
    for (int y = static_cast<int>(units.top * Scale()); y < units.bottom * Scale(); ++y) {
        for (int x = static_cast<int>(units.left * Scale()); x < units.right * Scale(); ++x) {
            if (picture.At(x, y) == colour) return true;
        }
    }
    return false;
}

bool HasContent(const Picture& picture, const RECT& units) {
    const std::uint32_t background =
        picture.At(static_cast<int>(units.left * Scale()) + 1, static_cast<int>(units.top * Scale()) + 1);
    for (int y = static_cast<int>(units.top * Scale()) + 1; y < units.bottom * Scale() - 1; ++y) {
        for (int x = static_cast<int>(units.left * Scale()) + 1; x < units.right * Scale() - 1; ++x) {
            if (picture.At(x, y) != background) return true;
        }
    }
    return false;
}

void RequireOneRegionAt(int x, int y) {
    int found = 0;
    Region owner = Region::None;
    for (int i = 0; i < kRegionCount; ++i) {
        const auto region = static_cast<Region>(i);
        if (!IsAvailable(region) || !Contains(RegionRect(region), x, y)) continue;
        found += 1;
        owner = region;
    }
    const std::string point = std::to_string(x) + ", " + std::to_string(y);
    Require(found <= 1, std::to_string(found) + " regions at " + point);
    Require(HitTest(x, y) == owner, "another region is hit at " + point);
}

// Every corner of every region and random points.
void RequireOneRegionPerPoint() {
    for (int i = 0; i < kRegionCount; ++i) {
        const RECT rect = RegionRect(static_cast<Region>(i));
        for (const LONG x : {rect.left - 1, rect.left, rect.right - 1, rect.right}) {
            for (const LONG y : {rect.top - 1, rect.top, rect.bottom - 1, rect.bottom})
                RequireOneRegionAt(x, y);
        }
    }
    for (int i = 0; i < 200; ++i)
        RequireOneRegionAt(g_round->random.Between(-10, 330), g_round->random.Between(-10, 550));
}

// A pixel well inside a painted surface hits it, one well outside does not.
void RequireHitAsPainted(Region region) {
    const RECT rect = RegionRect(region);
    const int inset = static_cast<int>(std::ceil(1 + Scale()));
    const int left = static_cast<int>(rect.left * Scale());
    const int right = static_cast<int>(rect.right * Scale());
    const int y = static_cast<int>((rect.top + rect.bottom) / 2.0 * Scale());
    const auto hits = [y, region](int x) { return HitTest(UnscaleForDpi(x), UnscaleForDpi(y)) == region; };
    Require(hits(left + inset) && hits(right - inset), Name(region) + " is not hit where it is painted");
    Require(!hits(left - inset) && !hits(right + inset), Name(region) + " is hit where it is not painted");
}

void RequireStripAsAvailable(const Picture& picture) {
    const RECT card = RegionRect(Region::PwmCard);
    const int change = FirstChange(picture, {"left", {card.left, (card.top + card.bottom) / 2 + 2}, 1, 0});
    Require((change >= 0) == IsAvailable(Region::PwmCard),
            "the card is painted but not available or reversed");
    const bool red = IsPaintedIn(picture, {22, 380, 298, 410}, kBannerRed);
    Require(red == IsAvailable(Region::GammaBanner), "the banner is painted but not available or reversed");
}

}  // namespace

void RequireThumbPainted(Slider slider) {
    const Picture picture = Paint();
    const bool warmth = slider == Slider::Warmth;
    const double value = warmth ? g_app.intensity : g_app.brightness;
    const std::uint32_t bar = !g_app.filterOn ? kAccentOff : warmth ? kAccentWarmth : kAccentBrightness;
    // The bar is wider than the filled groove below the thumb: it is found 8 units beside the centre.
    const int x = static_cast<int>((warmth ? 88 : 248) * Scale());
    const double expected = (305 - value * 198) * Scale();
    const int tolerance = static_cast<int>(std::ceil(2 * Scale()));
    bool found = false;
    for (int y = 0; y < picture.height; ++y) {
        if (picture.At(x, y) != bar || y < 90 * Scale() || y > 322 * Scale()) continue;
        found = true;
        Require(std::abs(y - expected) <= tolerance + Scale(),
                "the thumb is painted at " + std::to_string(y) + " instead of " + std::to_string(expected));
    }
    Require(found, "the thumb is not painted");
}

void RequirePaintedAsHit() {
    const Picture picture = Paint();
    Require(!picture.pixels.empty(), "nothing is painted");
    for (int i = 0; i < kRegionCount; ++i) {
        const auto region = static_cast<Region>(i);
        if (!IsAvailable(region)) continue;
        if (HasSurface(region)) {
            RequireSurface(picture, region);
            RequireHitAsPainted(region);
        } else {
            Require(HasContent(picture, RegionRect(region)), Name(region) + " is not painted");
        }
    }
    if (g_app.panel == Panel::Main) {
        RequireStripAsAvailable(picture);
        RequireThumbPainted(Slider::Warmth);
        RequireThumbPainted(Slider::Brightness);
    }
    RequireOneRegionPerPoint();
}
