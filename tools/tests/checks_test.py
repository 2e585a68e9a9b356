"""The checks find faults: each test plants one in a small library.

    checks_test.py TOOLS_DIR
"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(sys.argv.pop(1)).resolve()
CC = os.environ.get("CC", "cc")

HEADER = """
#define MUB_API __attribute__((visibility("default")))
/** One. */
MUB_API int mub_one(int x);

/**
 * Two.
 */
MUB_API int mub_two(
    int x);

/** An object. */
extern MUB_API const int MUB_TABLE[2];
"""
SOURCE = """
#include "mub_a.h"
const int MUB_TABLE[2] = {1, 2};
int mub_one(int x) { return x; }
int mub_two(int x) { return x + 1; }
"""
VERSION = """
#define MUB_VERSION_MAJOR 1
#define MUB_VERSION_MINOR 0
#define MUB_VERSION_PATCH 2
#define MUB_VERSION "1.0.2"
"""
MAP = "MUB_1.0 {\n  global:\n    MUB_TABLE;\n    mub_one;\n    mub_two;\n  local:\n    *;\n};\n"


class Tree(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(directory.name)
        self.write("include/mub.h", '#include "mub_a.h"\n#include "mub_base.h"\n')
        self.write("include/mub_base.h", VERSION)
        self.write("CMakeLists.txt", "project(mub VERSION 1.0.2 LANGUAGES C)\n")
        self.write("debian/changelog", "libmub (1.0.2-1) unstable; urgency=medium\n")
        self.write("include/mub_a.h", HEADER)
        self.write("src/mub.map", MAP)

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text)

    def built(self, source=SOURCE, flags=("-Wl,-Bsymbolic-functions",), soname="libmub.so.1"):
        self.write("src/a.c", source)
        library = self.root / "libmub.so"
        command = [CC, "-O1", "-shared", "-fPIC", f"-I{self.root}/include", self.root / "src/a.c", "-o", library]
        command += [f"-Wl,--version-script={self.root}/src/mub.map", f"-Wl,-soname,{soname}", *flags]
        subprocess.run(command, check=True)
        return library

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


INLINE = """/** mub_one(), mub_two(). */
#define mub_two(...) mub_inline_one(__VA_ARGS__)
#define mub_three(...) mub_inline_three(__VA_ARGS__)
"""
FAULTY_FILES = {  # the claim: the changed files, and what is reported
    "a declaration without a documentation comment": (
        {"include/mub_a.h": HEADER.replace("/** One", "/* One").replace("MUB_API int mub_two", "int a;\nMUB_API int mub_two")},
        "a.h:4: mub_one: no /**", "a.h:10: mub_two: no /**"),
    "a header that mub.h does not include": ({"include/mub_b.h": ""}, "include/mub_b.h: not included by mub.h"),
    "inline names that are not listed, not in the macros, of another function, or not exported": (
        {"include/mub_inline.h": INLINE},
        "mub_three: in mub_inline.h's macros but not in its list", "mub_one: in its list but not in mub_inline.h's macros",
        "mub_two: calls another function", "mub_three: not exported"),
    "versions that differ": (
        {"CMakeLists.txt": "project(mub VERSION 1.0.1 LANGUAGES C)\n", "debian/changelog": "libmub (1.2.0-1) unstable; x\n"},
        "CMakeLists.txt: states version 1.0.1", "debian/changelog: states version 1.2.0"),
    "C++ headers that are not included or mention unknown names": (
        {"include/mub.hpp": '#include "mub_a.hpp"\n', "include/mub_a.hpp": "/* one: as mub_one and mub_won. */\n",
         "include/mub_b.hpp": ""},
        "include/mub_a.hpp:1: mub_won: not in the C headers", "include/mub_b.hpp: not included by mub.hpp"),
    "records without a layout, a printer or a C++ type": (
        {"include/mub_a.h": HEADER.replace("mub_two(", "mub_one_term(") + "typedef struct mub_one {\n  int a;\n} mub_one;\n",
         "src/mub.map": MAP.replace("mub_two", "mub_one_term")},
        "mub_one: no row", "mub_one: not in gdb", "mub_one: no C++ type"),
}
CALLING = SOURCE.replace("\nconst", "\nint puts(const char *);\nint mub_elsewhere(int);\nconst").replace(
    "return x;", 'return puts("one") + mub_elsewhere(x);')
FAULTY_LIBRARIES = {  # the claim: the map, the source and how it is linked, and what is reported
    "a name missing from the map and the library": (
        MAP.replace("    mub_two;\n", ""), SOURCE, {},
        "mub_two: in the headers but not in src/mub.map", "src/mub.map: not up to date", "mub_two: in the headers but not in /"),
    "an undeclared export": (
        MAP.replace("    mub_two;\n", "    mub_three;\n    mub_two;\n"), SOURCE + "int mub_three(void) { return 3; }\n", {},
        "mub_three: in src/mub.map but not in the headers", "src/mub.map: not up to date", "but not in the headers\n"),
    "a wrong SONAME": (MAP, SOURCE, {"soname": "libmub.so.2"}, "SONAME"),
    "own calls through the linker": (
        MAP, SOURCE.replace("return x + 1", "return mub_one(x) + 1"), {"flags": ("-fno-inline", "-fsemantic-interposition")},
        "mub_one: the library refers to its own symbol"),
    "writable data": (
        MAP, SOURCE.replace("\nconst", "\nstatic int calls;\nconst").replace("return x;", "return x + ++calls;"), {},
        "calls: writable data in .bss"),
    "libraries and functions that are not allowed": (
        MAP, CALLING, {"flags": ("-Wl,--no-as-needed", "-lm")},
        "libm.so.6: needed in addition to libc", "puts: called", "mub_elsewhere: undefined, and not from libc"),
    "allocators other than malloc": (
        MAP, "#include <stdlib.h>\n" + SOURCE.replace(
            "return x;", "char *volatile block = realloc(calloc(1, 2), (size_t)x); return block != 0;"), {},
        "calloc: called, but", "realloc: called, but"),
}


class CheckApi(Tree):
    def test_accepts_a_clean_library(self):
        self.assert_clean(self.check("check_api", self.built()))
        self.assert_clean(self.check("check_api", "--instrumented", self.built(CALLING, flags=("-Wl,--no-as-needed", "-lm"))))

    def test_reports_faulty_files(self):
        for claim, (files, *expected) in FAULTY_FILES.items():
            with self.subTest(claim):
                self.setUp()  # a tree without faults
                for path, text in files.items():
                    self.write(path, text)
                self.assert_reports(self.check("check_api"), *expected)

    def test_reports_faulty_libraries(self):
        for claim, (names, source, linking, *expected) in FAULTY_LIBRARIES.items():
            with self.subTest(claim):
                self.write("src/mub.map", names)
                self.assert_reports(self.check("check_api", self.built(source, **linking)), *expected)

    def test_keeps_released_names_in_their_version(self):
        self.write("include/mub_base.h", VERSION.replace("MINOR 0", "MINOR 1").replace("1.0.2", "1.1.2"))
        self.write("CMakeLists.txt", "project(mub VERSION 1.1.2 LANGUAGES C)\n")
        self.write("debian/changelog", "libmub (1.1.2-1) unstable; urgency=medium\n")
        self.assert_clean(self.check("check_api", self.built()))
        added = HEADER + "/** Three. */\nMUB_API int mub_three(void);\n"
        both = MAP + "MUB_1.1 {\n  global:\n    mub_three;\n} MUB_1.0;\n"
        source = SOURCE + "int mub_three(void) { return 3; }\n"
        self.write("include/mub_a.h", added.replace("MUB_API int mub_two", "int mub_two"))
        self.write("src/mub.map", both)
        self.assert_reports(
            self.check("check_api", self.built(source)),
            "mub_two: in src/mub.map but not in the headers", "but not in the headers\n")
        self.write("include/mub_a.h", added)
        self.assert_clean(self.check("check_api", self.built(source)))
        self.write("src/mub.map", MAP.replace("    mub_two", "    mub_three;\n    mub_two"))
        library = self.built(source)
        self.write("src/mub.map", both)
        self.assert_reports(self.check("check_api", library), "mub_three@@MUB_1.0: exported, but not in MUB_1.1")


DOCUMENTED = """/**
 * @defgroup a mub_a: a module
 *
 * A module.
 *
 * | operation | present  | absent | out of memory |
 * | --------- | -------- | ------ | ------------- |
 * | `_get`    | the name | NULL   |               |
 *
 * @{
 */
