"""All one-line faults compiled into one copy of the sources.

Each fault is chosen when a test program starts, by a number in the environment.
A run of each test function shows which faults it reaches; a fault is tried
with those functions only.
"""

import bisect
import collections
import concurrent.futures
import contextlib
import hashlib
import itertools
import json
import os
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import threading
import time

import faultlines

FAULTS_OF_A_SOURCE = 1024  # numbers reserved for each
SOURCES = 1024
# What a wait of a test may last here: most faults that stop something let it run out.
LONG_WAIT = re.compile(r"\b[23]0000\b")
SHORT_WAIT = "6000"
MAX_MEMORY = 6 << 30
TIMEOUT_FACTOR = 4
TIMEOUT_FLOOR_S = 12

HEADER = """#pragma once
#define FAULT(number) (fault_reached[number] = 1, fault_chosen == (number))
#ifdef __cplusplus
extern "C" {
#endif
extern unsigned char *fault_reached;
extern int fault_chosen;
#ifdef __cplusplus
}
#endif
#if defined(QT_WIDGETS_LIB)
#include <QtWidgets>
#elif defined(QT_GUI_LIB)
#include <QtGui>
#elif defined(QT_CORE_LIB)
#include <QtCore>
#endif
#ifdef QT_NETWORK_LIB
#include <QtNetwork>
#endif
#ifdef QT_TESTLIB_LIB
#include <QtTest>
#endif
"""

# Runs before all other initializations. FAULT_REACHED names a file, shared with
# the programs that a test starts.
CHOICE = """#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>
static unsigned char nowhere[SIZE];
unsigned char *fault_reached = nowhere;
int fault_chosen = -1;
__attribute__((constructor(101))) static void choose(void)
{
    const char *number = getenv("FAULT_CHOSEN");
    const char *name = getenv("FAULT_REACHED");
    const int file = name ? open(name, O_RDWR) : -1;
    if (number)
        fault_chosen = atoi(number);
    if (file < 0)
        return;
    void *map = mmap(NULL, SIZE, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (map != MAP_FAILED)
        fault_reached = map;
    close(file);
}
"""

# Precedes the compiler. Each set of Qt's libraries has a header of its own, which
# is compiled once; a compiler that had to find the right one would be slower.
LAUNCHER = """#!/bin/sh
libraries=
for word in "$@"; do
  case $word in -DQT_*_LIB) name=${word#-DQT_}; libraries=$libraries-${name%_LIB} ;; esac
done
compiler=$1
shift
exec "$compiler" -include FOLDER/faults$libraries.h "$@"
"""


# --- writing the copy ----------------------------------------------------------

def blanked(text):
    """The text without comments and directives, with placeholders for strings and characters, same length."""
    def blank(match):
        return re.sub(r"[^\n]", " " if match.group()[0] in "/ \t#" else "_", match.group())
    text = re.sub(r'R"(\w*)\(.*?\)\1"|"(\\.|[^"\\\n])*"|\'(\\.|[^\'\\\n])\'|//[^\n]*|/\*.*?\*/', blank, text, flags=re.S)
    return re.sub(r"^[ \t]*#(\\\n|[^\n])*", blank, text, flags=re.M)


def brackets(code):
    """For each bracket the place of its partner."""
    partner, open_ones = {}, []
    for place, character in enumerate(code):
        if character in "([{":
            open_ones.append(place)
        elif character in ")]}" and open_ones:
            partner[place] = open_ones.pop()
            partner[partner[place]] = place
    return partner


# What binds less than || does, and so ends a condition.
END_OF_CONDITION = re.compile(r"[;,?]|(?<!:):(?!:)|(?<![=!<>])=(?!=)|(?<=<<)=|(?<=>>)=|\b(?:return|case|else|emit|throw)\b")


