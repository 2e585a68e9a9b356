"""Runs GDB on a program that fills every container, and compares the output.

usage: gdb_test.py [--instrumented] PROGRAM SHARED_LIBRARY BUILD_DIRECTORY
       exits with 77 if GDB may not trace programs here and these leave no core file
"""

import os
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import unittest
from collections import Counter
from xml.etree import ElementTree

INSTRUMENTED = sys.argv[1] == "--instrumented" and bool(sys.argv.pop(1))
PROGRAM, LIBRARY, BUILD = map(os.path.abspath, (sys.argv.pop(1) for _ in range(3)))
SCRIPT = os.path.join(os.path.dirname(__file__), "..", "mub_gdb.py")
SVG = "{http://www.w3.org/2000/svg}"
SKIPPED = 77
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8", "ASAN_OPTIONS": "detect_leaks=0"}

FILLED = {
    "filled.stream": r'mub_stream of 4 bytes, capacity 8 = {data = "ab\000c"}',
    "filled.string": r'"said \"hello\"\n"',
    "filled.stringx": '"value"',
    "filled.character_view": '"name"',
    "filled.wchar": '"g\u00fct"',
    "filled.pool": "mub_pool with 17 live blocks of 24 bytes, 3 free, in 2 chunks of 16",
    "filled.array": r'mub_array with 5 keys = {["pear"] = 0, ["fig"] = 1, [""] = 2, ["plum \"x\""] = 3, ["m' "\u00fc" r'sli"] = 4}',
    "filled.arrayd": "mub_arrayd with 5 keys = {[4294967295] = 0, [4294967294] = 1, [4294967293] = 2, [4294967292] = 3, "
                     "[4294967291] = 4}",
    "filled.arrayx": "mub_arrayx with 5 keys = {[18446744073709551615] = 0, [18446744073709551614] = 1, "
                     "[18446744073709551613] = 2, [18446744073709551612] = 3, [18446744073709551611] = 4}",
    "filled.arrayt": "mub_arrayt with 6 words = {0, 1, 4, 9, 16, 25}",
    "filled.arrays": "mub_arrays with 6 items = {0, 10, 20, 30, 40, 0xADDRESS <outside>}",
    "filled.btree": r'mub_btree with 5 keys on 1 level = {[""] = 2, ["fig"] = 1, ["m' "\u00fc" r'sli"] = 4, ["pear"] = 0, '
                    r'["plum \"x\""] = 3}',
    "filled.btreed": "mub_btreed with 5 keys on 1 level = {[-2] = 4, [-1] = 3, [0] = 2, [1] = 1, [2] = 0}",
    "filled.btreex": "mub_btreex with 5 keys on 1 level = {[-2.5] = 0, [-1.5] = 1, [-0.5] = 2, [0.5] = 3, [1.5] = 4}",
    "cursor": "mub_btreed_cursor at 1 in a leaf of 5 records = {[-1] = 3}",
    "cursor_at_end": "mub_btree_cursor after the last record",
    "cursor_without_leaf": "mub_btreex_cursor of an empty tree",
    "damaged_cursor": "mub_btreex_cursor <damaged or not initialised: index 6 in a leaf of 5>",
    "filled.list": r'mub_list with 5 keys = {["pear"] = 0, ["fig"] = 1, [""] = 2, ["plum \"x\""] = 3, ["m' "\u00fc"
                   r'sli"] = 4}',
    "filled.lists": "mub_lists with 5 values = {0, 1, 2, 3, 4}",
    "filled.listx": f"mub_listx with 35 values = {{{', '.join(map(str, range(35)))}}}",
    "*filled.listx.record_.tail": "mub_listx_block with 3 values, prev 0xADDRESS, next 0x0 = {32, 33, 34}",
    "filled.tree": "mub_tree with 6 links = {1 = 10, 2 = 20, 2.1 = 21, 2.2 = 22, 2.2.1 = 221, 3 = 30}",
    "filled.bitree": "mub_bitree with 5 links = {left = 30, left.right = 40, root = 50, equal = 51, equal.equal = 52, "
                     "right = 70}",
    "filled.bits": "mub_bits of 1024 bytes, 3 bits set = {0, 9, 8191}",
    "*filled.list.record_.head->next": "{prev = 0xADDRESS, next = 0xADDRESS, key_offset = 4, key_length = 3, value = 1}",
    "articles": 'mub_hash with 1 key in 4 buckets = {["pear"] = {price = 7, name = "Conference"}}',
    "weights": "mub_btreed with 1 key on 1 level = {[2] = 0.5}",
    "view": '"value"',
}

