#!/usr/bin/env python3
"""Opens a file in Okteta, types a byte and saves, and prints how long the
program was busy with each and what memory it held.

    okteta_figures.py FILE        on a display, the file is changed

Okteta tells nobody when it is done, so a step counts as over when the window
names the file (opened) or no longer marks it as changed (saved) and the
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
            sys.exit(f"okteta: {what} did not happen")
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


def title():
    window = xdotool("search", "--onlyvisible", "--class", "okteta").split()
    return xdotool("getwindowname", window[0]) if window else ""


def start(arguments, wanted):
    begin = time.monotonic()
    process = subprocess.Popen(["okteta", *arguments], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    wait_for("the window", lambda: title() and wanted in title())
    return process, rest(process) - begin


def main():
    file = pathlib.Path(sys.argv[1])
    with tempfile.TemporaryDirectory() as home:
        os.environ["HOME"] = home
        empty = PATIENCE
        for _ in range(3):  # the first one fills the caches
            process, once = start([], "")
            process.kill()
            process.wait()
            empty = min(empty, once)
        process, opened = start([str(file)], file.name)
        try:
            memory = resident(process)
            before = title()
            xdotool("key", "5", "5")
            wait_for("the edit", lambda: title() != before)
            rest(process)
            begin = time.monotonic()
            xdotool("key", "ctrl+s")
            wait_for("the save", lambda: title() == before)
            saved = rest(process) - begin
        finally:
            process.kill()
            process.wait()
    print(f"   Okteta: open {max(0, opened - empty) * 1000:.0f} ms (and {empty * 1000:.0f} to start), "
          f"memory {memory:.0f} MB, save {saved * 1000:.0f} ms")


main()
