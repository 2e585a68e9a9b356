#!/usr/bin/env python3
"""Tests that README and the guides mention only what exists.

    guides_test.py ROOT
"""

import re
import sys
import unittest
from pathlib import Path

root = None  # set at the end

# A file, a CMake target, and a function that docs/compatibility.md imagines.
OTHER_NAMES = {"mub_gdb", "mub_static", "mub_hash_count_if"}


def table_rows(text, heading):
    """The rows of the first table after a heading, as lists of cells."""
    table = re.search(r"(^\|.*\n)+", text.split(f"\n{heading}\n", 1)[1], re.MULTILINE).group()
    return [[cell.strip() for cell in line.strip("|").split(" | ")] for line in table.splitlines()]


class Guides(unittest.TestCase):
    def test_names_of_the_interface_exist(self):
        known = OTHER_NAMES.copy()
        for header in (root / "include").iterdir():
            known |= {header.stem, *re.findall(r"\bmub_\w+", header.read_text())}
        guides = [root / "README.md", *(root / "docs").glob("*.md")]
        for guide in guides:
            used = set(re.findall(r"(?<![\w-])mub_\w*[a-z0-9]\b(?!_)", guide.read_text()))
            self.assertEqual(set(), used - known, guide.name)
        self.assertGreater(len(guides), 5)

    def test_the_compared_code_is_in_the_compared_programs(self):
        rows = table_rows((root / "docs/choosing.md").read_text(), "### The same program")
        programs = [(root / "examples/comparison" / name).read_text() for name in rows[0][1:]]
        quoted = 0
        for name, *cells in rows[2:]:
            self.assertEqual(len(programs), len(cells), name)
            for program, cell in zip(programs, cells):
                for code in re.findall(r"`([^`]+)`", cell):
                    self.assertIn(code, program, name)
                    quoted += 1
        self.assertGreater(quoted, 40)


if __name__ == "__main__":
    root = Path(sys.argv.pop()).resolve()
    unittest.main()