# The entries of hash tables, whose order depends on the buckets.
FRUITS = {'""': 2, '"pear"': 0, r'"plum \"x\""': 3, '"fig"': 1, '"m\u00fcsli"': 4}
TABLES = {
    "filled.hash": ("mub_hash", FRUITS),
    "*hash_pointer": ("mub_hash", FRUITS),
    "*object_pointer": ("mub_hash", FRUITS),
    "filled.hashd": ("mub_hashd", {str(2 * i): i for i in range(5)}),
    "filled.hashx": ("mub_hashx", {str(i << 40): i for i in range(5)}),
    "filled.hasht": ("mub_hasht", {"{%d, 10, 11, 12}" % i: i for i in range(5)}),
}

EMPTY = {
    "stream": "mub_stream of 0 bytes, capacity 0", "string": '""', "stringx": '""', "character_view": '""', "wchar": '""',
    "array": "mub_array with 0 keys", "arrayd": "mub_arrayd with 0 keys", "arrayx": "mub_arrayx with 0 keys",
    "arrayt": "mub_arrayt with 0 words", "arrays": "mub_arrays with 0 items",
    "hash": "mub_hash with 0 keys in 0 buckets", "hashd": "mub_hashd with 0 keys in 0 buckets",
    "hashx": "mub_hashx with 0 keys in 0 buckets", "hasht": "mub_hasht with 0 keys in 0 buckets",
    "btree": "mub_btree with 0 keys", "btreed": "mub_btreed with 0 keys", "btreex": "mub_btreex with 0 keys",
    "list": "mub_list with 0 keys", "lists": "mub_lists with 0 values", "listx": "mub_listx with 0 values",
    "tree": "mub_tree with 0 links", "bitree": "mub_bitree with 0 links = {root = 0}",
    "bits": "mub_bits of 0 bytes, 0 bits set",
}

# The end of the output for the containers that are damaged at the last stop.
DAMAGED = {
    "array": "[<damaged>] = <the key at 15, 6 bytes, is outside the key stream>}",
    "hash": "[<damaged>] = <count is 6, but 5 are linked>}",
    "hashd": "[2] = 1, [<damaged>] = <0xADDRESS is linked twice>}",
    "btreed": "= {[-2] = 4, [<damaged>] = <invalid address 0x10>}",
    "list": '["pear"] = 0, [<no key>] = 1, [""] = 2, ["plum \\"x\\""] = 3, ["m\u00fcsli"] = 4, '
            "[<damaged>] = <the key at 1000, 3 bytes, is outside the key stream>}",
    "lists": "= {0, 1, 2, 3, 4, <prev of 0xADDRESS is 0xADDRESS, not 0xADDRESS>}",
    "listx": "= {<the block at 0xADDRESS has a count of 1048576>}",
    "tree": "3 = 30, damaged = <prev of 0xADDRESS is 0xADDRESS, not 0xADDRESS>, damaged = <0xADDRESS is linked twice>}",
    "bitree": "= {left = 30, damaged = <0xADDRESS is linked twice>}",
}

LAYOUTS_AGREE = """python
def stored(record, name):
    if name.startswith("children_"): return record["children"][name[9:]]
    return record["key"][int(name[4:])] if name.startswith("key_") and name[4:].isdigit() else record[name]
for name, layout in LAYOUTS.items():
    record = gdb.parse_and_eval(f"*({name} *)pattern")
    read = layout.read(int(record.address))
    assert layout.size + (256 if name == "mub_listx_block" else 0) == record.type.sizeof, name
    assert all(getattr(read, field) == int(stored(record, field)) for field in layout.names), name
print(len(LAYOUTS), "agree")
end"""


def limit_files(megabytes=256):
    """Limits file sizes, so that a core file that is too large causes an error and not a full disk."""
    resource.setrlimit(resource.RLIMIT_FSIZE, (megabytes << 20, megabytes << 20))


