#!/usr/bin/python3
"""Builds the icon font from a folder of 24 x 24 SVG icons.

    make_iconfont.py <unpacked @mdi/svg package> <icons.txt> <iconfont.ttf>

Every glyph is as wide as the em and the ascent is the em, the descent
nothing: the box that a text layout centres is then the icon's own square.
Within it the drawing is moved so that its bounding box is centred, because
the icon set leaves up to a tenth of the square to one side. The output
depends on the inputs alone (no time of day), so that it can be compared.
"""

import os
import re
import sys

os.environ["SOURCE_DATE_EPOCH"] = "0"

from fontTools.fontBuilder import FontBuilder
from fontTools.pens.boundsPen import BoundsPen
from fontTools.pens.cu2quPen import Cu2QuPen
from fontTools.pens.recordingPen import RecordingPen
from fontTools.pens.transformPen import TransformPen
from fontTools.pens.ttGlyphPen import TTGlyphPen
from fontTools.svgLib.path import SVGPath
from fontTools.ttLib import newTable

GRID = 24                    # side of the icons' square, SVG units
SCALE = 100                  # font units per SVG unit
EM = GRID * SCALE
FAMILY = "Korvex Icons"


def read_list(path):
    """The (code point, glyph name, icon name) lines of the glyph list."""
    icons = []
    with open(path, encoding="ascii") as lines:
        for number, line in enumerate(lines, 1):
            line = line.split("#")[0].strip()
            if not line:
                continue
            match = re.fullmatch(r"([0-9A-F]{4})\s+(\w+)\s+([\w-]+)", line)
            if not match:
                sys.exit(f"{path}:{number}: expected 'code point, name, icon'")
            icons.append((int(match[1], 16), match[2], match[3]))
    for what, values in (("code point", [i[0] for i in icons]), ("name", [i[1] for i in icons])):
        double = {v for v in values if values.count(v) > 1}
        if double:
            sys.exit(f"{path}: {what} listed twice: {sorted(double)}")
    return icons


def draw(svg_path):
    """The TrueType outline of an icon, centred in the em."""
    recording = RecordingPen()
    SVGPath(svg_path).draw(recording)
    bounds = BoundsPen(None)
    recording.replay(bounds)
    if bounds.bounds is None:
        sys.exit(f"{svg_path}: nothing drawn")
    left, top, right, bottom = bounds.bounds
    # SVG's y grows downwards, the font's upwards.
    move_x = EM / 2 - SCALE * (left + right) / 2
    move_y = EM / 2 + SCALE * (top + bottom) / 2
    glyph = TTGlyphPen(None)
    quadratic = Cu2QuPen(glyph, max_err=1.0, reverse_direction=True)
    recording.replay(TransformPen(quadratic, (SCALE, 0, 0, -SCALE, move_x, move_y)))
    return glyph.glyph()


def empty():
    return TTGlyphPen(None).glyph()


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    package, list_path, output = sys.argv[1:]
    icons = read_list(list_path)

    glyphs = {".notdef": empty(), "space": empty()}
    for _, name, icon in icons:
        glyphs[name] = draw(os.path.join(package, "svg", icon + ".svg"))

    builder = FontBuilder(EM, isTTF=True)
    builder.setupGlyphOrder(list(glyphs))
    builder.setupCharacterMap({0x20: "space", **{code: name for code, name, _ in icons}})
    builder.setupGlyf(glyphs)
    table = builder.font["glyf"]
    builder.setupHorizontalMetrics({name: (EM, getattr(table[name], "xMin", 0)) for name in glyphs})
    builder.setupHorizontalHeader(ascent=EM, descent=0, lineGap=0)
    builder.setupOS2(version=4, sTypoAscender=EM, sTypoDescender=0, sTypoLineGap=0,
                     usWinAscent=EM, usWinDescent=0, fsSelection=0x00C0)
    builder.setupPost(isFixedPitch=1)
    builder.setupNameTable({
        "familyName": FAMILY,
        "styleName": "Regular",
        "uniqueFontIdentifier": FAMILY + " Regular",
        "fullName": FAMILY,
        "psName": FAMILY.replace(" ", "") + "-Regular",
        "copyright": "Icons by the Pictogrammers icon group, Material Design Icons",
        "licenseDescription": "Apache License, Version 2.0",
        "licenseInfoURL": "https://www.apache.org/licenses/LICENSE-2.0",
    })
    # Smoothing and no grid fitting at any size: a hinter would move the lines
    # of an icon off its centre.
    gasp = builder.font["gasp"] = newTable("gasp")
    gasp.version = 1
    gasp.gaspRange = {0xFFFF: 0x000A}
    builder.font["head"].created = builder.font["head"].modified = 0
    builder.font.recalcTimestamp = False
    builder.save(output)


main()