class Source:
    """A source with all its faults. Wraps are (start, end, before, after): what is put around a part."""

    def __init__(self, name, text, first):
        self.name, self.text, self.code = name, text, blanked(text)
        self.partner = brackets(self.code)
        self.lines = [0, *(match.end() for match in re.finditer("\n", text))]
        self.faults = {}  # number: (line number, line, faulty line, start, end, kind)
        number = first
        for _, line_number, line, faults in faultlines.places_of(name, text):
            for fault in faults:
                start, end = (self.lines[line_number] + column for column in (fault.start, fault.end))
                self.faults[number] = (line_number, line, fault.line, start, end, fault.kind)
                number += 1
        assert number - first <= FAULTS_OF_A_SOURCE

    def line_of(self, place):
        return bisect.bisect_right(self.lines, place) - 1

    def condition_around(self, place):
        """The largest expression of && and || around an operator."""
        start = place
        while start > 0:
            before = start - 1
            if self.code[before] in ")]}" and before in self.partner:
                start = self.partner[before]
                continue
            if self.code[before] in "([{}":
                break
            start = before
        end = place
        while end < len(self.code) and self.code[end] not in ")]}":
            end = self.partner.get(end, end) + 1 if self.code[end] in "([{" else end + 1
        # Only what stands at the same depth of brackets can end it.
        flat, inside = [], start
        while inside < end:
            if self.code[inside] in "([{" and inside in self.partner:
                length = self.partner[inside] + 1 - inside
                flat.append("()" if length == 2 else "(" + " " * (length - 2) + ")")
                inside += length
            else:
                flat.append(self.code[inside])
                inside += 1
        flat = "".join(flat)
        ends = [(start + match.start(), start + match.end()) for match in END_OF_CONDITION.finditer(flat)]
        first = max((last for _, last in ends if last <= place), default=start)
        last = min((begin for begin, _ in ends if begin > place), default=end)
        inner = self.code[first:last]
        return first + len(inner) - len(inner.lstrip()), last - (len(inner) - len(inner.rstrip()))

    def begins_statement(self, start):
        before = self.code[:start].rstrip()
        if before.endswith(")"):
            opened = self.code[:self.partner.get(len(before) - 1, 0)].rstrip()
            return re.search(r"\b(if|for|while|constexpr)$", opened) is not None
        return before.endswith((";", "{", "}", ":")) or re.search(r"\belse$", before) is not None

    def plain(self, start, end):
        """A part of the text on one line."""
        kept = re.sub(r'("(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\')|//[^\n]*|/\*.*?\*/',
                      lambda match: match.group(1) or " ", self.text[start:end], flags=re.S)
        return re.sub(r"\s*\n\s*", " ", kept)

    def wraps(self, dropped):
        conditions = collections.defaultdict(list)
        for number, (_, _, faulty, start, end, kind) in self.faults.items():
            if number in dropped:
                continue
            length = len(faulty) - (len(self.text[self.lines[self.line_of(start)]:].split("\n", 1)[0]) - (end - start))
            column = start - self.lines[self.line_of(start)]
            new = faulty[column:column + length]
            if kind == "value":
                yield start, end, f"(FAULT({number}) ? {new} : ", ")"
            elif kind == "negation":
                yield start, end, f"FAULT({number}) != !!(", ")"
            elif kind == "deletion":
                yield start, end, f"{{ if (!FAULT({number})) ", " }"
            else:
                first, last = self.condition_around(start)
                conditions[first, last].append(
                    f"FAULT({number}) ? ({self.plain(first, start)}{new}{self.plain(end, last)}) : ")
        for (first, last), choices in conditions.items():
            yield first, last, f"({''.join(choices)}(", "))"

    def inexpressible(self):
        """Deleted lines that are only a part of a statement, conditions that declare something, constants."""
        for number, (_, _, _, start, end, kind) in self.faults.items():
            if kind == "deletion" and not self.begins_statement(start):
                yield number
            if kind == "negation" and re.search(r"\w = ", self.code[start:end]):
                yield number
            before = self.code[self.lines[self.line_of(start)]:start]
            if kind == "value" and re.search(r"^\s*case |\barray<[^<>]*, $", before):
                yield number

    def faulty_copy(self, dropped, constant_lines):
        text = self.text
        for line in range(len(self.lines)):
            begin = self.lines[line]
            match = re.compile(r"\s*(?:static |inline )*(constexpr) (?!\()[^;(]*(=|\{)").match(self.code, begin)
            if match and line not in constant_lines:
                text = text[:match.start(1)] + "const    " + text[match.end(1):]
        inserted = []  # what ends at a place comes before what begins there; the inner ends first and begins last
        for start, end, before, after in self.wraps(dropped):
            inserted.append((start, 1, -end, before))
            inserted.append((end, 0, -start, after))
        parts, place = [], 0
        for where, _, _, new in sorted(inserted):
            parts += [text[place:where], new]
            place = where
        return "".join(parts) + text[place:]


