"""Benchmark results become the right ratios.

    bench_table_test.py TOOLS_DIR
"""

import csv
import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(sys.argv.pop(1)).resolve()


def run(name, family_index, nanoseconds, **fields):
    return {
        "name": name, "run_name": name, "run_type": "iteration", "family_index": family_index,
        "per_family_instance_index": 0, "cpu_time": nanoseconds / 1000, "real_time": 7, "time_unit": "us", **fields,
    }


class BenchTable(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def table(self, *arguments):
        return subprocess.run([sys.executable, TOOLS / "bench_table.py", *arguments], capture_output=True, text=True)

    def rows(self, *runs, lto_runs=()):
        files = {"hash.json": runs, "hash_lto.json": lto_runs}
        for name, listed in files.items():
            (self.directory / name).write_text(json.dumps({"benchmarks": listed}))
        ratios = self.directory / "ratios.csv"
        self.assertEqual(self.table("--csv", ratios, *map(self.directory.joinpath, files)).returncode, 0)
        with ratios.open(newline="") as file:
            return [tuple(row.values())[1:8] for row in csv.DictReader(file)]

    def test_takes_medians_and_divides_the_peer_by_mub(self):
        rows = self.rows(
            run("hit/std::map/10", 1, 300), run("hit/mub/10", 0, 100), run("hit/mub/10", 0, 900),
            run("hit/mub/10", 0, 200), run("hit/mub_inline/10", 2, 150), run("hit/mub/20", 0, 50),
            run("hit/mub/10_mean", 0, 1, run_type="aggregate"), lto_runs=[run("hit/mub_lto/10", 0, 100)])
        self.assertEqual(rows, [
            ("hit", "10", "std::map", "ns", "200", "300", "1.50"),
            ("hit (inline)", "10", "std::map", "ns", "150", "300", "2.00"),
            ("hit (LTO)", "10", "std::map", "ns", "100", "300", "3.00")])

    def test_reads_items_wall_time_and_memory(self):
        rows = self.rows(
            run("fill/mub/10/iterations:3", 0, 1, items_per_second=1e8, bytes_per_entry=20),
            run("fill/glib/10/iterations:3", 1, 1, items_per_second=1e7, bytes_per_entry=30),
            run("load/mub/10/manual_time", 2, 1), run("load/glib/10/manual_time", 3, 1, real_time=14),
            run("seek/mub/10", 4, 3000), run("seek/glib/10", 5, 1))
        self.assertEqual(rows, [
            ("fill", "10", "glib", "ns", "10", "100", "10.00"),
            ("fill", "10", "glib", "bytes", "20", "30", "1.50"),
            ("load", "10", "glib", "ns", "7e+03", "1.4e+04", "2.00"),
            ("seek", "10", "glib", "ns", "3e+03", "1", "0.00033")])

    def test_rejects_names_without_a_counterpart(self):
        names = self.directory / "hash.list"
        names.write_text("hit/mub/10\nhit/std::map/10\n")
        self.assertEqual(self.table("--names", names).returncode, 0)
        for faulty in ("hit", "hit/std::map/20", "hit/mub/10"):
            names.write_text(f"hit/mub/10\n{faulty}\n")
            self.assertEqual(self.table("--names", names).returncode, 1, faulty)


if __name__ == "__main__":
    unittest.main()
