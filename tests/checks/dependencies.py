"""Checks that a target includes only headers of what it links.

dependencies.py SOURCE_ROOT LIST_OF_TARGETS

A line of the list is "name folder [sources] [links]". The build itself would
not notice: every target finds every header, and a header that needs no source
file links with anything. A header belongs to the targets that compile the
source file of its name, whatever system that is for, or else to all targets
of its folder.
"""

import collections
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
SYSTEM = re.compile(r"_(posix|windows|none)$")
LINE = re.compile(r"(\S+) (\S*) \[(.*)\] \[(.*)\]")


class Target:
    def __init__(self, root, name, folder, sources, links):
        self.name, self.links = name, links
        self.folder = root / folder
        self.files = [(self.folder / source).resolve() for source in sources]


def read_targets(root, path):
    targets = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        name, folder, sources, links = LINE.fullmatch(line).groups()
        targets[name] = Target(root, name, folder, filter(None, sources.split(",")), links.split(","))
    return targets


def linked(targets, name):
    """The target and all that it links, directly or through another."""
    seen, waiting = set(), [name]
    while waiting:
        name = waiting.pop()
        if name in targets and name not in seen:
            seen.add(name)
            waiting += targets[name].links
    return seen


def header_owners(root, targets):
    owners = collections.defaultdict(set)
    for target in targets.values():
        for file in target.files:
            owners[file.with_name(SYSTEM.sub("", file.stem) + ".h")].add(target.name)
    for header in root.glob("[a-z]*/**/*.h"):
        if not owners[header]:
            owners[header] = {t.name for t in targets.values() if t.folder == header.parent}
    return owners


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    targets = read_targets(root, pathlib.Path(sys.argv[2]))
    owners = header_owners(root, targets)
    wrong, checked = set(), 0
    for target in targets.values():
        may_include = linked(targets, target.name)
        headers = [file.with_suffix(".h") for file in target.files]
        for file in {*target.files, *headers}:
            if not file.is_file():
                continue
            checked += 1
            for name in INCLUDE.findall(file.read_text(encoding="utf-8")):
                header = root / name if (root / name).is_file() else file.parent / name
                if header.is_file() and not owners[header.resolve()] & may_include:
                    wrong.add(f"{file.relative_to(root)} includes {name}, but {target.name} does not link it")
    if not checked:
        sys.exit("dependencies.py: no sources found")
    print(f"{checked} files of {len(targets)} targets checked")
    if wrong:
        sys.exit("\n".join(sorted(wrong)))


main()
