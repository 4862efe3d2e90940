#!/usr/bin/env python3
"""Draws the program's pictures: the logo, the small marks of the style sheets
and the icon of the Windows executable.

    make_images.py <resources/images> <packaging/windows>

Style sheets can show image files only (no glyphs) for check marks, radio
dots, arrows and tree branches; each skin has its own set in its own colors,
and each mark a second size, name@2x.png, which Qt takes on dense screens.

Shapes are signed distances in pixels, negative inside: the coverage of a
pixel follows from the distance of its centre, which gives smooth edges at any
size. Standard library only, and the same bytes at every run.
"""

import math
import os
import pathlib
import struct
import sys
import zlib

SKINS = pathlib.Path(__file__).parent.parent / "resources" / "css" / "skins.txt"


def skin_row(name):
    """A row of the table of skins, without its name."""
    for line in SKINS.read_text(encoding="ascii").splitlines():
        cells = line.split("//")[0].split()
        if cells and cells[0] == name:
            return cells[1:]
    raise KeyError(name)


ACCENT = dict(zip(skin_row("marks"), skin_row("accent")))
TEXT = dict(zip(skin_row("marks"), skin_row("text")))
# On the accent color: white is readable on the blue, not on the yellow.
ON_ACCENT = {"dark": "#ffffff", "white": "#ffffff", "yellow": "#1e1e1e"}
DISABLED = "#808080"


# --- shapes ---------------------------------------------------------------

def polyline(points, width):
    """A line through the points with round ends and joints."""
    pieces = []
    for (ax, ay), (bx, by) in zip(points, points[1:]):
        dx, dy = bx - ax, by - ay
        pieces.append((ax, ay, dx, dy, dx * dx + dy * dy))

    def distance(x, y):
        nearest = math.inf
        for ax, ay, dx, dy, square in pieces:
            t = min(1.0, max(0.0, ((x - ax) * dx + (y - ay) * dy) / square))
            nearest = min(nearest, math.hypot(x - ax - t * dx, y - ay - t * dy))
        return nearest - width / 2
    return distance


def disc(cx, cy, radius):
    return lambda x, y: math.hypot(x - cx, y - cy) - radius


def convex(points, radius):
    """A convex polygon, listed clockwise on the screen, with corners rounded
    by growing it by the radius."""
    outline = polyline(points + points[:1], 0)

    def distance(x, y):
        inside = all((bx - ax) * (y - ay) - (by - ay) * (x - ax) >= 0
                     for (ax, ay), (bx, by) in zip(points, points[1:] + points[:1]))
        edge = outline(x, y)
        return (-edge if inside else edge) - radius
    return distance


def ring(shape, width):
    """The edge of a shape as a line of the given width."""
    return lambda x, y: abs(shape(x, y)) - width / 2


# --- pictures -------------------------------------------------------------

def color(text):
    return tuple(int(text[i:i + 2], 16) for i in (1, 3, 5))


def png_bytes(side, scale, layers):
    """Paints (shape, color) layers, lowest first, on a transparent square.
    Shapes are in units of which the picture has side; scale pixels per unit."""
    pixels = round(side * scale)
    layers = [(shape, color(text)) for shape, text in layers]
    rows = bytearray()
    for row in range(pixels):
        rows.append(0)
        for column in range(pixels):
            red = green = blue = alpha = 0.0
            for shape, (r, g, b) in layers:
                distance = shape((column + 0.5) / scale, (row + 0.5) / scale) * scale
                cover = min(1.0, max(0.0, 0.5 - distance))
                red = r * cover + red * (1 - cover)
                green = g * cover + green * (1 - cover)
                blue = b * cover + blue * (1 - cover)
                alpha = cover + alpha * (1 - cover)
            if alpha > 0:  # the file wants colors not multiplied by alpha
                rows += bytes(min(255, round(c / alpha)) for c in (red, green, blue))
            else:
                rows += bytes(3)
            rows.append(round(alpha * 255))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", pixels, pixels, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(bytes(rows), 9))
            + chunk(b"IEND", b""))


def png(path, side, scale, layers):
    with open(path, "wb") as file:
        file.write(png_bytes(side, scale, layers))


def logo_layers(stroke=1.0):
    """A nine-way connector, seen from the front, with a pulse train inside, on
    a field of 256. Small sizes want thicker strokes."""
    tile = convex([(56, 56), (200, 56), (200, 200), (56, 200)], 48)
    shell = ring(convex([(50, 84), (206, 84), (188, 172), (68, 172)], 16), 12 * stroke)
    pulses = polyline([(76, 150), (92, 150), (92, 106), (116, 106), (116, 150),
                       (140, 150), (140, 106), (164, 106), (164, 150), (180, 150)], 11 * stroke)
    return [(tile, "#1e1e1e"), (shell, "#02a1dd"), (pulses, "#f2f2f2")]


def icon(path):
    """The logo in the sizes that Windows asks for, each a PNG in the .ico."""
    sizes = (16, 20, 24, 32, 40, 48, 64, 256)
    pictures = [png_bytes(256, size / 256, logo_layers(stroke=1.5 if size < 40 else 1.0)) for size in sizes]
    offset = 6 + 16 * len(sizes)
    directory = struct.pack("<HHH", 0, 1, len(sizes))
    for size, picture in zip(sizes, pictures):
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(picture), offset)
        offset += len(picture)
    with open(path, "wb") as file:
        file.write(directory + b"".join(pictures))


def marks(folder, skin):
    def chevron(points):
        return 10, polyline(points, 1.5)

    down = chevron([(2, 3.5), (5, 6.5), (8, 3.5)])
    up = chevron([(2, 6.5), (5, 3.5), (8, 6.5)])
    left = chevron([(6.5, 2), (3.5, 5), (6.5, 8)])
    right = chevron([(3.5, 2), (6.5, 5), (3.5, 8)])
    check = 14, polyline([(3.25, 7.25), (5.75, 9.75), (10.75, 4.5)], 1.8)
    dot = 14, disc(7, 7, 3)
    text, accent = TEXT[skin], ACCENT[skin]

    pictures = {
        "check": (check, ON_ACCENT[skin]),
        "check-accent": (check, accent),
        "check-disabled": (check, DISABLED),
        "radio": (dot, accent),
        "radio-on-accent": (dot, ON_ACCENT[skin]),
        "radio-disabled": (dot, DISABLED),
        "branch-open": (down, text),
        "branch-closed": (right, text),
    }
    for name, shape in (("down", down), ("up", up), ("left", left), ("right", right)):
        pictures[f"arrow-{name}"] = (shape, text)
        pictures[f"arrow-{name}-accent"] = (shape, accent)
        pictures[f"arrow-{name}-disabled"] = (shape, DISABLED)

    os.makedirs(os.path.join(folder, skin), exist_ok=True)
    for name, ((side, shape), paint) in pictures.items():
        for scale, suffix in ((1, ""), (2, "@2x")):
            png(os.path.join(folder, skin, name + suffix + ".png"), side, scale, [(shape, paint)])


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    png(os.path.join(sys.argv[1], "app_logo.png"), 256, 1, logo_layers())
    icon(os.path.join(sys.argv[2], "korvex.ico"))
    for skin in TEXT:
        marks(sys.argv[1], skin)


main()