#include "mub_base.h"
/** Exported. */
#define MUB_API __attribute__((visibility("default")))

/** A record. */
typedef struct mub_a {
  int count; /**< how many */
} mub_a;

/**
 * Called with each.
 *
 * @param[in] x  a number
 * @return anything
 */
typedef int (*mub_a_fn)(int x);

/**
 * Looks a name up.
 *
 * @param[in] a    the record
 * @param[in] key  what to look for
 * @return the name
 * @failure NULL if there is none
 * @owner stays the record's
 */
MUB_API char *mub_a_get(const mub_a *a, int key);

/**
 * Calls a function for some words.
 *
 * @param[in,out] a     the record
 * @param[in] words     the words
 * @param[in] count     how many there are
 * @param[in] each      called with each; NULL: nothing happens
 * @failure nothing happens if memory runs out
 * @invalidates nothing
 * @bounds words[count]
 * @nullable each
 * @level low
 */
MUB_API void mub_a_walk(mub_a *a, const int *words, int count, mub_a_fn each);

/** @} */
"""
ALLOCATING = """
#include <stdlib.h>
#include "mub_a.h"
static char *fresh(int size) { return malloc((size_t)size); }
char *mub_a_get(const mub_a *a, int key) { return a->count > key ? "a" : 0; }
void mub_a_walk(mub_a *a, const int *words, int count, mub_a_fn each) {
  char *volatile block = fresh(count);
  a->count = each(words[0]) + (block != 0);
}
"""


@unittest.skipUnless(shutil.which("doxygen"), "needs doxygen")
class CheckApiDocs(Tree):
    def setUp(self):
        super().setUp()
        self.write("include/mub_base.h", "")
        self.write("src/mub.map", "MUB_1.0 {\n  global:\n    mub_a_get;\n    mub_a_walk;\n  local:\n    *;\n};\n")

    def assert_faults(self, changes, *arguments):
        """Each change of the header causes exactly the errors listed with it."""
        for old, new, *faults in changes:
            self.assertIn(old, DOCUMENTED)
            self.write("include/mub_a.h", DOCUMENTED.replace(old, new))
            self.assert_reports(self.check("api_export.py", "check", *arguments), *faults)

    def test_accepts_a_documented_library(self):
        self.write("include/mub_a.h", DOCUMENTED)
        self.assert_clean(self.check("api_export.py", "check"))
        self.assert_clean(self.check("api_export.py", "check", "--library", self.built(ALLOCATING)))

    def test_reports_parameters_and_results_that_do_not_fit_the_declaration(self):
        self.assert_faults([
            (" * @param[in] key  what to look for\n", "", "parameter of mub_a_get", "parameter 'key'"),
            ("@param[in] key  what", "@param[out] key  what", "mub_a_get: @param key: out, but not a pointer"),
            ("@param[in] words ", "@param[out] words ", "mub_a_walk: @param words: out, but const"),
            (" * @return the name\n", "", "mub_a_get: @return is missing"),
            (" * @return anything\n", "", "mub_a_fn: @return is missing"),
            (" * @param[in] x  a number\n", "", "mub_a_fn: no @param x")])

    def test_reports_tags_that_are_unknown_missing_or_wrong(self):
        self.assert_faults([
            ("@failure NULL", "@falure NULL", "unknown command '@falure'"),
            ("@param[in] key  what", "@param[in] kay  what", "argument 'kay' of command @param is not found",
             "parameter of mub_a_get", "parameter 'key'"),
            ("NULL if there is none", "when there is none", "@failure when there is none: must begin with a value"),
            ("NULL if there is none", "0 if there is none", "@failure 0: not a value of char *"),
            (" * @owner stays the record's\n", "", "mub_a_get: returns a pointer, but has no @owner"),
            (" * @invalidates nothing\n", "", "mub_a_walk: changes a record, but has no @invalidates"),
            ("words[count]", "words", "@bounds words: not of the form NAME[LENGTH]"),
            ("words[count]", "count[words]", "@bounds count: no pointer", "@bounds count: words is not a length"),
            ("@nullable each", "@nullable count", "@nullable count: no pointer parameter of that name"),
            ("@level low", "@level lower", "@level lower: not one of low")])

    def test_reports_names_without_documentation(self):
        self.assert_faults([
            (" /**< how many */", "", "Member count (variable) of struct mub_a is not documented"),
            ("/** A record. */\n", "", "Compound mub_a is not documented")])

    def test_reports_allocations_whose_failure_is_not_documented(self):
        self.write("include/mub_a.h", DOCUMENTED)
        library = self.built(ALLOCATING)
        without = (" * @failure nothing happens if memory runs out\n", "")
        self.assert_faults([(*without, "mub_a_walk: may allocate, but has no @failure")], "--library", library)
        subprocess.run(["strip", library], check=True)
        self.assert_faults([("", "", "is stripped")], "--library", library)


@unittest.skipUnless(shutil.which("clang"), "needs clang")
class CheckHeaders(Tree):
    def setUp(self):
        super().setUp()
        for path in ("tools/check_headers", "docs/interface.doxy"):
            self.write(path, (TOOLS.parent / path).read_text())
        self.write("include/mub.hpp", '#include "mub.h"\n')
        self.write("include/mub_inline.h", '#include "mub.h"\n')
        self.write("include/mub_base.h", VERSION + "typedef int mub_any;\n")  # C does not allow an empty translation unit

    def check_headers(self, header):
        self.write("include/mub_a.h", "#pragma once\n" + header)
        result = subprocess.run(["bash", self.root / "tools/check_headers", "clang"], capture_output=True, text=True)
        return result.returncode, result.stderr

    def test_reports_the_warnings_of_clang(self):
        self.assertEqual(self.check_headers(DOCUMENTED), (0, ""))
        for old, new, said in ((" int key);", " int key", "expected"), ("@failure NULL", "@falure NULL", "@falure"),
                               ("@param[in] key", "@param[in] kay", "parameter 'kay' not found")):
            code, text = self.check_headers(DOCUMENTED.replace(old, new))
            self.assertEqual(code, 1)
            self.assertIn(said, text)


class CheckLayers(Tree):
    def setUp(self):
        super().setUp()
        self.write("src/base/low.h", "#include <cstring>\n")
        self.write("src/hash/high.h", '#include "base/low.h"\n#include "mub_a.h"\n')

    def test_accepts_downward_includes(self):
        self.assert_clean(self.check("check_layers"))

    def test_reports_includes_that_are_not_allowed(self):
        self.write("src/base/x.cpp", '\n#include "hash/high.h"\n')
        self.write("src/text/x.cpp", '#include "../hash/high.h"\n#include <vector>\n#include "high.h"\n')
        self.write("include/mub_b.h", '#include "base/low.h"\n#include <string>\n')
        self.write("include/mub_b.hpp", "#include <string_view>\n#include <vector>\n")
        self.write("src/text/y.h", '#include "mub_b.hpp"\n')
        self.write("include/mub_c.h", '#include "mub_b.hpp"\n')
        self.assert_reports(
            self.check("check_layers"),
            "include/mub_b.hpp:2: includes vector",
            "include/mub_c.h:1: includes mub_b.hpp",
            "src/text/y.h:1: includes mub_b.hpp",
            "src/base/x.cpp:2: includes hash/high.h: base may not include hash",
            "src/text/x.cpp:1: includes ../hash/high.h",
            "src/text/x.cpp:2: includes vector",
            "src/text/x.cpp:3: includes high.h",
            "include/mub_b.h:1: includes base/low.h",
            "include/mub_b.h:2: includes string")

    def test_reports_a_tree_without_includes(self):
        for path in ("include/mub.h", "src/base/low.h", "src/hash/high.h"):
            (self.root / path).unlink()
        self.assert_reports(self.check("check_layers"), "no #include found")


@unittest.skipUnless(shutil.which("abidiff"), "needs abigail-tools")
class CheckAbi(Tree):
    SOURCE = """
