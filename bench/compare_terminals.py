#!/usr/bin/env python3
"""Compares what terminal programs cost while a simulated board sends to them.

    compare_terminals.py --build build/release [--seconds 10] [--pictures DIR]
        [--only cutecom,gtkterm,korvex] [--korvex PROGRAM] [--korvex-open COMMAND]

Every program runs on a display of its own (Xvfb, openbox), in an empty home
folder, with the port of a board (bin/boardsim of the build) that writes each
2 ms and rests for 25 ms twice a second. Printed per run:

    cpu s/MB   user and system time of the program per 10^6 bytes, from before
               the first byte until it has come to rest after the last one
    rss MB     resident memory then
    blocked s  how long the board had bytes that the port did not take
    taken      bytes that the port took, of those that were to be sent

and per program the time from its start to its first mapped and to its first
painted window, and memory and processor time when idle without a port.

These are figures to look at; nothing here fails because of one.
"""

import argparse
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PORT = "COM3"
TICK = os.sysconf("SC_CLK_TCK")
PAGE = os.sysconf("SC_PAGE_SIZE")


# --- processes ------------------------------------------------------------

def cpu_seconds(pid):
    """User and system time of a process."""
    with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICK


def resident_mb(pid):
    with open(f"/proc/{pid}/statm", encoding="utf-8") as file:
        return int(file.read().split()[1]) * PAGE / 1e6


def wait_until_idle(pid, limit=120):
    """Waits until a process has used less than 2 % of a processor for a
    second; false if it did not within the limit in seconds."""
    end = time.monotonic() + limit
    while time.monotonic() < end:
        before = cpu_seconds(pid)
        time.sleep(1)
        if cpu_seconds(pid) - before <= 0.02:
            return True
    return False


def stop(process):
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


# --- display --------------------------------------------------------------

class WindowAttributes(ctypes.Structure):
    _fields_ = ([(name, ctypes.c_int) for name in ("x", "y", "width", "height", "border", "depth")]
                + [("visual", ctypes.c_void_p), ("root", ctypes.c_ulong)]
                + [(name, ctypes.c_int) for name in ("kind", "bit_gravity", "win_gravity", "backing_store")]
                + [("planes", ctypes.c_ulong), ("pixel", ctypes.c_ulong), ("save_under", ctypes.c_int),
                   ("colormap", ctypes.c_ulong), ("map_installed", ctypes.c_int), ("map_state", ctypes.c_int),
                   ("rest", ctypes.c_long * 8)])


class Image(ctypes.Structure):
    _fields_ = ([(name, ctypes.c_int) for name in ("width", "height", "xoffset", "format")]
                + [("data", ctypes.c_void_p)]
                + [(name, ctypes.c_int) for name in ("byte_order", "unit", "bit_order", "pad", "depth", "line")])


class Display:
    """A display of its own with a window manager, and a look at its windows."""

    VIEWABLE = 2
    LEAST_SIZE = (300, 200)  # of a program's window, in pixels

    def __init__(self):
        read_end, write_end = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
            pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            self.name = ":" + pipe.readline().strip()
        self.environment = dict(os.environ, DISPLAY=self.name)
        self.manager = subprocess.Popen(["openbox"], env=self.environment,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.x11 = ctypes.CDLL("libX11.so.6")
        for function in ("XOpenDisplay", "XGetImage"):
            getattr(self.x11, function).restype = ctypes.c_void_p
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        # Windows may vanish while they are looked at.
        handler = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)
        self.ignore = handler(lambda display, error: 0)
        self.x11.XSetErrorHandler(self.ignore)
        self.connection = ctypes.c_void_p(self.x11.XOpenDisplay(self.name.encode()))
        self.root = self.x11.XDefaultRootWindow(self.connection)
        time.sleep(1)

    def close(self):
        stop(self.manager)
        self.x11.XCloseDisplay(self.connection)
        stop(self.server)

    def window(self, parent=None):
        """The innermost visible window of a program's size, or None."""
        root, up, count = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.c_uint()
        children = ctypes.POINTER(ctypes.c_ulong)()
        if not self.x11.XQueryTree(self.connection, ctypes.c_ulong(parent or self.root), ctypes.byref(root),
                                   ctypes.byref(up), ctypes.byref(children), ctypes.byref(count)):
            return None
        found = None
        for index in range(count.value):
            attributes = WindowAttributes()
            child = children[index]
            if (self.x11.XGetWindowAttributes(self.connection, ctypes.c_ulong(child), ctypes.byref(attributes))
                    and attributes.map_state == self.VIEWABLE
                    and attributes.width >= self.LEAST_SIZE[0] and attributes.height >= self.LEAST_SIZE[1]):
                found = self.window(child) or child
        if children:
            self.x11.XFree(children)
        return found

    def painted(self, window):
        """Whether a window shows more than a background."""
        width, height = self.LEAST_SIZE
        pointer = self.x11.XGetImage(self.connection, ctypes.c_ulong(window), 0, 0, width, height,
                                     ctypes.c_ulong(0xFFFFFFFF), 2)
        if not pointer:
            return False
        image = ctypes.cast(pointer, ctypes.POINTER(Image)).contents
        data = ctypes.string_at(image.data, image.line * image.height)
        self.x11.XDestroyImage(ctypes.c_void_p(pointer))
        return len({data[i:i + 4] for i in range(0, len(data), 4)}) > 8

    def tool(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)

    def click(self, window, x, y):
        self.tool("mousemove", "--window", window, x, y, "click", 1)
        time.sleep(0.3)

    def picture(self, path):
        subprocess.run(["import", "-window", "root", path], env=self.environment, check=True)


