"""The checks report what they are there for: each test plants one fault in a small library of its own.

    checks_test.py TOOLS_DIR
"""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(sys.argv.pop(1)).resolve()
CC = os.environ.get("CC", "cc")

HEADER = """
#define MUB_API __attribute__((visibility("default")))
/* mub_one: one. */
MUB_API int mub_one(int x);

/* mub_two: two
 * and more. */
MUB_API int mub_two(
    int x);

/* MUB_TABLE: an object. */
extern MUB_API const int MUB_TABLE[2];
"""
SOURCE = """
#include "mub_a.h"
const int MUB_TABLE[2] = {1, 2};
int mub_one(int x) { return x; }
int mub_two(int x) { return x + 1; }
"""
MAP = "MUB_1.0 {\n  global:\n    MUB_TABLE;\n    mub_one;\n    mub_two;\n  local:\n    *;\n};\n"


class Tree(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(directory.name)
        self.write("include/mub.h", '#include "mub_a.h"\n')
        self.write("include/mub_a.h", HEADER)
        self.write("src/mub.map", MAP)

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text)

    def check(self, tool, *arguments):
        command = [sys.executable, TOOLS / tool, "--root", self.root, *arguments]
        return subprocess.run(command, capture_output=True, text=True)

    def assert_clean(self, result):
        self.assertEqual((result.returncode, result.stdout + result.stderr), (0, ""))

    def assert_reports(self, result, *expected):
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertEqual(len(result.stdout.splitlines()), len(expected), result.stdout)
        for text in expected:
            self.assertIn(text, result.stdout)


class CheckApi(Tree):
    def built(self, source=SOURCE, flags=("-Wl,-Bsymbolic-functions",), soname="libmub.so.1"):
        self.write("src/a.c", source)
        library = self.root / "libmub.so"
        command = [CC, "-O1", "-shared", "-fPIC", f"-I{self.root}/include", self.root / "src/a.c", "-o", library]
        command += [f"-Wl,--version-script={self.root}/src/mub.map", f"-Wl,-soname,{soname}", *flags]
        subprocess.run(command, check=True)
        return library

    def test_accepts_a_clean_library(self):
        self.assert_clean(self.check("check_api", self.built()))

    def test_reports_a_name_missing_from_the_map_and_the_library(self):
        self.write("src/mub.map", MAP.replace("    mub_two;\n", ""))
        self.assert_reports(
            self.check("check_api", self.built()),
            "mub_two: in the headers but not in src/mub.map", "not as tools/update_map writes it",
            "mub_two: in the headers but not in /")

    def test_reports_an_undeclared_export(self):
        self.write("src/mub.map", MAP.replace("    mub_two;\n", "    mub_three;\n    mub_two;\n"))
        self.assert_reports(
            self.check("check_api", self.built(SOURCE + "int mub_three(void) { return 3; }\n")),
            "mub_three: in src/mub.map but not in the headers", "not as tools/update_map writes it",
            "but not in the headers\n")

    def test_reports_comments_that_are_missing_or_name_something_else(self):
        header = HEADER.replace("mub_one: one", "mub_won: one")
        self.write("include/mub_a.h", header.replace("MUB_API int mub_two", "int a;\nMUB_API int mub_two"))
        self.assert_reports(self.check("check_api"), "a.h:4: no comment '/* mub_one:", "a.h:9: no comment '/* mub_two:")

    def test_reports_a_header_that_mub_h_leaves_out(self):
        self.write("include/mub_b.h", "")
        self.assert_reports(self.check("check_api"), "include/mub_b.h: not included by mub.h")

    def test_reports_cxx_headers_that_are_left_out_or_name_what_is_not_there(self):
        self.write("include/mub.hpp", '#include "mub_a.hpp"\n')
        self.write("include/mub_a.hpp", "/* one: as mub_one and mub_won. */\n")
        self.write("include/mub_b.hpp", "")
        self.assert_reports(
            self.check("check_api"),
            "include/mub_a.hpp:1: mub_won: not in the C headers", "include/mub_b.hpp: not included by mub.hpp")

    def test_reports_a_wrong_soname(self):
        self.assert_reports(self.check("check_api", self.built(soname="libmub.so.2")), "SONAME")

    def test_reports_own_calls_through_the_linker(self):
        source = SOURCE.replace("return x + 1", "return mub_one(x) + 1")
        library = self.built(source, flags=("-fno-inline", "-fsemantic-interposition"))
        self.assert_reports(self.check("check_api", library), "mub_one: the library reaches its own")

    def test_reports_writable_data(self):
        source = SOURCE.replace("\nconst", "\nstatic int calls;\nconst").replace("return x;", "return x + ++calls;")
        self.assert_reports(self.check("check_api", self.built(source)), "calls: writable data in .bss")

    def test_reports_libraries_and_functions_that_do_not_belong(self):
        source = SOURCE.replace("\nconst", "\nint puts(const char *);\nint mub_elsewhere(int);\nconst")
        source = source.replace("return x;", 'return puts("one") + mub_elsewhere(x);')
        library = self.built(source, flags=("-Wl,--no-as-needed", "-lm"))
        self.assert_reports(
            self.check("check_api", library),
            "libm.so.6: needed beside libc",
            "puts: called",
            "mub_elsewhere: undefined, and not libc's")
        self.assert_clean(self.check("check_api", "--instrumented", library))


class CheckLayers(Tree):
    def setUp(self):
        super().setUp()
        self.write("src/core/low.h", "#include <cstring>\n")
        self.write("src/hash/high.h", '#include "core/low.h"\n#include "mub_a.h"\n')

    def test_accepts_downward_includes(self):
        self.assert_clean(self.check("check_layers"))

    def test_reports_upward_sideways_and_foreign_includes(self):
        self.write("src/core/x.cpp", '\n#include "hash/high.h"\n')
        self.write("src/text/x.cpp", '#include "../hash/high.h"\n#include <vector>\n#include "high.h"\n')
        self.write("include/mub_b.h", '#include "core/low.h"\n#include <string>\n')
        self.write("include/mub_b.hpp", "#include <string_view>\n#include <vector>\n")
        self.write("src/text/y.h", '#include "mub_b.hpp"\n')
        self.write("include/mub_c.h", '#include "mub_b.hpp"\n')
        self.assert_reports(
            self.check("check_layers"),
            "include/mub_b.hpp:2: includes vector",
            "include/mub_c.h:1: includes mub_b.hpp",
            "src/text/y.h:1: includes mub_b.hpp",
            "src/core/x.cpp:2: includes hash/high.h: core may not include hash",
            "src/text/x.cpp:1: includes ../hash/high.h",
            "src/text/x.cpp:2: includes vector",
            "src/text/x.cpp:3: includes high.h",
            "include/mub_b.h:1: includes core/low.h",
            "include/mub_b.h:2: includes string")

    def test_reports_a_tree_without_includes(self):
        for path in ("include/mub.h", "src/core/low.h", "src/hash/high.h"):
            (self.root / path).unlink()
        self.assert_reports(self.check("check_layers"), "no include found")


if __name__ == "__main__":
    unittest.main()
