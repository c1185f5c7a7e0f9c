"""Numbers under a picture, drawn from the outlines of a font that the lab has anyway."""

from functools import lru_cache

from fontTools.pens.pointInsidePen import PointInsidePen
from fontTools.ttLib import TTFont

from ambrel_lab.places import DEJAVU

EM = 18  # pixels
SAMPLES = 4  # a pixel's side is looked at in so many places: that makes the edges soft


class Lettering:
    def __init__(self):
        font = TTFont(DEJAVU / "DejaVuSans.ttf")
        self.glyphs, self.names = font.getGlyphSet(), font.getBestCmap()
        self.scale = font["head"].unitsPerEm / EM

    def glyph(self, letter):
        return self.glyphs[self.names[ord(letter)]]

    def width(self, text):
        return round(sum(self.glyph(letter).width for letter in text) / self.scale)

    def covers(self, letter, x, y):
        """Whether a place of the letter, in pixels right of its start and below its base line, is ink."""
        pen = PointInsidePen(self.glyphs, (x * self.scale, -y * self.scale))
        self.glyph(letter).draw(pen)
        return pen.getResult()

    @lru_cache(maxsize=None)
    def ink(self, letter):
        """{(column, row): share of that pixel which is ink}; rows above the base line are negative."""
        places = [(step + 0.5) / SAMPLES for step in range(SAMPLES)]
        columns, rows = range(round(self.glyph(letter).width / self.scale) + 1), range(-EM, 1)
        shares = {(column, row): sum(self.covers(letter, column + x, row + y) for x in places for y in places)
                  / SAMPLES ** 2 for column in columns for row in rows}
        return {place: share for place, share in shares.items() if share}

    def pixels(self, text, left, base):
        """(x, y, share) of every pixel of a text that begins at `left` and stands on `base`."""
        for letter in text:
            for (column, row), share in self.ink(letter).items():
                yield left + column, base + row, share
            left += round(self.glyph(letter).width / self.scale)
