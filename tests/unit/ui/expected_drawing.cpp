#include "ui/expected_drawing.h"

#include <algorithm>

#include "ui/print.h"

namespace {

std::string Box(Rect rect) {
    return Print("(%d,%d)-(%d,%d)", rect.left, rect.top, rect.right, rect.bottom);
}

std::string Hash(std::uint32_t colour) {
    return Print("#%06X", static_cast<unsigned>(colour));
}

}  // namespace

int ScaledTo(std::uint32_t dpi, int units) {
    return (units * static_cast<int>(dpi != 0 ? dpi : 96) + 48) / 96;
}

std::string Fill(Rect rect, std::uint32_t colour) {
    return "fill " + Box(rect) + " " + Hash(colour);
}

std::string Round(Rect rect, int corner, const std::string& pen, const std::string& fill) {
    return "round " + Box(rect) + Print(" corner %dx%d pen ", corner, corner) + pen + " fill " + fill;
}

std::string Outline(Rect rect, int corner, std::uint32_t colour) {
    return Round(rect, corner, "1 " + Hash(colour), "none");
}

std::string Stroke(Rect ends, int width, std::uint32_t colour) {
    return "line " + Box(ends) + Print(" pen %d ", width) + Hash(colour);
}

std::string Gradient(Rect rect, std::uint32_t top, std::uint32_t bottom) {
    return "gradient " + Box(rect) + " " + Hash(top) + " to " + Hash(bottom);
}

std::string Clip(Rect rect, int radius, std::uint32_t dpi) {
    const int ellipse = 2 * std::max(1, ScaledTo(dpi, radius));
    return "clip " +
           Box({ScaledTo(dpi, rect.left), ScaledTo(dpi, rect.top), ScaledTo(dpi, rect.right) + 1,
                ScaledTo(dpi, rect.bottom) + 1}) +
           Print(" ellipse %dx%d", ellipse, ellipse);
}

std::string Text(const std::string& text, const char* font, std::uint32_t colour, Rect rect,
                 const char* alignment) {
    return "text \"" + text + "\" " + font + " " + Hash(colour) + " " + Box(rect) + " " + alignment;
}

Drawing operator+(Drawing first, const Drawing& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Drawing RoundedGradient(Rect rect, int radius, std::uint32_t top, std::uint32_t bottom, std::uint32_t dpi) {
    return {Clip(rect, radius, dpi), Gradient(rect, top, bottom), "clip none"};
}

Drawing SliderDrawing(const ExpectedSlider& slider, std::uint32_t dpi) {
    const int cx = slider.cx;
    const int off = static_cast<int>(slider.value * 198.0);
    const std::uint32_t accent = slider.red ? 0xFF0000 : 0xFFFFFF;
    Drawing drawing = {Round({cx - 7, 102, cx + 7, 310}, 4, "2 #000000", "#000000"),
                       Round({cx - 4, 107, cx + 4, 305}, 2, "none", "#1E1E1E")};

    constexpr int tickOffsets[] = {0, 19, 39, 59, 79, 99, 118, 138, 158, 178, 198};
    for (int i = 0; i < 11; ++i) {
        const int t = tickOffsets[i];
        const bool major = i == 0 || i == 5 || i == 10;
        const int length = major ? 20 : 10;
        const int top = major ? 304 - t : 305 - t;
        const std::uint32_t colour = major ? 0x646464 : 0x282828;
        drawing.push_back(Fill({cx - 45, top, cx - 45 + length, 306 - t}, colour));
        drawing.push_back(Fill({cx + 45 - length, top, cx + 45, 306 - t}, colour));
    }

    if (off > 0) drawing.push_back(Fill({cx - 4, 305 - off, cx + 4, 305}, slider.active ? accent : 0x282828));

    const Rect thumb = {cx - 26, 291 - off, cx + 26, 319 - off};
    drawing.push_back(Clip(thumb, 4, dpi));
    for (int row = 0; row < 28; ++row) {
        const int y = 291 - off + row;
        drawing.push_back(
            Fill({cx - 26, y, cx + 26, y + 1}, static_cast<std::uint32_t>(kThumbGreys[row]) * 0x010101U));
    }
    drawing.push_back(Fill({cx - 12, 304 - off, cx + 12, 307 - off}, slider.active ? accent : 0x505050));
    drawing.push_back("clip none");
    drawing.push_back(Outline(thumb, 8, 0x3C3C3C));

    const std::uint32_t textColour = slider.red ? 0xFF0000 : 0xFFFFFF;
    drawing.push_back(Text(slider.caption, "Caption", textColour, {cx - 70, 65, cx + 70, 87}, kCentre));
    const int x0 = cx - slider.boxWidth / 2;
    const Rect box = {x0, 330, x0 + slider.boxWidth, 354};
    drawing.push_back(Round(box, 8, slider.red ? "1 #A00000" : "1 #373737", "#000000"));
    drawing.push_back(Text(slider.text, "Value", textColour, box, kCentre));
    return drawing;
}
