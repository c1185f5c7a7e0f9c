"""Preview fonts: substitutes for Segoe UI, Segoe MDL2 Assets and Consolas with the same family names.

Generated from Debian's Open Sans and DejaVu when the lab is prepared, stored under the build folder, never committed.
"""

from pathlib import Path

from fontTools.pens.recordingPen import DecomposingRecordingPen
from fontTools.pens.ttGlyphPen import TTGlyphPen
from fontTools.ttLib import TTFont

from .paths import DEJAVU, OPEN_SANS

# Segoe UI's cell at 2048 units per em, so that a height passed to CreateFont gives letters of the same size.
SEGOE_ASCENT, SEGOE_DESCENT = 2210, 514
# Consolas' cell, and the width of all its letters.
CONSOLAS_ASCENT, CONSOLAS_DESCENT, CONSOLAS_ADVANCE = 1884, 514, 1126
WARNING_SIGN, GEAR, SETTINGS_GLYPH = 0x26A0, 0x2699, 0xE713
# Open Sans is wider than Segoe UI: the longest line of the panel must fit as it does on Windows.
SEGOE_REGULAR_WIDTH, SEGOE_BOLD_WIDTH = 0.96, 0.96

# Hinting does not match the changed widths; plain GDI text does not use layout, kerning and bitmap tables.
DROPPED_TABLES = ("fpgm", "prep", "cvt ", "gasp", "hdmx", "LTSH", "VDMX", "DSIG", "kern", "GPOS", "GSUB", "GDEF",
                  "BASE", "JSTF", "FFTM", "EBDT", "EBLC", "EBSC", "MATH")


def rename(font, family, bold):
    style = "Bold" if bold else "Regular"
    texts = {1: family, 2: style, 3: f"Ambrel preview {family} {style}",
             4: f"{family} Bold" if bold else family, 6: f"{family.replace(' ', '')}-{style}"}
    table = font["name"]
    table.names = []
    for number, text in texts.items():
        table.setName(text, number, 3, 1, 0x409)
    font["OS/2"].usWeightClass = 700 if bold else 400
    font["OS/2"].fsSelection = 0x20 if bold else 0x40
    font["head"].macStyle = 1 if bold else 0


def set_cell(font, ascent, descent):
    """Sets the font's cell to `ascent` above and `descent` below the base line, in font units."""
    windows, horizontal = font["OS/2"], font["hhea"]
    windows.usWinAscent, windows.usWinDescent = ascent, descent
    windows.sTypoAscender, windows.sTypoDescender, windows.sTypoLineGap = ascent, -descent, 0
    horizontal.ascent, horizontal.descent, horizontal.lineGap = ascent, -descent, 0


def narrow(font, factor):
    """Scales every glyph and advance horizontally and drops the hinting for the old widths."""
    for tag in DROPPED_TABLES:
        if tag in font:
            del font[tag]
    glyphs = font["glyf"]
    for name in font.getGlyphOrder():
        glyph = glyphs[name]
        if hasattr(glyph, "program"):
            glyph.removeHinting()
        if glyph.isComposite():
            for component in glyph.components:
                component.x = round(component.x * factor)
        elif glyph.numberOfContours > 0:
            glyph.coordinates.scale((factor, 1.0))
            glyph.coordinates.toInt()
        advance, bearing = font["hmtx"][name]
        font["hmtx"][name] = (round(advance * factor), round(bearing * factor))


def add_glyph(font, source, source_code, code):
    """Draws `source`'s glyph for one character into `font` as the glyph of another; both have 2048 units per em."""
    source_name = source.getBestCmap()[source_code]
    recording = DecomposingRecordingPen(source.getGlyphSet())
    source.getGlyphSet()[source_name].draw(recording)
    pen = TTGlyphPen(None)
    recording.replay(pen)
    name = f"uni{code:04X}"
    if name not in font.getGlyphOrder():
        font.setGlyphOrder(font.getGlyphOrder() + [name])
    font["glyf"][name] = pen.glyph()
    font["hmtx"][name] = source["hmtx"][source_name]
    for table in font["cmap"].tables:
        if table.isUnicode():
            table.cmap[code] = name


def make_segoe_ui(folder, bold):
    font = TTFont(OPEN_SANS / ("OpenSans-Bold.ttf" if bold else "OpenSans-Regular.ttf"))
    signs = TTFont(DEJAVU / ("DejaVuSans-Bold.ttf" if bold else "DejaVuSans.ttf"))
    add_glyph(font, signs, WARNING_SIGN, WARNING_SIGN)
    narrow(font, SEGOE_BOLD_WIDTH if bold else SEGOE_REGULAR_WIDTH)
    set_cell(font, SEGOE_ASCENT, SEGOE_DESCENT)
    rename(font, "Segoe UI", bold)
    font.save(folder / ("segoeuib.ttf" if bold else "segoeui.ttf"))


def make_assets(folder):
    font = TTFont(DEJAVU / "DejaVuSans.ttf")
    add_glyph(font, TTFont(DEJAVU / "DejaVuSans.ttf"), GEAR, SETTINGS_GLYPH)
    narrow(font, 1.0)
    # The real font's cell is its em square.
    set_cell(font, 1638, 410)
    rename(font, "Segoe MDL2 Assets", False)
    font.save(folder / "segmdl2.ttf")


def make_consolas(folder, bold):
    font = TTFont(DEJAVU / ("DejaVuSansMono-Bold.ttf" if bold else "DejaVuSansMono.ttf"))
    narrow(font, CONSOLAS_ADVANCE / font["hmtx"]["A"][0])
    set_cell(font, CONSOLAS_ASCENT, CONSOLAS_DESCENT)
    rename(font, "Consolas", bold)
    font.save(folder / ("consolab.ttf" if bold else "consola.ttf"))


def make_preview_fonts(folder):
    """Writes the five font files into `folder`."""
    folder = Path(folder)
    for bold in (False, True):
        make_segoe_ui(folder, bold)
        make_consolas(folder, bold)
    make_assets(folder)
