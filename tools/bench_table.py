#!/usr/bin/env python3
"""Compares benchmark results and prints the ratios.

    tools/bench_table.py [--csv FILE] RESULT.json…     output of --benchmark_format=json
    tools/bench_table.py --names LIST…                 output of --benchmark_list_tests: only checks the names

Benchmarks are named WORKLOAD/WHO/N, where WHO is "mub" or a peer. For each workload, N and peer there is a
ratio peer / mub: above 1, libmub is faster, or needs less memory. Values are medians of the repetitions.
"spread" is (maximum - minimum) / median, the larger of the two sides, and shows how far to trust a ratio.
WHO may also be "mub_inline", for libmub with mub_inline.h, or "mub_lto", for the static library optimised with
the program; their rows are called "WORKLOAD (inline)" and "WORKLOAD (LTO)". The results of a family may be in
two files, FAMILY.json and FAMILY_lto.json.
"""

import argparse
import csv
import itertools
import json
import re
import statistics
import sys
from collections import defaultdict
from pathlib import Path
from typing import NamedTuple

# Names of libmub, and what they add to the workload.
OURS = {"mub": "", "mub_inline": " (inline)", "mub_lto": " (LTO)"}
# What the benchmark library appends to a name: "/iterations:1", "/repeats:3", "/manual_time" …
APPENDED = re.compile(r"/(?:[a-z_]+:[0-9.]+|manual_time|real_time|process_time)(?=/|$)")
MEMORY = "bytes_per_entry"
COLUMNS = ["family", "workload", "n", "peer", "measure", "mub", "peer_value", "ratio", "spread_percent"]


class Name(NamedTuple):
    family: str
    workload: str
    n: str


def parsed(family, text):
    """(Name, who) of a benchmark, or None if its name is not WORKLOAD/WHO or WORKLOAD/WHO/N."""
    parts = APPENDED.sub("", text).split("/")
    if len(parts) < 2 or not all(parts):
        return None
    return Name(family, parts[0], "/".join(parts[2:])), parts[1]


def family_of(path):
    return Path(path).stem.removesuffix("_lto")


def name_faults(paths):
    for path in paths:
        sides = defaultdict(set)
        for line in Path(path).read_text().splitlines():
            if parsed(family_of(path), line) is None:
                yield f"{family_of(path)}: {line}: not WORKLOAD/WHO/N"
                continue
            name, who = parsed(family_of(path), line)
            if who in sides[name]:
                yield f"{family_of(path)}: {line}: listed twice"
            sides[name].add(who)
        if not sides:
            yield f"{family_of(path)}: no benchmarks"
        for name, who in sides.items():
            if "mub" not in who:
                yield f"{family_of(path)}: {name.workload}/{name.n}: {', '.join(sorted(who))}, but no mub"


def nanoseconds(run):
    """The time per item if the benchmark counts items, otherwise per iteration."""
    # Processor time, except for benchmarks that ask for wall or manual time.
    wall = re.search(r"/(manual|real)_time(/|$)", run["run_name"])
    unit = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]
    if run.get("items_per_second"):
        return 1e9 / run["items_per_second"]
    return run["real_time" if wall else "cpu_time"] * unit


def samples_of(paths):
    """{Name: {measure: {who: [value of each repetition]}}}, in the order of registration."""
    samples = defaultdict(lambda: defaultdict(lambda: defaultdict(list)))
    for path in paths:
        runs = json.loads(Path(path).read_text())["benchmarks"]
        for run in sorted(runs, key=lambda run: (run["family_index"], run["per_family_instance_index"])):
            if run["run_type"] != "iteration":
                continue
            if run.get("error_occurred"):
                sys.exit(f"{path}: {run['name']}: {run['error_message']}")
            if parsed(family_of(path), run["run_name"]) is None:
                sys.exit(f"{path}: {run['run_name']}: not WORKLOAD/WHO/N")
            name, who = parsed(family_of(path), run["run_name"])
            samples[name]["ns"][who].append(nanoseconds(run))
            if MEMORY in run:
                samples[name]["bytes"][who].append(run[MEMORY])
    return samples


def spread(values):
    middle = statistics.median(values)
    return 100 * (max(values) - min(values)) / middle if middle else 0


def rows_of(samples):
    for name, measures in samples.items():
        for measure, sides in measures.items():
            peers = {who: values for who, values in sides.items() if who not in OURS}
            for (who, suffix), (peer, theirs) in itertools.product(OURS.items(), peers.items()):
                if who not in sides:
                    continue
                ours = sides[who]
                mub, other = statistics.median(ours), statistics.median(theirs)
                ratio = other / mub if mub else float("inf")
                worst = max(spread(ours), spread(theirs))
                yield [name.family, name.workload + suffix, name.n, peer, measure, f"{mub:.3g}", f"{other:.3g}",
                       ratio_text(ratio), f"{worst:.0f}"]


def ratio_text(ratio):
    """Two decimals, or two significant digits below 0.1: the means are computed from this text."""
    return f"{ratio:.2f}" if ratio >= 0.1 else f"{ratio:.2g}"


def print_table(rows):
    table = [COLUMNS, *rows]
    widths = [max(len(row[column]) for row in table) for column in range(len(COLUMNS))]
    for row in table:
        cells = [cell.ljust(width) if column < 5 else cell.rjust(width)
                 for column, (cell, width) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())


def print_summary(rows):
    """The geometric mean of the time ratios against each peer."""
    ratios = defaultdict(list)
    for row in rows:
        if row[4] == "ns":
            ratios[row[0], row[3]].append(float(row[7]))
    print("\ngeometric means of the time ratios:")
    for (family, peer), values in ratios.items():
        print(f"  {family} against {peer}: {statistics.geometric_mean(values):.2f} of {len(values)}"
              f" ({sum(value > 1 for value in values)} above 1)")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--csv", type=Path)
    parser.add_argument("--names", action="store_true")
    parser.add_argument("paths", nargs="+", metavar="FILE")
    arguments = parser.parse_args()
    if arguments.names:
        faults = list(name_faults(arguments.paths))
        print("\n".join(faults) or f"the names in {len(arguments.paths)} benchmark programs are well formed")
        return 1 if faults else 0
    rows = list(rows_of(samples_of(arguments.paths)))
    if not rows:
        sys.exit("no workload has results of both mub and a peer")
    print_table(rows)
    print_summary(rows)
    if arguments.csv:
        with arguments.csv.open("w", newline="") as file:
            csv.writer(file).writerows([COLUMNS, *rows])
        print(f"\nwritten to {arguments.csv}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
