"""tools/mutate changes only code, chooses by a seed, and finds what the tests of a tiny project miss.

    mutate_test.py TOOLS_DIR
"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(sys.argv.pop(1)).resolve()
sys.dont_write_bytecode = True
sys.path.insert(0, str(TOOLS))
try:
    import mutate
    import mutants
except ImportError as error:
    print(f"skipped: no python3-clang-14: {error}")
    sys.exit(77)

NOT_CODE = """
#define CHECK(x) ((x) > 0)
/* a < b; f(1, 2); */
enum { kFirst = 7 };
template <int N, int M = 3>
int held(int (&bytes)[8], const char *text = "1 < 2") {
  static_assert(N < 4);
  CHECK(N + 1);
  return bytes[N]; // ++i;
}
"""
CODE = """
void put(int, long);
template <class T>
void walk(T &t, int n) {
  for (int i = 0; i < n; ++i) {
    if (!t.next()) return;
    put(i, n - 2);
  }
  while (t
             .more())
    n += 3;
  return put(n, n ? 5 : n);
}
"""
CHANGES = {
    ("0", "1", "(-1)"), ("i < n", "!(i < n)", "true", "false"), ("<", "<=", ">"), ("++", "--"),
    ("!t.next()", "!(!t.next())", "true", "false"), ("!", ""), ("return", ""), ("put(i, n - 2)", ""),
    ("i, n - 2", "n - 2, i"), ("-", "+"), ("2", "0", "1", "3"), ("n += 3", ""), ("+=", "-="), ("3", "0", "1", "4", "2"),
    ("t\n             .more()", "!(t\n             .more())", "true", "false"), ("return put(n, n ? 5 : n)", ""),
    ("n, n ? 5 : n", "n ? 5 : n, n"), ("n", "!(n)", "true", "false"), ("5", "0", "1", "6", "4"),
}

PROJECT = {
    "CMakePresets.json": '{"version": 3, "configurePresets": ['
                         '{"name": "release", "binaryDir": "${sourceDir}/build/release"},'
                         '{"name": "dev", "binaryDir": "${sourceDir}/build/dev"}]}',
    "CMakeLists.txt": """cmake_minimum_required(VERSION 3.21)
project(tiny LANGUAGES CXX)
enable_testing()
add_library(mub_static STATIC src/bits/half.cpp)
set_target_properties(mub_static PROPERTIES OUTPUT_NAME mub)
add_subdirectory(tests)
""",
    "tests/CMakeLists.txt": """add_executable(bits_test bits_test.cpp)
target_link_libraries(bits_test PRIVATE mub_static)
add_test(NAME bits COMMAND bits_test)
""",
    "tests/bits_test.cpp": "int half(int); int main() { return half(8) == 4 && half(3) == 1 ? 0 : 1; }\n",
    "src/bits/half.cpp": "int half(int n) {\n  if (n <= 0) return 0;\n  return n >> 1;\n}\n",
    "tools/mutants.txt": "# none\n",
}


class Places(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(directory.name)

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text)

    def places(self, text):
        self.write("src/bits/a.h", text)
        return mutants.places_of(self.root, "src/bits/a.h")

    def test_are_only_in_code(self):
        self.assertEqual(self.places(NOT_CODE), [])

    def test_are_everything_that_can_be_changed(self):
        found = {(CODE[place.start:place.end], *place.changes) for place in self.places(CODE)}
        self.assertEqual(found, CHANGES)

    def test_are_printed_as_whole_lines(self):
        place = next(place for place in self.places(CODE) if place.changes[0].startswith("!(t\n"))
        self.assertEqual(mutants.difference(CODE.encode(), place, "true"),
                         (9, ("while (t", ".more())"), ("while (true)",)))

    def test_are_chosen_by_the_seed(self):
        self.places(CODE)
        self.assertEqual(mutate.shuffled_mutants(self.root, "bits", 1), mutate.shuffled_mutants(self.root, "bits", 1))
        self.assertNotEqual(mutate.shuffled_mutants(self.root, "bits", 1), mutate.shuffled_mutants(self.root, "bits", 2))
        for mutant in mutate.shuffled_mutants(self.root, "bits", 1):
            self.assertNotEqual(mutants.changed_source(CODE.encode(), *mutant), CODE.encode())

    def test_survive_if_no_test_detects_them(self):
        for path, text in PROJECT.items():
            self.write(path, text)
        found = self.mutate()
        entries = found.stdout.split("\n\n")[1:-1]
        self.assertEqual(found.returncode, 1, found.stdout + found.stderr)
        # The test only has numbers above 2, so it cannot detect another bound below.
        self.assertTrue(entries)
        for entry in entries:
            self.assertTrue(entry.startswith("src/bits/half.cpp:2\n- if (n <= 0) return 0;\n+ "), entry)

        reasons = "\n\n".join(entry.replace(".cpp:2", ".cpp") + "\nno test has it" for entry in entries)
        stale = "src/bits/half.cpp\n- gone\n+ came\nno longer"
        self.write("tools/mutants.txt", f"# all\n{reasons}\n\n{stale}\n")
        found = self.mutate()
        self.assertEqual(found.returncode, 0, found.stdout + found.stderr)
        self.assertIn("stale in tools/mutants.txt: no such change is made:\nsrc/bits/half.cpp\n- gone", found.stdout)
        self.assertRegex(found.stdout, r"\ncaught (\d+) of \1 \(100 %\)\n$")

    def mutate(self):
        command = [sys.executable, TOOLS / "mutate.py", "--root", self.root, "bits", "60", "1"]
        return subprocess.run(command, capture_output=True, text=True)


if __name__ == "__main__":
    unittest.main()
