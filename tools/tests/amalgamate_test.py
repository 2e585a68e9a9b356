"""The two files of tools/amalgamate have the interface of the library.

    amalgamate_test.py TOOLS_DIR LIBRARY
"""

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

LIBRARY = Path(sys.argv.pop()).resolve()
TOOLS = Path(sys.argv.pop()).resolve()
WARNINGS = ["-Wall", "-Wextra", "-Werror"]
PROGRAM = """\
#define MUB_INLINE_CALLS
#include "mub.h"
#ifndef mub_bits_find
#error mub_inline.h is missing
#endif

int main(void) {
  mub_hash words;
  mub_btreex order;
  mub_string text;
  mub_bits seen;
  mub_hash_init(&words, 1, 0);
  mub_btreex_init(&order, 1, 1, 0);
  mub_string_init(&text);
  mub_bits_init(&seen);
  for (int i = 9; i > 0; i--) {
    mub_string_format(&text, "word %d", i);
    mub_hash_insert(&words, text.data, text.length, CRC_TABLE[i]);
    mub_btreex_insert(&order, (uint64_t)i, mub_hash_get(&words, text.data, -1));
    mub_bits_insert(&seen, (uint32_t)i, 1);
  }
  const int right = mub_btreex_node_first(&order)->value == CRC_TABLE[1] && mub_bits_find(&seen, 9) != 0 &&
                    mub_bits_find(&seen, 10) == 0 && words.count == 9;
  mub_bits_term(&seen);
  mub_string_term(&text);
  mub_btreex_term(&order);
  mub_hash_term(&words);
  return right ? 0 : 1;
}
"""


def exports(library):
    listed = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    # Without A, the name of the version, and what is compiled of the C++ library if nothing is optimised.
    return sorted(name for name in re.findall(r" [B-Z] (\w+)", listed) if not re.match(r"_ZN?K?S", name))


class Amalgamate(unittest.TestCase):
    def test_makes_the_library_from_two_files(self):
        with tempfile.TemporaryDirectory() as name:
            directory = Path(name) / "made/by/it"

            def run(*command):
                subprocess.run(command, cwd=directory, check=True)

            subprocess.run([TOOLS / "amalgamate", directory], check=True)
            source = (directory / "mub.cpp").read_text()
            self.assertEqual(re.findall(r'#include "(.*)"', source), ["mub.h"])
            self.assertIn("MIT License", source)
            flags = re.search(r"^ +c\+\+ (.*) -c mub.cpp$", source, re.MULTILINE)[1].replace("-O2", "-O0").split()
            (directory / "program.c").write_text(PROGRAM)
            compilers = [pair for pair in (("gcc", "g++"), ("clang", "clang++")) if all(map(shutil.which, pair))]
            for c, cxx in compilers:
                run(cxx, *flags, *WARNINGS, "-fPIC", "-c", "mub.cpp", "-o", "mub.o")
                run(c, "-std=c11", *WARNINGS, "program.c", "mub.o", "-o", "program")
                run("./program")
                run(c, "-shared", "mub.o", "-o", "libmub.so")
                self.assertEqual(exports(directory / "libmub.so"), exports(LIBRARY))
            self.assertGreater(len(compilers), 0)


if __name__ == "__main__":
    unittest.main()