def gdb(*arguments, mode="-batch", requests=b""):
    """Runs GDB and returns its output."""
    command = ["gdb", "-nx", mode, "-iex", "set debuginfod enabled off", *arguments]
    result = subprocess.run(command, input=requests, capture_output=True, env=ENVIRONMENT, check=False, timeout=120,
                            preexec_fn=limit_files)
    return (result.stdout + result.stderr).decode()


def answers(commands, *arguments):
    """The outputs of the commands, which are separated by marks."""
    mark = "@@@@"
    with tempfile.NamedTemporaryFile("w", suffix=".gdb") as script:
        # A failing command would end the script, so errors are caught and printed.
        lines = [f"source {SCRIPT}"]
        for command in commands:
            lines.append(f"echo {mark}")
            one_line = command.startswith("python\n") or command in ("run", "continue")
            lines.append(command if one_line else f"python\ntry: gdb.execute({command!r})\n"
                         "except gdb.error as error: print('error:', error)\nend")
        lines.append(f"echo {mark}")  # the rest is standard error
        script.write("\n".join(lines) + "\n")
        script.flush()
        output = gdb("-x", script.name, *arguments)
    parts = [part.strip() for part in output.split(mark)]
    assert len(parts) == len(commands) + 2, output
    return parts[1:-1]


def without_addresses(text):
    return re.sub(r"0x[0-9a-f]{6,}", "0xADDRESS", re.sub(r"^\$\d+ = ", "", text))


def stops(count):
    """The commands that run the program to its stop number `count`."""
    return ["break stop", "run"] + ["continue"] * (count - 1)


def look(commands, stop=None, core=None):
    before = stops(stop) if stop else []
    target = [PROGRAM] + ([core] if core else [])
    return [without_addresses(answer) for answer in answers(before + commands, *target)[len(before):]]


def core_of_first_stop(directory):
    """The core file that GDB generates at the first stop."""
    core = os.path.join(directory, "core")
    answers(["break stop", "run", f"generate-core-file {core}"], PROGRAM)
    return core


def core_of_itself(directory):
    """The core file of the aborted program, or None."""
    shell = ["sh", "-c", 'ulimit -c 500000; "$0" abort', PROGRAM]
    subprocess.run(shell, cwd=directory, env={**ENVIRONMENT, "ASAN_OPTIONS": "disable_coredump=0:detect_leaks=0"},
                   capture_output=True, check=False)
    cores = [name for name in os.listdir(directory) if name.startswith("core")]
    return os.path.join(directory, cores[0]) if cores else None


def may_trace():
    output = gdb("-ex", "break stop", "-ex", "run", PROGRAM)
    if "Breakpoint 1, stop" in output:
        return True
    if re.search("ptrace|Could not trace|Cannot.*trac", output):
        return False
    raise AssertionError("GDB does not reach the first stop: " + output)


class Contents(unittest.TestCase):
    """Tests for a core file. With sanitizers, a live program: a core file with their shadow memory fills the disk."""

    core = None  # set by main

    def look(self, commands):
        return look(commands, core=self.core) if self.core else look(commands, stop=1)

    def test_containers_print_their_content(self):
        shown = self.look(["print " + expression for expression in FILLED])
        self.assertEqual(dict(zip(FILLED, shown)), FILLED)

    def test_hash_tables_print_entries_in_the_order_of_buckets(self):
        for (name, entries), answer in zip(TABLES.values(), self.look(["print " + e for e in TABLES])):
            prefix = f"{name} with 5 keys in 4 buckets = {{"
            self.assertTrue(answer.startswith(prefix), answer)
            shown = re.findall(r"\[(.*?)\] = (\d+)", answer[len(prefix):])
            self.assertEqual(dict(shown), {key: str(value) for key, value in entries.items()})
            self.assertEqual(answer, prefix + ", ".join(f"[{key}] = {value}" for key, value in shown) + "}")
            if name in ("mub_hashd", "mub_hashx"):
                self.assertEqual(shown, sorted(shown, key=lambda entry: (int(entry[0]) % 4, entry[1])))

    def test_large_containers_are_truncated_and_intact(self):
        formatted, _, hash_keys, tree, chain, deep, *intact = self.look(
            ["print/x filled.arrayt", "set print elements 6", "print large_hash", "print large_btree", "print large_list",
             "print deep_tree"] +
            ["mub check " + name for name in ("large_hash", "large_btree", "large_list", "deep_tree", "filled.pool",
                                              "articles", "object_pointer")])
        self.assertRegex(hash_keys, r'^mub_hash with 3000 keys in 2048 buckets = \{(\["key 0\d"\.\.\.\] = \d+(, )?){3}\.\.\.\}$')
        self.assertEqual(tree, 'mub_btree with 3000 keys on 3 levels = {["key 00"...] = 0, ["key 00"...] = 1, '
                               '["key 00"...] = 2...}')
        self.assertEqual(chain, tree.replace("mub_btree", "mub_list").replace(" on 3 levels", ""))
        self.assertEqual(deep, "mub_tree with 3000 links = {1 = 1, 1.1 = 2, 1.1.1 = 3, 1.1.1.1 = 4, 1.1.1.1.1 = 5, "
                               "1.1.1.1.1.1 = 6...}")
        self.assertEqual(formatted, "mub_arrayt with 6 words = {0x0, 0x1, 0x4, 0x9, 0x10, 0x19}")
        for answer in intact:
            self.assertRegex(answer, ": intact$")

    def test_layouts_agree_with_the_compiler(self):
        self.assertEqual(self.look([LAYOUTS_AGREE]), ["18 agree"])


