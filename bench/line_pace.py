#!/usr/bin/env python3
"""How exactly serialrelay keeps the pace of a line.

    bench/line_pace.py build/release/bin [BAUD ...]

For each baud rate: the time of 1 MB one way beside that of a line (ten bits
for a byte), and by how much single bytes and blocks of 1029 bytes come later
than a line would bring them.
"""

import os
import select
import statistics
import subprocess
import sys
import tempfile
import time

TOTAL = 1_000_000


def open_port(path):
    return os.open(path, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)


def read_exactly(port, count):
    got = bytearray()
    while len(got) < count:
        if not select.select([port], [], [], 10)[0]:
            raise SystemExit(f"only {len(got)} of {count} bytes came")
        got += os.read(port, count - len(got))
    return got


def transfer(source, target, data):
    """Seconds from the first byte in to the last byte out."""
    sent, got = 0, bytearray()
    start = time.perf_counter()
    while len(got) < len(data):
        readable, writable, _ = select.select([target], [source] if sent < len(data) else [], [], 10)
        if not readable and not writable:
            raise SystemExit(f"only {len(got)} of {len(data)} bytes came")
        if writable:
            sent += os.write(source, data[sent:sent + 1024])
        if readable:
            got += os.read(target, 65536)
    seconds = time.perf_counter() - start
    if got != data:
        raise SystemExit("what came is not what was sent")
    return seconds


def late(source, target, size, byte_time):
    """Milliseconds by which a block comes late: median and worst of 50."""
    lateness = []
    for _ in range(50):
        time.sleep(0.02)
        start = time.perf_counter()
        os.write(source, bytes(size))
        read_exactly(target, size)
        lateness.append((time.perf_counter() - start - size * byte_time) * 1000)
    return f"{statistics.median(lateness):.2f} (worst {max(lateness):.2f})"


def measure(bin_folder, baud):
    with tempfile.TemporaryDirectory() as folder:
        relay = subprocess.Popen(
            [f"{bin_folder}/serialrelay", "--folder", folder, "--port", "COM3", "--far-port", "COM4",
             "--baud", str(baud)], stdout=subprocess.PIPE)
        try:
            relay.stdout.readline()
            relay.stdout.readline()
            near, far = open_port(f"{folder}/COM3"), open_port(f"{folder}/COM4")
            time.sleep(0.1)  # until the relay has seen both
            byte_time = 10 / baud if baud else 0
            seconds = transfer(near, far, os.urandom(TOTAL))
            line = TOTAL * byte_time
            share = f"{(seconds / line - 1) * 100:+.3f} % against the line's {line:.3f} s" if baud else "no pace"
            print(f"{baud:>7} baud: 1 MB in {seconds:.3f} s, {share}; late in ms: "
                  f"1 byte {late(far, near, 1, byte_time)}, "
                  f"1029 bytes {late(near, far, 1029, byte_time)}", flush=True)
        finally:
            relay.terminate()
            relay.wait()


for rate in [int(text) for text in sys.argv[2:]] or [0, 115200, 230400, 460800, 921600]:
    measure(sys.argv[1], rate)