# --- board ----------------------------------------------------------------

class Board:
    """The feeder: bursts of a payload, beginning two seconds after a program
    has opened the port."""

    DELAY = 2.0

    def __init__(self, program, folder, rate, total, encoding):
        self.total = total
        self.log = open(os.path.join(folder, "board.log"), "w+", encoding="utf-8")
        self.process = subprocess.Popen(
            [program, "--folder", folder, "--port", PORT, "--mode", "burst", "--burst-pause", "2", "--rest", "25",
             "--bytes-per-second", str(rate), "--total", str(total), "--encoding", encoding,
             "--delay", str(int(self.DELAY * 1000))],
            stdout=self.log, stderr=subprocess.PIPE, text=True)
        self.link = os.path.join(folder, PORT)
        if not self.wait_for("plugged", 10):
            sys.exit("the board does not start")

    def wait_for(self, event, limit):
        end = time.monotonic() + limit
        while time.monotonic() < end:
            with open(self.log.name, encoding="utf-8") as log:
                if any(line.startswith(event) for line in log):
                    return True
            time.sleep(0.02)
        return False

    def stop(self):
        """Its statistics."""
        self.process.send_signal(signal.SIGTERM)
        statistics = self.process.communicate(timeout=10)[1]
        self.log.close()
        return {key: int(value) for key, value in (field.split("=") for field in statistics.split())}


# --- programs -------------------------------------------------------------

class Terminal:
    """A program to be measured. Subclasses say how it is started and how it
    comes to open a port and to show hexadecimal digits."""

    name = ""
    hexadecimal = False  # can show it

    def __init__(self, display, folder, shim):
        self.display = display
        self.home = os.path.join(folder, "home")
        os.makedirs(os.path.join(self.home, ".config"), mode=0o700)
        os.chmod(self.home, 0o700)
        self.environment = dict(display.environment, HOME=self.home, LC_ALL="C.UTF-8",
                                XDG_CONFIG_HOME=os.path.join(self.home, ".config"),
                                XDG_RUNTIME_DIR=self.home, NO_AT_BRIDGE="1")
        self.shim = shim
        self.process = None
        self.window = None

    def configure(self, link):
        """Prepares the home folder for a port; link is None for none."""

    def command(self, link):
        raise NotImplementedError

    def open_port(self, hexadecimal):
        """Makes the running program open the port."""

    def start(self, link=None):
        """Starts it; seconds until its window was mapped and painted."""
        self.configure(link)
        begin = time.monotonic()
        with open(os.path.join(self.home, "output.log"), "w", encoding="utf-8") as log:
            self.process = subprocess.Popen(self.command(link), env=self.environment, cwd=self.home,
                                            stdout=log, stderr=subprocess.STDOUT)
        mapped = painted = None
        while painted is None:
            now = time.monotonic() - begin
            if now > 30 or self.process.poll() is not None:
                sys.exit(f"{self.name} shows no window")
            self.window = self.display.window()
            if self.window and mapped is None:
                mapped = now
            if self.window and self.display.painted(self.window):
                painted = time.monotonic() - begin
            time.sleep(0.002)
        return mapped, painted

    def stop(self):
        stop(self.process)