class Live(unittest.TestCase):
    def test_empty_records_are_printed(self):
        names = list(EMPTY)
        for stop, variable in (1, "initialised"), (2, "garbage"):  # which is filled with zeros
            shown = look([f"print {variable}.{name}" for name in names], stop)
            self.assertEqual(dict(zip(names, shown)), EMPTY)
            self.assertRegex(look([f"print {variable}.pool"], stop)[0], "^mub_pool with 0 live blocks of .* in 0 chunks of ")

    def test_uninitialised_records_are_reported(self):
        names = list(EMPTY) + ["pool"]
        for stop in 3, 4, 5:
            for name, answer in zip(names, look(["print garbage." + name for name in names], stop)):
                if (name, answer) != ("stringx", '""'):  # one with a negative length is empty
                    self.assertRegex(answer, r"^mub_\w+ <damaged or not initialised: .*>$")

    def test_damaged_links_are_reported(self):
        printed = look(["print filled." + name for name in DAMAGED], 6)
        checked = look(["mub check filled." + name for name in DAMAGED], 6)
        for name, content, errors in zip(DAMAGED, printed, checked):
            self.assertTrue(content.endswith(DAMAGED[name]), content)
            self.assertRegex(errors, r": \d+ errors?$")
        twice, stray = look(["mub check filled.pool", "mub check garbage.pool"], 6)
        self.assertRegex(twice, "^0xADDRESS is on the free stack 2 times\n.*: 1 error$")
        self.assertRegex(stray, "^0xADDRESS is on the free stack, but is not a block of the pool\n(.*\n)*"
                         "live_count is 15, but of 0 blocks 5 are free\n")

    @unittest.skipUnless(shutil.which("dot"), "needs Graphviz")
    def test_pictures_have_the_nodes_and_edges_of_the_containers(self):
        names = ["filled." + name for name in ("hash", "hashd", "hashx", "hasht", "btree", "btreed", "btreex", "list",
                                               "lists", "listx", "tree", "bitree", "pool")]
        names += ["large_hash", "large_btree", "large_list", "deep_tree"]
        self.drawn(names, 6)  # damaged containers can be drawn too
        pictures = self.drawn(names, 1)
        for name, nodes, edges in ("filled.hash", 6, 5), ("filled.hasht", 6, 5), ("filled.btree", 1, 0), \
                ("filled.list", 7, 6), ("filled.listx", 4, 3), ("filled.tree", 7, 6), ("filled.bitree", 6, 5), \
                ("filled.pool", 1, 0), ("large_btree", 1 + 2 + 2 * 8, 2 + 2 * 8), ("large_list", 26, 25):
            self.assertEqual(pictures[name][:2], (nodes, edges), name)
        for name in "hash", "btree", "list":
            self.assertLess({"pear", "fig", "m\u00fcsli"}, set(pictures["filled." + name][2]))
        self.assertIn("\u2026 2976 more", pictures["large_list"][2])
        blocks = Counter(re.sub(r"free [123]", "free", text) for text in pictures["filled.pool"][2])
        self.assertEqual([blocks[kind] for kind in ("live", "free", "unused")], [17, 3, 12])

    def drawn(self, names, stop):
        """The pictures of variables: (number of nodes, number of edges, texts) of the SVG that Graphviz draws."""
        with tempfile.TemporaryDirectory() as directory:
            self.assertEqual(set(look([f"mub dot {name} > {directory}/{name}" for name in names], stop)), {""})
            return {name: self.picture(f"{directory}/{name}") for name in names}

    def picture(self, path):
        svg = subprocess.run(["dot", "-Tsvg", path], capture_output=True, check=True)
        self.assertEqual(svg.stderr, b"")
        groups = list(ElementTree.fromstring(svg.stdout).iter(SVG + "g"))
        kinds = [group.get("class").split()[0] for group in groups]
        texts = [text.text for text in groups[0].iter(SVG + "text")]
        return kinds.count("node"), kinds.count("edge"), texts

    def test_commands_report_wrong_arguments(self):
        expected = {"mub dot filled.array": "mub_array cannot be drawn", "mub dot": "expected a container",
                    "mub check outside": "not a container that can be checked or drawn, but has the type int",
                    "mub dot hash_pointer > /no/such/file": "No such file", "mub check nothing": 'No symbol "nothing"',
                    "mub dot hash_pointer": "digraph mub_hash {"}  # without a file, the picture is printed
        for answer, part in zip(look(list(expected), 1), expected.values()):
            self.assertIn(part, answer)

    def test_front_ends_receive_maps_and_arrays(self):
        requests = ["-enable-pretty-printing", "-var-create list * filled.list", "-var-list-children --all-values list",
                    "-var-create word * filled.arrayt", "-var-create text * filled.string",
                    "-var-create pool * filled.pool", "-gdb-exit", ""]
        output = gdb("-ex", f"source {SCRIPT}", "-ex", "break stop", "-ex", "run", PROGRAM, mode="-i=mi",
                     requests="\n".join(requests).encode())
        self.assertRegex(output, r'name="list".*displayhint="map"')
        self.assertRegex(output, r'child=.*value="\\"pear\\"".*value="0".*value="\\"fig\\"".*value="1".*value="\\"\\""')
        self.assertRegex(output, r'name="word".*displayhint="array"')
        self.assertRegex(output, r'name="text".*value="\\"said')
        self.assertRegex(output, r'name="pool".*value="mub_pool with 17 live blocks')