struct mub_r { int a; int *b; };
typedef int (*mub_f)(int);
const int MUB_TABLE[2] = {1, 2};
int mub_two(int x) { return x + 1; }
int mub_one(mub_f f, struct mub_r *r) { return f(1) + mub_two(*r->b); }
"""
    CHANGES = (  # each with the message that it causes
        ("int a; int *b;", "int *b; int a;", "offset changed from 0 to 64"),
        ("int a;", "int c;", "name of 'mub_r::a' changed"),
        ("mub_two(int x)", "mub_two(unsigned x)", "parameter 1 of type 'int' changed"),
        ("(*mub_f)(int)", "(*mub_f)(long)", "parameter 1 of type 'int' changed"),
        ("int mub_two", "static int mub_two", "1 Removed"),
        ("MUB_TABLE[2]", "MUB_TABLE[3]", "size of symbol changed"),
    )

    def setUp(self):
        super().setUp()
        for tool in ("lib.sh", "abi.sh", "check_abi", "update_abi"):
            self.write(f"tools/{tool}", (TOOLS / tool).read_text())
        (self.root / "abi").mkdir()
        subprocess.run(["bash", self.root / "tools/update_abi", self.built(self.SOURCE)], check=True)

    def built(self, source, *flags):
        self.write("a.c", source)
        library = self.root / "libmub.so"
        subprocess.run([CC, "-shared", "-fPIC", "-g", *flags, self.root / "a.c", "-o", library], check=True)
        return library

    def check_abi(self, source, *flags):
        command = ["bash", self.root / "tools/check_abi", self.built(source, *flags)]
        return subprocess.run(command, capture_output=True, text=True)

    def test_accepts_only_additions(self):
        for source in (self.SOURCE, self.SOURCE + "int mub_three(void) { return 3; }\n"):
            result = self.check_abi(source)
            self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        for before, after, said in self.CHANGES:
            result = self.check_abi(self.SOURCE.replace(before, after))
            self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
            self.assertIn(said, result.stdout)

    def test_rejects_a_library_without_debug_information(self):
        result = self.check_abi(self.SOURCE, "-g0")
        self.assertEqual((result.returncode, result.stdout), (2, ""))
        self.assertIn("no debug information", result.stderr)


if __name__ == "__main__":
    unittest.main()