class CuteCom(Terminal):
    name = "cutecom"
    hexadecimal = True

    def configure(self, link):
        self.environment["LD_PRELOAD"] = self.shim
        folder = os.path.join(self.home, ".config", "CuteCom")
        os.makedirs(folder, exist_ok=True)
        settings = {"BaudRate": 115200, "DataBits": 8, "Device": link or "", "FlowControl": 0, "OpenMode": 3,
                    "Parity": 0, "StopBits": 1, "name": "Default"}
        with open(os.path.join(folder, "CuteCom5.conf"), "w", encoding="utf-8") as file:
            file.write("[sessions]\n" + "".join(f"1\\{key}={value}\n" for key, value in settings.items())
                       + "size=1\n")

    def command(self, link):
        return ["cutecom"]

    def open_port(self, hexadecimal):
        # "Hex output" in the bottom row, "Open" at the top.
        if hexadecimal:
            attributes = WindowAttributes()
            self.display.x11.XGetWindowAttributes(self.display.connection, ctypes.c_ulong(self.window),
                                                  ctypes.byref(attributes))
            self.display.click(self.window, 102, attributes.height - 43)
        self.display.click(self.window, 50, 40)


class GtkTerm(Terminal):
    name = "gtkterm"

    def configure(self, link):
        self.environment["LD_PRELOAD"] = self.shim
        # All the settings that it writes itself: it asks about a file without.
        settings = {
            "port": link or "/dev/null", "speed": 115200, "bits": 8, "stopbits": 1, "parity": "none",
            "flow": "none", "wait_delay": 0, "wait_char": -1, "rs485_rts_time_before_tx": 30,
            "rs485_rts_time_after_tx": 30, "echo": False, "crlfauto": False, "timestamp": False,
            "font": '"Monospace 12"', "term_block_cursor": True, "term_rows": 80, "term_columns": 25,
            "term_scrollback": 10000, "term_visual_bell": True}
        for part in ("foreground", "background"):
            for colour in ("red", "blue", "green"):
                settings[f"term_{part}_{colour}"] = "0.660000" if part == "foreground" else "0.000000"
            settings[f"term_{part}_alpha"] = "1.000000"
        with open(os.path.join(self.home, ".config", ".gtktermrc"), "w", encoding="utf-8") as file:
            file.write("[default]\n" + "".join(f"{key}\t= {value}\n" for key, value in settings.items()))

    def command(self, link):
        return ["gtkterm", "-p", link, "-s", "115200"] if link else ["gtkterm"]


class Korvex(Terminal):
    """Our program, from a private copy, because it keeps its settings beside
    its executable. It finds the board through KORVEX_VIRTUAL_PORTS. How it
    comes to open the port is up to --korvex-open, a shell command that is run
    once the window is there, with the DISPLAY and these variables:

        BENCH_PORT    the port's name, COM3
        BENCH_HEX     1 if it is to show hexadecimal digits, otherwise 0
        BENCH_WINDOW  the number of its window
        BENCH_HOME    the folder of the copy
    """

    name = "korvex"
    hexadecimal = True
    program = None
    open_command = None

    def configure(self, link):
        self.copy = os.path.join(self.home, "korvex")
        shutil.copy(self.program, self.copy)
        if link:
            self.environment["KORVEX_VIRTUAL_PORTS"] = os.path.dirname(link)

    def command(self, link):
        return [self.copy]

    def open_port(self, hexadecimal):
        subprocess.run(self.open_command, shell=True, check=True, cwd=self.home, env=dict(
            self.environment, BENCH_PORT=PORT, BENCH_HEX=str(int(hexadecimal)),
            BENCH_WINDOW=str(self.window), BENCH_HOME=self.home))


# --- measurements ---------------------------------------------------------

