#!/usr/bin/env python3
"""Writes the results of tools/bench into docs/performance.md, and a plot of each family beside it.

    tools/bench_report.py RATIOS.csv DOCS_DIRECTORY

In performance.md, everything between the two marks is replaced. Each table has a row per workload, with the
ratio peer / mub for each N. A plot has the same ratios on a logarithmic scale.
"""

import csv
import datetime
import itertools
import platform
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

BEGIN, END = "<!-- begin of the results -->\n", "<!-- end of the results -->\n"
# The same file for the same results: no random identifiers, and text that stays text.
plt.rcParams.update({"svg.hashsalt": "mub", "svg.fonttype": "none", "font.size": 9, "font.family": "sans-serif"})
COLOURS = plt.get_cmap("tab10").colors


def machine():
    """The processor, its caches, the system and the compiler."""
    facts = dict(line.split(":", 1) for line in subprocess.run(
        ["lscpu"], capture_output=True, text=True, check=True, env={"LC_ALL": "C"}).stdout.splitlines() if ":" in line)
    caches = ", ".join(f"{level} {facts[f'{level} cache'].split('(')[0].strip()}"
                       for level in ("L1d", "L2", "L3") if f"{level} cache" in facts)
    system = re.search(r'^PRETTY_NAME="(.*)"', Path("/etc/os-release").read_text(), re.MULTILINE).group(1)
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True).stdout.splitlines()[0]
    return f"{facts['Model name'].strip()}, {facts['CPU(s)'].strip()} processors, {caches}; {system}; {compiler}"


def short(count):
    """1000 as 1e3, 8000 as 8e3; other numbers as they are."""
    digits = count.rstrip("0")
    return f"{digits}e{len(count) - len(digits)}" if len(digits) == 1 and len(count) > 3 else count


def results(path):
    """{family: {(workload, peer): {n: ratio}}}"""
    with open(path, newline="", encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    # These only fill a container: the time is that of another workload.
    of_memory = {row["workload"] for row in rows if row["measure"] == "bytes"}
    families = defaultdict(lambda: defaultdict(dict))
    for row in rows:
        is_time = row["measure"] == "ns"
        if row["workload"] in of_memory and (is_time or row["workload"].endswith(")")):
            continue
        workload = row["workload"] + ("" if is_time else ", bytes")
        families[row["family"]][workload, row["peer"]][row["n"]] = float(row["ratio"])
    return families


def by_size(sizes):
    return sorted(sizes, key=lambda n: int(n or 0))


def table(family):
    sizes = by_size({n for ratios in family.values() for n in ratios})
    rows = [["workload", "against", *map(short, sizes)], ["---", "---", *["---:"] * len(sizes)]]
    for (workload, peer), ratios in family.items():
        rows.append([f"`{workload}`" if workload.isidentifier() else workload, f"`{peer}`",
                     *(f"{ratios[n]:.2f}" if n in ratios else "" for n in sizes)])
    return "".join(f"| {' | '.join(row)} |\n" for row in rows)


def plot(family, path):
    """A line per workload, a mark per ratio: the colour is that of the peer, the size grows with N."""
    workloads = list(dict.fromkeys(workload for workload, _ in family))
    peers = list(dict.fromkeys(peer for _, peer in family))
    sizes = by_size({n for ratios in family.values() for n in ratios})
    figure, axes = plt.subplots(figsize=(8, 0.9 + 0.28 * len(workloads)), layout="constrained")
    for (index, peer), (step, n) in itertools.product(enumerate(peers), enumerate(sizes)):
        shift = 0.5 * ((index + 0.5) / len(peers) - 0.5)
        marks = [(ratios[n], workloads.index(workload) + shift)
                 for (workload, against), ratios in family.items() if against == peer and n in ratios]
        # Lines without a line: in SVG, their marks take far less space than those of a scatter plot.
        axes.plot([ratio for ratio, _ in marks], [line for _, line in marks], "o", markersize=4 + step,
                  color=COLOURS[index], alpha=0.75, label=None if step else peer)
    axes.set_xscale("log", base=2)
    axes.xaxis.set_major_formatter(lambda value, _: f"{value:g}")
    axes.axvline(1, color="black", linewidth=0.8)
    axes.set_yticks(range(len(workloads)), workloads)
    axes.invert_yaxis()
    axes.grid(axis="x", linewidth=0.3)
    axes.set_xlabel(f"time (or bytes) of the peer / libmub: right of 1, libmub is better; small to large: n = "
                    f"{', '.join(map(short, sizes))}")
    axes.legend(loc="upper left", bbox_to_anchor=(1, 1), frameon=False)
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    plt.close(figure)


def main():
    ratios, docs = map(Path, sys.argv[1:])
    page = docs / "performance.md"
    before, _, rest = page.read_text(encoding="utf-8").partition(BEGIN)
    _, mark, after = rest.partition(END)
    if not mark:
        sys.exit(f"{page}: the marks of the results are missing")
    parts = [f"Measured on {datetime.date.today()}: {machine()}, {platform.machine()}.\n"]
    for name, family in results(ratios).items():
        picture = f"performance_{name}.svg"
        plot(family, docs / "pictures" / picture)
        parts.append(f"## {name.replace('_', ' ')}\n\n![Ratios of {name}]({picture})\n\n{table(family)}")
    page.write_text(before + BEGIN + "\n" + "\n".join(parts) + "\n" + END + after, encoding="utf-8")


if __name__ == "__main__":
    main()