class Installed(unittest.TestCase):
    @unittest.skipUnless(os.path.exists(os.path.join(BUILD, "gdb", "cmake_install.cmake")), "nothing is installed")
    def test_the_installed_library_loads_the_printers(self):
        with tempfile.TemporaryDirectory() as prefix:
            prefix = os.path.realpath(prefix)
            subprocess.run(["cmake", "--install", BUILD, "--component", "gdb", "--prefix", prefix], check=True,
                           capture_output=True)
            script, = (os.path.join(directory, name) for directory, _, names in os.walk(prefix) for name in names
                       if name.endswith("-gdb.py"))
            auto_load = os.path.join(prefix, "share/gdb/auto-load")
            library = script[len(auto_load):-len("-gdb.py")]
            self.assertEqual(os.path.basename(library), os.path.basename(LIBRARY))
            os.makedirs(os.path.dirname(library))
            shutil.copy(LIBRARY, library)
            output = gdb("-iex", f"set auto-load scripts-directory {auto_load}", "-iex", f"add-auto-load-safe-path {prefix}",
                         "-ex", "info pretty-printer", "-ex", "help mub", library)
            self.assertIn("mub_hash", output)
            self.assertIn("mub check VAR", output)


def main():
    with tempfile.TemporaryDirectory() as directory:
        traced = may_trace()
        if not traced:
            Contents.core = core_of_itself(directory)
            if Contents.core is None:
                print("skipped: GDB may not trace programs here, and an aborted program leaves no core file")
                sys.exit(SKIPPED)
            print("GDB may not trace programs here: testing only with a core file")
        elif not INSTRUMENTED:
            Contents.core = core_of_first_stop(directory)
        unittest.main(defaultTest=None if traced else ["Contents", "Installed"])


if __name__ == "__main__":
    main()
