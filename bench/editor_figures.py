#!/usr/bin/env python3
"""Opens a file in another editor, and prints how long the program was busy with
it and what memory it held; in Okteta also types a byte and saves.

    editor_figures.py okteta|wxHexEditor FILE        on a display, the file is changed

The programs tell nobody when they are done, so a step counts as over when the
window says so (Okteta's title names the file, and marks it as changed) and the
program's CPU time has stood still. The start of the program with an empty
window is measured first and taken off the time to open.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

TICK = os.sysconf("SC_CLK_TCK")
STILL = 0.25  # seconds without any work
PATIENCE = 60


def xdotool(*arguments):
    done = subprocess.run(["xdotool", *arguments], capture_output=True, text=True, check=False)
    return done.stdout.strip()


def cpu(process):
    fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICK


def resident(process):
    pages = int(pathlib.Path(f"/proc/{process.pid}/statm").read_text().split()[1])
    return pages * os.sysconf("SC_PAGE_SIZE") / 1048576


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"{what} did not happen")
        time.sleep(0.01)


def rest(process):
    """Waits until the program is idle; returns when it began to be."""
    last, since = cpu(process), time.monotonic()
    end = since + PATIENCE
    while time.monotonic() - since < STILL and time.monotonic() < end:
        time.sleep(0.01)
        now = cpu(process)
        if now > last + 1.5 / TICK:  # a blinking cursor is no work
            last, since = now, time.monotonic()
    return since


def title(program):
    window = xdotool("search", "--onlyvisible", "--class", program).split()
    return xdotool("getwindowname", window[0]) if window else ""


def start(program, arguments, wanted):
    begin = time.monotonic()
    process = subprocess.Popen([program, *arguments], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    wait_for("the window", lambda: title(program) and wanted in title(program))
    return process, rest(process) - begin


def stop(process):
    process.kill()
    process.wait()


def time_to_save(program, process):
    before = title(program)
    xdotool("key", "5", "5")
    wait_for("the edit", lambda: title(program) != before)
    rest(process)
    begin = time.monotonic()
    xdotool("key", "ctrl+s")
    wait_for("the save", lambda: title(program) == before)
    return rest(process) - begin


def main():
    program, file = sys.argv[1], pathlib.Path(sys.argv[2])
    is_okteta = program == "okteta"
    with tempfile.TemporaryDirectory() as home:
        os.environ["HOME"] = home
        (pathlib.Path(home) / ".config").mkdir()
        empty = PATIENCE
        for _ in range(3):  # the first one fills the caches
            process, once = start(program, [], "")
            stop(process)
            empty = min(empty, once)
        process, opened = start(program, [str(file)], file.name if is_okteta else "")
        try:
            figures = (f"open {max(0, opened - empty) * 1000:.0f} ms (and {empty * 1000:.0f} to start), "
                       f"memory {resident(process):.0f} MB")
            if is_okteta:
                figures += f", save {time_to_save(program, process) * 1000:.0f} ms"
        finally:
            stop(process)
    print(f"   {program}: {figures}")


main()