# --- building ------------------------------------------------------------------

def run(*command, **options):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True, errors="replace", **options)


class Copy:
    """The sources of ROOT with all faults in them, built in PLACE."""

    def __init__(self, root, place):
        self.root, self.place = root, place
        self.tree, self.build, self.headers = place / "tree", place / "build", place / "headers"
        self.memory = place / "sources.json"  # numbers of the sources; what does not compile
        place.mkdir(parents=True, exist_ok=True)
        known = json.loads(self.memory.read_text()) if self.memory.exists() else {}
        self.numbers = known.get("numbers", {})
        self.dropped = {name: set(map(tuple, keys)) for name, keys in known.get("dropped", {}).items()}
        self.constant = {name: set(lines) for name, lines in known.get("constant", {}).items()}
        self.sources = {}

    def remember(self):
        as_lists = lambda sets: {name: sorted(values) for name, values in sets.items()}
        self.memory.write_text(json.dumps({"numbers": self.numbers, "dropped": as_lists(self.dropped),
                                           "constant": as_lists(self.constant)}))

    def write(self, file, text):
        if not file.exists() or file.read_text(encoding="utf-8") != text:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")

    def copy_files(self):
        """All files as they are now; the sources without faults only where there is no faulty copy yet."""
        listed = run("git", "-C", self.root, "ls-files", "--cached", "--others", "--exclude-standard").stdout.split("\n")
        for name in filter(None, listed):
            source, target = self.root / name, self.tree / name
            if not source.is_file() or name in self.numbers:
                continue
            data = source.read_bytes()
            if name.startswith("tests/support/"):
                data = LONG_WAIT.sub(SHORT_WAIT, data.decode()).encode()
            if not target.exists() or target.read_bytes() != data:
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(data)
                shutil.copymode(source, target)

    def configure(self):
        choice, object_file, launcher = (self.place / name for name in ("choice.c", "choice.o", "launcher"))
        self.write(choice, f"#define SIZE {SOURCES * FAULTS_OF_A_SOURCE}\n" + CHOICE)
        run("cc", "-O1", "-fPIC", "-c", choice, "-o", object_file)
        self.write(launcher, LAUNCHER.replace("FOLDER", str(self.headers)))
        launcher.chmod(0o755)
        made = run("cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                   "-DCMAKE_C_FLAGS=-O0 -w", "-DCMAKE_CXX_FLAGS=-O0 -w -Wno-narrowing",
                   "-DCMAKE_C_FLAGS_DEBUG=", "-DCMAKE_CXX_FLAGS_DEBUG=", f"-DCMAKE_EXE_LINKER_FLAGS={object_file}" + (" -fuse-ld=lld" if shutil.which("ld.lld") else ""),
                   f"-DCMAKE_C_COMPILER_LAUNCHER={launcher}", f"-DCMAKE_CXX_COMPILER_LAUNCHER={launcher}")
        if made.returncode:
            raise SystemExit(made.stderr)

    def compile_headers(self):
        """Qt's headers once for each set of libraries, instead of in each source."""
        sets = collections.defaultdict(list)
        for command in json.loads((self.build / "compile_commands.json").read_text(encoding="utf-8")):
            words = shlex.split(command["command"])[1:]
            sets["".join("-" + word[5:-4] for word in words if re.match("-DQT_.*_LIB$", word))].append(words)
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for name, uses in sets.items():
                header = self.headers / f"faults{name}.h"
                self.write(header, HEADER)
                compiler, *flags = uses[0][:uses[0].index("-o")]
                flags = [flag for flag in flags if not flag.startswith("-D") or flag.startswith("-DQT_")]
                compiled = self.headers / f"{header.name}.gch"
                if len(uses) > 3 and "-std=c++17" in flags and not compiled.exists():
                    pool.submit(run, compiler, *flags, "-x", "c++-header", header, "-o", compiled, cwd=self.build)

    def write_faults(self, names):
        for name in names:
            self.numbers.setdefault(name, len(self.numbers))
            text = (self.root / name).read_text(encoding="utf-8")
            source = Source(name, text, self.numbers[name] * FAULTS_OF_A_SOURCE)
            source.dropped = set(source.inexpressible())
            refused = self.dropped.get(name, set())
            source.dropped |= {number for number in source.faults if self.key(source, number) in refused}
            self.sources[name] = source
            self.write(self.tree / name, source.faulty_copy(source.dropped, self.constant.get(name, set())))

    @staticmethod
    def key(source, number):
        """What a fault is called when lines above it came or went: line, faulty line, which of those alike."""
        _, line, faulty, *_ = source.faults[number]
        alike = [other for other, (_, its_line, its_faulty, *_) in source.faults.items()
                 if its_line == line and its_faulty == faulty]
        return line.strip(), faulty.strip(), alike.index(number)

    def drop_refused(self, output):
        """Leaves out what the compiler refused. Returns whether that was anything."""
        places = collections.defaultdict(set)
        for name, line in re.findall(rf"^{re.escape(str(self.tree))}/(\S+?):(\d+):\d+: (?:fatal )?(?:error|note): ",
                                     output, flags=re.M):
            if name in self.sources:
                places[name].add(int(line) - 1)
        return any([self.drop_lines(source, lines) or self.drop_lines(source, self.nearby(source, lines)) or
                    self.drop_lines(source, {line for line, text in enumerate(source.text.split("\n")) if "constexpr" in text})
                    for source, lines in ((self.sources[name], lines) for name, lines in places.items())])

    def nearby(self, source, lines):
        """The lines around, and those of the constants whose names stand there."""
        text = source.text.split("\n")
        names = set(re.findall(r"\bk[A-Z]\w*", "".join(text[line] for line in lines)))
        constants = {at for at, line in enumerate(text) if "constexpr" in line and names & set(re.findall(r"\w+", line))}
        return constants or {line + step for line in lines for step in (-1, 0, 1)} & set(range(len(text)))

    def drop_lines(self, source, lines):
        constants = {line for line in lines if re.search(r"\bconstexpr\b", source.text.split("\n")[line])}
        constants -= self.constant.get(source.name, set())
        self.constant.setdefault(source.name, set()).update(constants)
        refused = {number for number, (_, _, _, start, _, kind) in source.faults.items()
                   if number not in source.dropped and self.touches(source, start, kind, constants or lines)}
        self.dropped.setdefault(source.name, set()).update(self.key(source, number) for number in refused)
        return bool(refused or constants)

    @staticmethod
    def touches(source, start, kind, lines):
        first, last = source.condition_around(start) if kind == "operator" else (start, start)
        return not lines.isdisjoint(range(source.line_of(first), source.line_of(last) + 1))

    def make(self, folders):
        self.copy_files()
        self.configure()
        self.compile_headers()
        listing = json.loads(run("ctest", "--test-dir", self.build, "--show-only=json-v1").stdout)
        self.programs = [Program(self, test) for test in listing["tests"]]
        labels = {faultlines.label_of(folder) for folder in folders}
        if folders and all(any(label in program.labels for program in self.programs) for label in labels - {"boardsim"}):
            self.programs = [program for program in self.programs if program.labels & labels or "boardsim" in labels]
        self.programs = [program for program in self.programs if program.labels]
        names = faultlines.sources(self.tree, self.build)
        while True:
            self.write_faults(names)
            self.remember()
            built = run("ninja", "-C", self.build, "-k", "0", "-j", "2", *(program.name for program in self.programs))
            if built.returncode == 0:
                return
            if not self.drop_refused(built.stdout):
                raise SystemExit(built.stdout[-5000:])


