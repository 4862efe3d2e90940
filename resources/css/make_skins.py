#!/usr/bin/env python3
"""Writes default.css, white.css and yellow.css from skin.css.in.

    make_skins.py [folder]

The rules are the same in the three skins; only the colours differ. Those of
the palette (app/skin/skin.cpp) come first in each table; the rest are shades of
them that keep text at 4.5 to 1 or better (a test computes it).
"""

import pathlib
import re
import sys

SKINS = {
    "default": {
        "TITLE": "dark skin",
        "folder": "dark",
        "plot_style": "black",
        # palette
        "text": "#f2f2f2",
        "accent": "#02a1dd",
        "window": "#1e1e1e",
        "line": "#454443",
        "secondary": "#aebfc5",
        "panel": "#302f2f",
        # shades
        "header": "#3f4041",
        "bar": "#323232",
        "bar_hover": "#454443",
        "bar_pressed": "#1e1e1e",
        "on_accent": "#1e1e1e",
        "accent_hover": "#35b6e8",
        "accent_pressed": "#0291c7",
        "focus_text": "#ffffff",
        "field": "#302f2f",
        "field_line": "#5a5958",
        "strong_line": "#7d7b79",
        "mark_line": "#8a8886",
        "button": "#454443",
        "button_line": "#5a5958",
        "button_hover": "#555452",
        "button_pressed": "#302f2f",
        "button_disabled": "#282828",
        "disabled": "#a3a3a3",
        "error": "#ff9a8e",
        "selected": "#1c4f63",
        "row_hover": "#454443",
        "stripe": "#363535",
        "track": "#282828",
        "thumb": "#5f5e5c",
        "thumb_hover": "#7d7b79",
        "progress": "#0b6f97",
        "help": "#02a1dd",
        "help_hover": "#35b6e8",
        "close_hover": "#c42b1c",
        "close_pressed": "#a32416",
    },
    "white": {
        "TITLE": "light skin",
        "folder": "white",
        "plot_style": "white",
        # palette
        "text": "#333333",
        "accent": "#02a1dd",
        "window": "#f0f0f0",
        "line": "#cccccc",
        "secondary": "#565656",  # weaker than text; the palette's entry is black
        "panel": "#ffffff",
        # shades
        "header": "#e0e0e0",
        "bar": "#e1e1e1",
        "bar_hover": "#cfcfcf",
        "bar_pressed": "#bfbfbf",
        "on_accent": "#000000",
        "accent_hover": "#35b6e8",
        "accent_pressed": "#0291c7",
        "focus_text": "#000000",
        "field": "#ffffff",
        "field_line": "#b5b5b5",
        "strong_line": "#797979",
        "mark_line": "#797979",
        "button": "#ffffff",
        "button_line": "#b5b5b5",
        "button_hover": "#e1e1e1",
        "button_pressed": "#cccccc",
        "button_disabled": "#e9e9e9",
        "disabled": "#616161",
        "error": "#a01c16",
        "selected": "#b5e2f4",
        "row_hover": "#e1e1e1",
        "stripe": "#f7f7f7",
        "track": "#e9e9e9",
        "thumb": "#b5b5b5",
        "thumb_hover": "#797979",
        "progress": "#7fd0ee",
        "help": "#797979",
        "help_hover": "#5f5f5f",
        "close_hover": "#f4848d",
        "close_pressed": "#f7a3a9",
    },
    "yellow": {
        "TITLE": "yellow skin",
        "folder": "yellow",
        "plot_style": "yellow",
        # palette
        "text": "#f2f2f2",
        "accent": "#feba3b",
        "window": "#263240",
        "line": "#3b4b5d",
        "secondary": "#aebfc5",
        "panel": "#263240",
        # shades
        "header": "#364350",
        "bar": "#212d3b",
        "bar_hover": "#34465a",
        "bar_pressed": "#1a2430",
        "on_accent": "#212d3b",
        "accent_hover": "#ffcd70",
        "accent_pressed": "#e0a02a",
        "focus_text": "#ffffff",
        "field": "#212d3b",
        "field_line": "#4d6075",
        "strong_line": "#70859b",
        "mark_line": "#7f93a8",
        "button": "#34465a",
        "button_line": "#4d6075",
        "button_hover": "#425870",
        "button_pressed": "#212d3b",
        "button_disabled": "#2a3746",
        "disabled": "#a3b1bb",
        "error": "#ff9484",
        "selected": "#5c4f33",
        "row_hover": "#34465a",
        "stripe": "#273443",
        "track": "#212d3b",
        "thumb": "#4d6075",
        "thumb_hover": "#70859b",
        "progress": "#8a6420",
        "help": "#4d6075",
        "help_hover": "#627a94",
        "close_hover": "#c42b1c",
        "close_pressed": "#a32416",
    },
}


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    template = (pathlib.Path(__file__).parent / "skin.css.in").read_text(encoding="ascii")
    for name, colours in SKINS.items():
        text = template.replace("@TITLE@", colours["TITLE"])
        text = re.sub(r"@([a-z_]+)", lambda match: colours[match.group(1)], text)
        (folder / f"{name}.css").write_bytes(text.encode("ascii"))


if __name__ == "__main__":
    main()
