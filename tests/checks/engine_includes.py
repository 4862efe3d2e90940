"""Checks that engines know bytes and values only.

engine_includes.py SOURCE_ROOT LIST_OF_SOURCES QT_CORE_INCLUDE_FOLDERS...

Walks the listed sources and every header of ours that they include. A Qt
header must be one of QtCore; anything of widgets, sockets or serial ports
fails the check.
"""

import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def is_qt_core(name, core_folders):
    return any((folder / name).is_file() for folder in core_folders)


def check(root, sources, core_folders):
    """Returns the files seen and a message for each include that is not allowed."""
    wrong, seen, waiting = [], set(), list(sources)
    while waiting:
        source = waiting.pop()
        if source in seen:
            continue
        seen.add(source)
        for bracket, name in INCLUDE.findall(source.read_text(encoding="utf-8")):
            if bracket == '"':
                own = root / name
                waiting.append(own if own.is_file() else source.parent / name)
            elif name.startswith("Q") and not is_qt_core(name, core_folders):
                wrong.append(f"{source.relative_to(root)} includes <{name}>, which is not of QtCore")
    return seen, wrong


def main():
    root = pathlib.Path(sys.argv[1])
    sources = [pathlib.Path(line) for line in pathlib.Path(sys.argv[2]).read_text().split()]
    core_folders = [pathlib.Path(name) for name in sys.argv[3:] if name.endswith("QtCore")]
    if not sources or not is_qt_core("QString", core_folders):
        sys.exit("engine_includes.py: no sources, or no folder of QtCore given")
    headers = [source.with_suffix(".h") for source in sources]
    seen, wrong = check(root, sources + [header for header in headers if header.is_file()], core_folders)
    print(f"{len(seen)} files checked")
    if wrong:
        sys.exit("\n".join(sorted(wrong)))


main()