# --- test programs ---------------------------------------------------------------

def kill(process):
    """The process and those that it started."""
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)


class Program:
    """A test program: how it is started, and which faults each of its functions reaches."""

    def __init__(self, copy, test):
        values = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
        self.copy, self.name = copy, test["name"]
        self.file, *self.arguments = test.get("command") or [copy.build / "tests" / self.name / self.name]
        self.labels = set(values.get("LABELS", [])) - set(faultlines.UNUSED_LABELS)
        self.environment = dict(entry.split("=", 1) for entry in values.get("ENVIRONMENT", []))
        self.functions = {}  # name: (seconds, numbers of faults); several names where one needs those before it

    def start(self, functions, number, reached, folder):
        """In a folder of its own, since a test keeps files beside its program."""
        shutil.rmtree(folder, ignore_errors=True)
        for part in ("program", "tmp", "home", "work"):
            (folder / part).mkdir(parents=True)
        program = folder / "program" / os.path.basename(self.file)
        os.link(self.file, program)
        environment = {**os.environ, **self.environment, "HOME": folder / "home", "TMPDIR": folder / "tmp",
                       "FAULT_CHOSEN": str(number)}
        environment.pop("FAULT_REACHED", None)
        if reached:
            environment["FAULT_REACHED"] = reached
        return subprocess.Popen([program, *self.arguments, "-nocrashhandler", *" ".join(functions).split()],
                                cwd=folder / "work", env=environment, text=True, errors="replace",
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)

    def passes(self, functions, number, folder, timeout, reached=None):
        with self.start(functions, number, reached, folder) as process:
            timer = threading.Timer(timeout, kill, [process])
            timer.start()
            failed = False
            for line in process.stdout:
                if line.startswith(("FAIL!", "XPASS")):
                    failed = True
                    break
            if failed:
                kill(process)
            code = process.wait()
            timer.cancel()
            kill(process)  # what it left behind
        return not failed and code == 0

    def map(self, folder):
        """Runs each function alone without a fault."""
        names = run(self.file, *self.arguments, "-functions", env={**os.environ, **self.environment}, cwd=folder.parent).stdout
        names = re.findall(r"^(\w+)\(\)$", names, flags=re.M)
        self.functions = {}
        for last, name in enumerate(names):
            for tried in name, " ".join(names[:last + 1]):
                passed, entry = self.map_one(tried, folder)
                if passed:
                    self.functions[tried] = entry
                    break
            else:
                print(f"{self.name} {name} fails without any fault: left out", flush=True)

    def map_one(self, name, folder):
        reached = folder.parent / (folder.name + ".reached")
        reached.write_bytes(bytes(SOURCES * FAULTS_OF_A_SOURCE))
        started = time.monotonic()
        passed = self.passes([name], -1, folder, 300, reached)
        seconds = time.monotonic() - started
        return passed, (seconds, [match.start() for match in re.finditer(b"\x01", reached.read_bytes())])


