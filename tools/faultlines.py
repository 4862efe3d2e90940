"""One-line faults: which lines can be made faulty, and how."""

import collections
import json
import pathlib
import re
import sys

NOT_PRODUCT = ("tests/", "bench/", "resources/", "packaging/", "cmake/", "docs/",
               "tools/stage/", "tools/gallery/", "tools/skingallery/", "tools/updateserver/")
# A folder whose tests carry another label than its own name; those of its
# folders have the same.
LABELS = {"tools": "boardsim"}
UNUSED_LABELS = ("checks", "e2e")


def sources(tree, build):
    """What is compiled on this system; sources for other systems would all survive."""
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    files = {pathlib.Path(command["file"]) for command in commands}
    names = sorted(str(file.relative_to(tree)) for file in files if tree in file.parents)
    return [name for name in names if not name.startswith(NOT_PRODUCT)]


def label_of(name):
    """The label of the tests that have to notice a fault in this source."""
    return LABELS.get(name.split("/")[0], name.split("/")[0])


COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
DELETABLE = re.compile(r"^\s*(emit\s+)?[A-Za-z_][\w.:>()\[\]-]*(\s*[-+*/|&^]?=\s.*|\(.*\));\s*$")
NOT_DELETABLE = re.compile(r"^\s*(return|const|auto|using|case|delete|static|Q_|break|continue|qDebug|qWarning|else)\b"
                           r"|^\s*(?!emit\b)[\w:<>*&]+\s+[*&]?\w+\s*(=|\()")

# Log lines and reserved memory: no fault there can be seen.
UNSEEN = re.compile(r"\bq(Debug|Info|Warning|Critical)\(|\breserve\(")


def code_of(line):
    """The line with strings, characters and comments blanked out, same length."""
    blank = lambda match: " " * len(match.group())
    line = re.sub(r'"(\\.|[^"\\])*"', blank, line)
    line = re.sub(r"'(\\.|[^'\\])'", blank, line)
    return re.sub(r"//.*|/\*.*?\*/", blank, line)


Fault = collections.namedtuple("Fault", "kind start end line")  # which part of the line it changes; the faulty line


def faults_of(line):
    """All faulty forms of one line."""
    code = code_of(line)
    if UNSEEN.search(code):
        return []
    if not code.strip() or code.lstrip().startswith(("#", "*", "/*", "static_assert", "Q_ASSERT")):
        return []
    faults = []

    def replace(kind, start, end, text):
        faults.append(Fault(kind, start, end, line[:start] + text + line[end:]))

    condition = re.match(r"^(\s*(?:\} )?(?:else )?(?:if|while) \()(.*)(\)(?: \{)?\s*)$", code)
    if condition and ";" not in code:
        start, end = condition.span(2)
        replace("negation", start, end, f"!({line[start:end]})")
    for match in re.finditer(r" (<=|>=|==|!=|<|>) ", code):
        replace("operator", *match.span(1), COMPARISONS[match.group(1)])
    for match in re.finditer(r" (&&|\|\|) ", code):
        replace("operator", *match.span(1), "||" if match.group(1) == "&&" else "&&")
    for match in re.finditer(r"\b(true|false)\b", code):
        replace("value", *match.span(), "false" if match.group() == "true" else "true")
    for match in re.finditer(r"(?<![\w.])(0x[0-9a-fA-F]+|[1-9]\d*|0)(?![\w.'])", code):
        replace("value", *match.span(), str(int(match.group(), 0) + 1))
    if DELETABLE.match(code) and not NOT_DELETABLE.match(code):
        faults.append(Fault("deletion", len(code) - len(code.lstrip()), len(code.rstrip()), ";"))
    return faults


def follow_condition(line, foreign):
    """Keeps the branches of #if that are not compiled here."""
    here = {"Q_OS_UNIX", "Q_OS_LINUX", "__linux__"} if sys.platform == "linux" else {"Q_OS_WIN"}
    directive = re.match(r"\s*#\s*(if|ifdef|ifndef|elif|else|endif)\b", line)
    system = re.search(r"\b(Q_OS_\w+|__linux__)\b", line)
    if not directive:
        return
    kind = directive.group(1)
    if kind.startswith("if"):
        foreign.append(bool(system) and ((system.group() in here) == (kind == "ifndef")))
    elif kind == "elif":
        foreign[-1] = bool(system) and system.group() not in here
    elif kind == "else":
        foreign[-1] = not foreign[-1]
    else:
        foreign.pop()


def places_of(name, text):
    """The lines of a source that can be made faulty: (name, number, line, faults)."""
    in_comment = False
    foreign = []  # of each #if around the line: whether its branch is for another system
    for number, line in enumerate(text.split("\n")):
        in_comment = (in_comment or "/*" in line) and "*/" not in line
        follow_condition(line, foreign)
        faults = [] if in_comment or any(foreign) else faults_of(line)
        if faults:
            yield name, number, line, faults


def draw(places, generator):
    """The lines with one fault each, in an order that the seed decides."""
    places = list(places)
    generator.shuffle(places)
    for name, number, line, faults in places:
        yield name, number, line, generator.choice(faults)


def is_in(name, folders):
    return not folders or any(name.startswith(folder.rstrip("/") + "/") for folder in folders)


def known_harmless(file):
    """What stands in the list of harmless faults: (name, line, faulty line)."""
    known = set()
    if file.exists():
        for line in file.read_text(encoding="utf-8").split("\n"):
            parts = line.split("\t")
            if not line.startswith("#") and len(parts) >= 3:
                known.add(tuple(part.strip() for part in parts[:3]))
    return known
