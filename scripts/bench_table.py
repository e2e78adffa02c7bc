#!/usr/bin/env python3
"""Runs the benchmark programs and prints each figure beside its peer of the same run, as a ratio.

A benchmark is named "figure/ours" or "figure/peer:NAME"; all entries with the same figure form one row a peer:

    packed ADD, 15 digits      ours 4.1 ns    decNumberAdd 22.9 ns    5.6 times as fast

Each program runs its entries five times, interleaved; the medians are shown.
"""

import collections
import json
import pathlib
import re
import subprocess
import sys

REPETITIONS = 5


def run(program):
    command = [
        program,
        "--benchmark_format=json",
        f"--benchmark_repetitions={REPETITIONS}",
        "--benchmark_enable_random_interleaving=true",
        "--benchmark_report_aggregates_only=true",
        "--benchmark_min_time=0.1",
    ]
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode:
        sys.exit(f"{program.name} ended with {done.returncode}:\n{done.stderr}")
    return json.loads(done.stdout)["benchmarks"]


def show(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def table(entries):
    """The rows of one program: figure, our time, peer, its time, ratio."""
    figures = collections.defaultdict(dict)
    for entry in entries:
        if entry.get("aggregate_name") != "median":
            continue
        name = entry["run_name"]
        for suffix in ("/real_time", "/manual_time", "/process_time"):
            name = name.removesuffix(suffix)
        figure, _, who = name.rpartition("/")
        time = entry["real_time"] if "real_time" in entry["run_name"] or "manual" in entry["run_name"] else entry["cpu_time"]
        figures[figure][who] = time * UNITS[entry["time_unit"]]
    # The entries come in a random order, and figures of one kind differ in a number at most.
    for figure, times in sorted(figures.items(), key=lambda row: [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", row[0])]):
        ours = times.pop("ours", None)
        if ours is None:
            continue
        for peer, time in sorted(times.items()) or [(None, None)]:
            if peer is None:
                yield figure, show(ours), "", "", ""
            else:
                yield figure, show(ours), peer.removeprefix("peer:"), show(time), f"{time / ours:.2f}"


def main():
    build = pathlib.Path(__file__).resolve().parent.parent / "build" / "bin"
    wanted = sys.argv[1:]
    programs = sorted(build.glob("bench_*"))
    names = [program.name.removeprefix("bench_") for program in programs]
    for name in wanted:
        if name not in names:
            sys.exit(f"no benchmark is called {name}; there are: {' '.join(names)}")
    if wanted:
        programs = [build / f"bench_{name}" for name in wanted]
    lines = ["| Figure | ours | peer | peer's | times as fast |", "|---|---|---|---|---|"]
    print("\n".join(lines))
    for program in programs:
        for row in table(run(program)):
            lines.append("| " + " | ".join(row) + " |")
            print(lines[-1], flush=True)
    if not wanted:  # a whole run is the table of the page
        page = build.parent.parent / "bench" / "README.md"
        head = page.read_text().split("| Figure |")[0]
        page.write_text(head + "\n".join(lines) + "\n")


main()