class Programs:
    """All test programs. What they reach is kept until a program changes."""

    def __init__(self, copy):
        self.copy, self.memory = copy, copy.place / "reached.json"
        self.all = copy.programs
        self.helpers = ""

    def digest(self, program):
        if not self.helpers:
            files = sorted((self.copy.build / "bin").iterdir())
            self.helpers = hashlib.sha1(b"".join(file.read_bytes() for file in files if file.is_file())).hexdigest()
        started = self.helpers if program.labels & {"boardsim", "app", "unpacker"} else ""
        with open(program.file, "rb") as file:
            return hashlib.sha1(file.read() + started.encode()).hexdigest()

    def map(self):
        known = json.loads(self.memory.read_text()) if self.memory.exists() else {}
        folders = Folders(self.copy.place)

        def one(program):
            digest = self.digest(program)
            if known.get(program.name, {}).get("digest") == digest:
                program.functions = known[program.name]["functions"]
                return
            with folders.one() as folder:
                program.map(folder)
            known[program.name] = {"digest": digest, "functions": program.functions}

        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            list(pool.map(one, self.all))
        self.memory.write_text(json.dumps(known))
        self.digests = {name: entry["digest"] for name, entry in known.items()}
        self.reaching = collections.defaultdict(list)  # fault: [(program, function)]
        self.testing = collections.defaultdict(set)    # number of a source: programs
        for program in self.all:
            for name, (_, numbers) in program.functions.items():
                for number in numbers:
                    self.reaching[number].append((program, name))
                    self.testing[number // FAULTS_OF_A_SOURCE].add(program)

    def for_fault(self, source, number):
        """The functions that have to notice the fault, by program, the fastest first."""
        label = faultlines.label_of(source.name)
        own = {program for program in self.testing[number // FAULTS_OF_A_SOURCE]
               if label in program.labels and label != "boardsim"}  # the tests of the board are those that need one
        chosen = collections.defaultdict(list)
        for program, function in self.reaching[number]:
            if not own or program in own:
                chosen[program].append(function)
        seconds = lambda program: sum(program.functions[name][0] for name in chosen[program])
        return sorted(((program, sorted(names, key=lambda name: program.functions[name][0]), seconds(program))
                       for program, names in chosen.items()), key=lambda entry: entry[2])


class Folders:
    """A folder for each test program that runs."""

    def __init__(self, place):
        self.place, self.free, self.lock = place / "running" / str(os.getpid()), [], threading.Lock()
        self.count = itertools.count()
        self.place.mkdir(parents=True, exist_ok=True)

    @contextlib.contextmanager
    def one(self):
        with self.lock:
            folder = self.free.pop() if self.free else self.place / str(next(self.count))
        yield folder
        with self.lock:
            self.free.append(folder)


# --- trying ------------------------------------------------------------------------

class Results:
    """What became of each fault: caught, survives or unreached. A survivor is tried again when its tests change."""

    def __init__(self, place):
        self.file, self.lock = place / "results.json", threading.Lock()
        self.known = json.loads(self.file.read_text()) if self.file.exists() else {}

    def get(self, key, tests):
        state, its_tests = self.known.get("\t".join(map(str, key)), (None, None))
        return state if state == "caught" or its_tests == tests else None

    def set(self, key, state, tests):
        with self.lock:
            self.known["\t".join(map(str, key))] = state, tests

    def save(self):
        with self.lock:
            self.file.write_text(json.dumps(self.known))


def try_one(programs, source, number, folders, results):
    key = (source.name, *Copy.key(source, number))
    wanted = programs.for_fault(source, number)
    tests = hashlib.sha1("".join(sorted(programs.digests[program.name] for program, *_ in wanted)).encode()).hexdigest()
    state = results.get(key, tests)
    if not state:
        state = "survives" if wanted else "unreached"
        for program, names, seconds in wanted:
            with folders.one() as folder:
                if not program.passes(names, number, folder, max(TIMEOUT_FLOOR_S, TIMEOUT_FACTOR * seconds)):
                    state = "caught"
                    break
        results.set(key, state, tests)
    return state


def chosen_faults(copy, folders, count, seed):
    """All faults of the folders, or a lot of them: (source, number)."""
    wanted = [source for source in copy.sources.values() if faultlines.is_in(source.name, folders)]
    if not count:
        return [(source, number) for source in wanted for number in source.faults if number not in source.dropped]
    lines = collections.defaultdict(list)
    for source in wanted:
        for number, (line, *_) in source.faults.items():
            lines[source.name, line].append((source, number))
    generator = random.Random(seed)
    places = list(lines.values())
    generator.shuffle(places)
    drawn = (generator.choice(place) for place in places)
    return list(itertools.islice(((source, number) for source, number in drawn if number not in source.dropped), count))


def try_all(root, place, folders, count, seed, jobs):
    copy = Copy(root, place)
    copy.make(folders)
    resource.setrlimit(resource.RLIMIT_AS, (MAX_MEMORY, MAX_MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    programs, results = Programs(copy), Results(place)
    programs.map()
    harmless = faultlines.known_harmless(root / "tests" / "harmless-mutants.txt")
    faults = chosen_faults(copy, folders, count, seed)
    running = Folders(place)
    counts = collections.Counter()
    survivors = []

    def one(fault):
        source, number = fault
        return fault, try_one(programs, source, number, running, results)

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for done, ((source, number), state) in enumerate(pool.map(one, faults)):
            line_number, line, faulty, *_ = source.faults[number]
            if state != "caught" and (source.name, line.strip(), faulty.strip()) in harmless:
                state = "harmless"
            counts[state] += 1
            if state in ("survives", "unreached"):
                survivors.append(f"{source.name}\t{line.strip()}\t{faulty.strip()}\t({state}, line {line_number + 1})")
                print(survivors[-1], flush=True)
            if done % 50 == 49:
                results.save()
    results.save()
    shutil.rmtree(running.place, ignore_errors=True)
    for folder in folders:
        lines = [line + "\n" for line in survivors if faultlines.is_in(line, [folder])]
        (place / f"survivors-{folder.strip('/').replace('/', '-')}.txt").write_text("".join(sorted(lines)))
    dropped = sum(len(source.dropped) for source in copy.sources.values() if faultlines.is_in(source.name, folders))
    missed = counts["survives"] + counts["unreached"]
    print(f"\n{len(faults)} faults, {counts['caught']} caught, {counts['harmless']} known to be harmless, "
          f"{counts['survives']} survivors, {counts['unreached']} that no test reaches; "
          f"{dropped} cannot be chosen at run time")
    if counts["caught"] + missed:
        print(f"{100 * counts['caught'] / (counts['caught'] + missed):.0f} % of the faults that matter were caught")
    return survivors