def measure_idle(kind, shim):
    display = Display()
    with tempfile.TemporaryDirectory() as folder:
        terminal = kind(display, folder, shim)
        try:
            mapped, painted = terminal.start()
            wait_until_idle(terminal.process.pid)
            before = cpu_seconds(terminal.process.pid)
            time.sleep(10)
            used = cpu_seconds(terminal.process.pid) - before
            print(f"{kind.name:8}  mapped {mapped:.2f} s  painted {painted:.2f} s  "
                  f"idle: {resident_mb(terminal.process.pid):.1f} MB, {used * 1000:.0f} ms cpu in 10 s", flush=True)
        finally:
            terminal.stop()
            display.close()


def measure_transfer(kind, shim, boardsim, title, rate, seconds, encoding, hexadecimal, pictures):
    display = Display()
    with tempfile.TemporaryDirectory() as folder:
        total = int(rate * seconds)
        board = Board(boardsim, folder, rate, total, encoding)
        terminal = kind(display, folder, shim)
        try:
            terminal.start(board.link)
            terminal.open_port(hexadecimal)
            if not board.wait_for("host arrived", 10):
                if pictures:
                    display.picture(os.path.join(pictures, f"{kind.name} {title} failed.png"))
                print(f"{kind.name:8}  {title:18}  did not open the port", flush=True)
                return
            time.sleep(Board.DELAY / 2)  # the window is done with opening
            pid = terminal.process.pid
            before = cpu_seconds(pid)
            sent = board.wait_for("finished", 10 * seconds + 60)
            rested = wait_until_idle(pid)
            used = cpu_seconds(pid) - before
            memory = resident_mb(pid)
            if pictures:
                display.picture(os.path.join(pictures, f"{kind.name} {title}.png"))
        finally:
            terminal.stop()
            statistics = board.stop()
            display.close()
        megabytes = statistics["written"] / 1e6
        note = "" if sent and rested else "  NOT FINISHED"
        print(f"{kind.name:8}  {title:18}  {used / megabytes:7.3f} cpu s/MB  {memory:7.1f} MB  "
              f"blocked {statistics['blocked_ms'] / 1000:6.2f} s  taken {statistics['written']} of {total}{note}",
              flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", required=True, help="build folder with bin/boardsim and bench/modemlines.so")
    parser.add_argument("--seconds", type=float, default=10, help="length of a transfer at its rate")
    parser.add_argument("--only", default="", help="programs, separated by commas")
    parser.add_argument("--pictures", help="folder for a picture of the display after each transfer")
    parser.add_argument("--korvex", help="our program (default: bin/Korvex of the build)")
    parser.add_argument("--korvex-open", help="shell command that makes it open the port (default: open_port.sh)")
    options = parser.parse_args()

    boardsim = os.path.abspath(os.path.join(options.build, "bin", "boardsim"))
    shim = os.path.abspath(os.path.join(options.build, "bench", "modemlines.so"))
    for path in (boardsim, shim):
        if not os.path.exists(path):
            sys.exit(f"{path} is missing: build with -DKORVEX_BENCH=ON")
    for tool in ("Xvfb", "openbox", "xdotool", "import"):
        if not shutil.which(tool):
            sys.exit(f"{tool} is missing: run tools/setup-bench.sh")
    if options.pictures:
        os.makedirs(options.pictures, exist_ok=True)

    kinds = [CuteCom, GtkTerm, Korvex]
    Korvex.program = os.path.abspath(options.korvex or os.path.join(options.build, "bin", "Korvex"))
    Korvex.open_command = options.korvex_open or os.path.join(os.path.dirname(os.path.abspath(__file__)), "open_port.sh")
    if options.only:
        kinds = [kind for kind in kinds if kind.name in options.only.split(",")]

    for kind in kinds:
        if kind is not Korvex and not shutil.which(kind.name):
            sys.exit(f"{kind.name} is missing: run tools/setup-bench.sh")
        measure_idle(kind, shim)
    cases = [("text 92 KB/s", 92000, "ascii", False), ("text 1 MB/s", 1000000, "ascii", False),
             ("bytes 1 MB/s", 1000000, "binary", False),
             ("hex 92 KB/s", 92000, "binary", True), ("hex 1 MB/s", 1000000, "binary", True)]
    for title, rate, encoding, hexadecimal in cases:
        for kind in kinds:
            if hexadecimal and not kind.hexadecimal:
                continue
            measure_transfer(kind, shim, boardsim, title.replace("/", " per "), rate, options.seconds, encoding,
                             hexadecimal, options.pictures)


main()
