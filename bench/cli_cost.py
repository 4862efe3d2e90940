#!/usr/bin/env python3
"""What "korvex-cli monitor" costs beside socat: the processor time of both for the
same bytes from a pseudo-terminal into a file, and the time from starting the
program to its first byte.

    bench/cli_cost.py build/release/bin [SECONDS [BYTES_PER_SECOND [BYTES_AT_A_TIME]]]

Both run at the same time on a terminal each and are fed in turn, so that what else
the machine does weighs the same on both. A feeder that gets no processor for some
milliseconds makes up for it in a burst; look at a quiet machine, or run it with a
higher priority.
"""

import os
import resource
import signal
import statistics
import subprocess
import sys
import tempfile
import time
import tty

WARM_UP = 0.5  # s


def terminal():
    board, host = os.openpty()
    tty.setraw(host)
    return board, host, os.ttyname(host)


def write_all(board, data):
    while data:
        data = data[os.write(board, data):]


def cost(process):
    """User and system seconds of a process that runs."""
    with open(f"/proc/{process.pid}/stat") as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    with open(f"/proc/{process.pid}/schedstat") as stat:
        exact = int(stat.read().split()[0]) / 1e9
    return exact, int(fields[11]), int(fields[12])


def wait_for_size(name, size):
    while os.path.getsize(name) < size:
        time.sleep(0.01)


def compare(program, seconds, rate, size, folder):
    commands = {
        "korvex-cli": lambda device: [program, "monitor", device],
        "socat": lambda device: ["socat", "-u", f"OPEN:{device},rawer", "STDOUT"],
    }
    runs = []
    for name, command in commands.items():
        board, host, device = terminal()
        output = f"{folder}/{name}"
        process = subprocess.Popen(command(device), stdin=subprocess.DEVNULL, stdout=open(output, "wb"))
        runs.append((name, process, board, host, output))
    time.sleep(WARM_UP)
    before = [cost(run[1]) for run in runs]
    piece = (bytes(range(256)) * (size // 256 + 1))[:size]
    start = time.perf_counter()
    sent = 0
    while (now := time.perf_counter() - start) < seconds:
        while sent + len(piece) <= now * rate:
            for run in runs:
                write_all(run[2], piece)
            sent += len(piece)
        time.sleep(max(0, start + (sent + len(piece)) / rate - time.perf_counter()))
    for run in runs:
        wait_for_size(run[4], sent)
    seconds_used = {}
    for run, (exact, user, system) in zip(runs, before):
        now_exact, now_user, now_system = cost(run[1])
        tick = os.sysconf("SC_CLK_TCK")
        seconds_used[run[0]] = now_exact - exact
        print(f"  {run[0]:10} {now_exact - exact:6.3f} s of processor time "
              f"(user {(now_user - user) / tick:.2f}, system {(now_system - system) / tick:.2f})")
        run[1].send_signal(signal.SIGTERM)
        run[1].wait()
        with open(run[4], "rb") as output:
            complete = output.read() == piece * (sent // len(piece))
        if not complete:
            print(f"  {run[0]} lost or changed bytes")
    ratio = seconds_used["korvex-cli"] / seconds_used["socat"]
    print(f"  ratio {ratio:.2f} for {sent / 1e6:.1f} MB at {rate / 1e6:g} MB/s, {size} bytes at a time")
    return ratio


def first_byte(command, device, board):
    """Seconds from starting to the first byte, which is waiting in the terminal."""
    os.write(board, b"x")
    start = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
    process.stdout.read(1)
    seconds = time.perf_counter() - start
    process.send_signal(signal.SIGTERM)
    process.wait()
    return seconds


def main():
    program = f"{sys.argv[1]}/korvex-cli"
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 10
    rate = int(float(sys.argv[3])) if len(sys.argv) > 3 else 1_000_000
    size = int(sys.argv[4]) if len(sys.argv) > 4 else rate // 1000
    with tempfile.TemporaryDirectory() as folder:
        ratios = []
        for turn in range(3):
            print(f"run {turn + 1}:")
            ratios.append(compare(program, seconds, rate, size, folder))
    board, host, device = terminal()
    times = {"korvex-cli": [], "socat": []}
    for _ in range(15):
        times["korvex-cli"].append(first_byte([program, "monitor", device], device, board))
        times["socat"].append(first_byte(["socat", "-u", f"OPEN:{device},rawer", "STDOUT"], device, board))
    for name, values in times.items():
        print(f"start to first byte, {name}: median {statistics.median(values) * 1000:.1f} ms, "
              f"longest {max(values) * 1000:.1f} ms of {len(values)}")
    print(f"processor time beside socat: median ratio {statistics.median(ratios):.2f}")


if __name__ == "__main__":
    main()
