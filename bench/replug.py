#!/usr/bin/env python3
"""Unplugs a board again and again while it sends, and looks at what the program got.

    replug.py --build build/release [--cycles 50] [--rate 100000]

The board is a pseudo-terminal behind a virtual port. Each cycle it sends numbered
lines at the rate for half a second, vanishes for 100 ms to 1 s, and is back as a
new terminal. Other ports come and go meanwhile. The program runs on a display of its
own with "断线自动重连" and automatic saving on. Printed: how long after the device
was back the program had it open, which lines are missing in the saved file, and
descriptors and memory of the program after the first cycles and at the end.

Needs Xvfb, openbox and xdotool (tools/setup-bench.sh). Nothing here fails because
of a figure.
"""

import argparse
import fcntl
import glob
import os
import pty
import random
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import termios
import time
import tty


class Board:
    """One plugging-in of the device."""

    def __init__(self, link):
        self.master, self.slave = pty.openpty()
        tty.setraw(self.slave)
        os.set_blocking(self.master, False)
        self.device = os.ttyname(self.slave)
        self.link = link
        os.symlink(self.device, link)
        self.since = time.monotonic()

    def openers(self, pid):
        folder = f"/proc/{pid}/fd"
        found = 0
        for name in os.listdir(folder):
            try:
                found += os.readlink(f"{folder}/{name}") == self.device
            except OSError:
                pass
        return found

    def pending(self):
        """Bytes that the program has not read yet."""
        return struct.unpack("i", fcntl.ioctl(self.slave, termios.FIONREAD, b"\0" * 4))[0]

    def unplug(self):
        os.unlink(self.link)
        os.close(self.master)
        os.close(self.slave)


def wait_for(condition, seconds):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.001)
    return True


def memory_kb(pid):
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        return int(re.search(r"RssAnon:\s+(\d+)", status.read()).group(1))


def run(options):
    home = tempfile.mkdtemp(prefix="replug")
    ports = os.path.join(home, "ports")
    os.makedirs(ports)
    os.makedirs(os.path.join(home, "conf"))
    with open(os.path.join(home, "conf", "config.ini"), "w", encoding="ascii") as config:
        config.write("[Common]\nTextCodec=0\nBuffer=2\n[SerialPage]\nReconnect=1\nPort=COM3\n")
    program = shutil.copy(os.path.join(options.build, "bin", "Korvex"), home)
    environment = dict(os.environ, KORVEX_VIRTUAL_PORTS=ports, HOME=home, XDG_RUNTIME_DIR=home)
    board = Board(os.path.join(ports, "COM3"))
    process = subprocess.Popen([program], cwd=home, env=environment, stderr=subprocess.DEVNULL)
    window = ""
    while not window:
        time.sleep(0.2)
        window = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(process.pid)],
                                capture_output=True, text=True, check=False).stdout.strip()
    window = window.splitlines()[-1]
    time.sleep(1.5)
    subprocess.run(["xdotool", "windowfocus", window, "key", "F5"], check=False)
    if not wait_for(lambda: board.openers(process.pid) > 0, 10):
        sys.exit("the program did not open the port")

    delays, sent, early = [], 0, None
    other = os.path.join(ports, "COM9")
    spare, spare_slave = pty.openpty()
    for cycle in range(options.cycles):
        if cycle:
            board = Board(os.path.join(ports, "COM3"))
            if not wait_for(lambda: board.openers(process.pid) > 0, 10):
                sys.exit(f"cycle {cycle}: not opened within 10 s")
            delays.append((time.monotonic() - board.since) * 1000)
        end = time.monotonic() + 0.5
        while time.monotonic() < end:
            lines = b""
            while len(lines) < options.rate * 0.002:
                lines += b"%08d the quick brown fox jumps over\r\n" % sent
                sent += 1
            while lines:
                try:
                    lines = lines[os.write(board.master, lines):]
                except BlockingIOError:
                    time.sleep(0.001)
            time.sleep(0.002)
        if cycle % 3 == 0:
            if os.path.lexists(other):
                os.unlink(other)
            else:
                os.symlink(os.ttyname(spare_slave), other)
        wait_for(lambda: board.pending() == 0, 10)
        time.sleep(0.01)
        board.unplug()
        time.sleep(random.choice([0.1, 0.1, 0.3, 1.0]))
        if cycle == min(9, options.cycles - 1):
            early = (len(os.listdir(f"/proc/{process.pid}/fd")), memory_kb(process.pid))
    late = (len(os.listdir(f"/proc/{process.pid}/fd")), memory_kb(process.pid))
    subprocess.run(["xdotool", "windowfocus", window, "key", "alt+F4"], check=False)
    process.wait(60)

    saved = b"".join(open(path, "rb").read() for path in sorted(glob.glob(f"{home}/**/*.bin", recursive=True)))
    got = [int(number) for number in re.findall(rb"(\d{8}) the quick brown fox jumps over\r\n", saved)]
    missing = sorted(set(range(sent)) - set(got))
    delays.sort()
    print(f"{options.cycles} cycles, {sent} lines sent, {len(got)} in the file, {len(missing)} missing"
          f"{' (first: ' + str(missing[:5]) + ')' if missing else ''}")
    if delays:
        print(f"open again after {delays[len(delays) // 2]:.0f} ms (median), {delays[-1]:.0f} ms at worst")
    print(f"descriptors {early[0]} -> {late[0]}, anonymous memory {early[1]} -> {late[1]} KB")
    shutil.rmtree(home)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True)
    parser.add_argument("--cycles", type=int, default=50)
    parser.add_argument("--rate", type=int, default=100000, help="bytes per second")
    run(parser.parse_args())


if __name__ == "__main__":
    main()
