#!/usr/bin/env python3
"""The figures of all tools beside those of programs that do the same, measured
in one run, as a table of ratios.

    tools/with-display.sh bench/report.py build/release [PART ...]

Parts: serial, ymodem, network, camera, editor (default: all; some ten minutes
on a quiet machine). tools/setup-bench.sh installs the other programs. Machines
differ and are shared, so the ratios count and not the figures; nothing here
fails because of one. Each part is a script of its own, which prints more.
"""

import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent


def output_of(*command):
    """What a part's script printed; its figures are lines of words and numbers."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          text=True, check=False)
    if done.returncode != 0:
        print(f"{pathlib.Path(command[0]).name} failed", file=sys.stderr)
    return done.stdout


def number(pattern, text):
    """The number in the pattern's group, or None where the text lacks it."""
    found = re.search(pattern, text, re.DOTALL)
    return float(found.group(1)) if found else None


def row(what, unit, ours, peer_name, peers, goal=""):
    """A line of the table; goal is what the ratio is to be: "<= 0.5", or empty."""
    if ours is None or peers is None:
        print(f"| {what} | - | {peer_name} | - | - | not measured |", flush=True)
        return
    ratio = ours / peers if peers else float("inf")
    verdict = ""
    if goal:
        relation, bound = goal.split()
        met = ratio <= float(bound) if relation == "<=" else ratio >= float(bound)
        verdict = f"{goal}: {'met' if met else 'MISSED'}"
    print(f"| {what} | {ours:.4g} {unit} | {peer_name} | {peers:.4g} {unit} | {ratio:.2f} | {verdict} |", flush=True)


def serial(build):
    text = output_of(HERE / "compare_terminals.py", "--build", build)

    def line(name, case):
        found = re.search(rf"^{name} +{case}.*$", text, re.MULTILINE)
        return found.group(0) if found else ""

    for case in ("text 92 KB per s", "text 1 MB per s", "hex 92 KB per s", "hex 1 MB per s"):
        ours = number(r"([\d.]+) cpu s/MB", line("korvex", case))
        for peer in ("cutecom", "gtkterm"):
            theirs = number(r"([\d.]+) cpu s/MB", line(peer, case))
            if theirs is not None or peer == "cutecom":
                row(f"serial, processor time, {case}", "s/MB", ours, peer, theirs,
                    "<= 0.5" if peer == "cutecom" else "")
    for case in ("text 1 MB per s", "hex 1 MB per s"):
        row(f"serial, writer blocked, {case}", "s in 10", number(r"blocked +([\d.]+) s", line("korvex", case)),
            "cutecom", number(r"blocked +([\d.]+) s", line("cutecom", case)))
    for peer in ("cutecom", "gtkterm"):
        row("start to painted window", "s", number(r"painted ([\d.]+) s", line("korvex", "mapped")),
            peer, number(r"painted ([\d.]+) s", line(peer, "mapped")), "<= 1.5" if peer == "cutecom" else "")


def ymodem(build):
    for baud in ("921600",):
        text = output_of(HERE / "transfer_figures.sh", build / "bin", baud)
        ours = number(r"serial page to boardsim: [\d.]+ s, (\d+) bytes/s", text)
        for sender, receiver in (("sb", "boardsim"), ("sb", "rb")):
            row(f"YModem at {baud} baud", "B/s", ours, f"{sender} to {receiver}",
                number(rf"{sender} to {receiver}: [\d.]+ s, (\d+) bytes/s", text))


def network(build):
    text = output_of(HERE / "network_figures.sh", build / "bin", "sink", "hidden", "text", "hexadecimal")
    rates = re.findall(r"([\d.]+) MB/s", text)
    for what, rate in zip(("not shown", "text", "hexadecimal"), rates[1:]):
        row(f"network, one peer flat out, {what}", "MB/s", float(rate), "epoll sink", float(rates[0]))


def camera(build):
    text = output_of(HERE / "camera_figures.sh", build / "bin", "decoder")
    speed = {}
    for name, value, unit in re.findall(r"^(\S+) .*bytes_per_second=([\d.]+)([GM])", text, re.MULTILINE):
        speed[name] = float(value) * (1024 if unit == "G" else 1)
    for name, value in speed.items():
        size = re.match(r"decode/w:(\d+)/h:(\d+)", name)
        if size:
            row(f"camera, {name}", "MiB/s", value, "memcpy", speed.get("copyPixels/" + "/".join(size.groups())),
                ">= 0.33")


def editor(build):
    for megabytes in ("16", "256", "1024"):
        text = output_of(HERE / "hex_figures.sh", build / "bin", megabytes)
        for peer in ("okteta", "wxHexEditor"):
            theirs = (re.search(rf"^ *{peer}:.*$", text, re.MULTILINE) or [""])[0]
            opened = number(r"open (\d+) ms", theirs)
            goal = "<= 1" if peer == "okteta" else ""
            row(f"editor, {megabytes} MB, until drawn", "ms", number(r"drawn after (\d+) ms", text), peer, opened, goal)
            row(f"editor, {megabytes} MB, until all is read", "ms", number(r"all read after (\d+) ms", text), peer,
                opened)
            row(f"editor, {megabytes} MB, memory", "MB", number(r"memory (\d+) MB", text), peer,
                number(r"memory (\d+) MB", theirs))
            if peer == "okteta":
                row(f"editor, {megabytes} MB, save", "ms", number(r" save (\d+) ms, saved", text), peer,
                    number(r"save (\d+) ms", theirs), goal)


PARTS = {part.__name__: part for part in (serial, ymodem, network, camera, editor)}


def main():
    if len(sys.argv) < 2 or not set(sys.argv[2:]) <= PARTS.keys():
        sys.exit(__doc__)
    print("| what | Korvex | beside | figure | ratio | goal |\n| --- | --- | --- | --- | --- | --- |", flush=True)
    for name in sys.argv[2:] or PARTS:
        PARTS[name](pathlib.Path(sys.argv[1]))


main()
