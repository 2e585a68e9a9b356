"""mub-api.json and the manual pages describe the library correctly.

    api_test.py MUB_API_JSON SCHEMA MAN_DIR ALLOCATION_PROBE

Expected values are written here; `may_allocate` is compared with the counts of allocation_probe.cpp.
"""

import json
import subprocess
import sys
import unittest
from collections import Counter
from pathlib import Path

PROBE = sys.argv.pop(4)
MAN = Path(sys.argv.pop(3))
SCHEMA = json.loads(Path(sys.argv.pop(2)).read_text())
API = json.loads(Path(sys.argv.pop(1)).read_text())
FUNCTIONS = {function["name"]: function for function in API["functions"]}
RECORDS = {record["name"]: record for record in API["records"]}
CALLBACKS = {callback["name"]: callback for callback in API["callbacks"]}


class Json(unittest.TestCase):
    def test_conforms_to_its_schema(self):
        try:
            import jsonschema
        except ImportError:
            self.skipTest("no python3-jsonschema")
        jsonschema.validate(API, SCHEMA)

    def test_has_each_function_once_in_a_module(self):
        modules = {module["name"] for module in API["modules"]}
        self.assertEqual({found["module"] for found in API["functions"] + API["records"]} - modules, set())
        self.assertEqual(len(FUNCTIONS), len(API["functions"]))

    def test_has_the_layouts_of_the_compiler(self):
        self.assertEqual((RECORDS["mub_hash"]["size"], RECORDS["mub_hash"]["alignment"]), (104, 8))
        self.assertEqual((RECORDS["mub_stringx"]["size"], RECORDS["mub_pool"]["size"]), (24, 88))
        block = {field["name"]: field for field in RECORDS["mub_listx_block"]["fields"]}
        self.assertEqual((block["values"]["type"], block["values"]["offset"], block["values"]["size"]),
                         ("uint64_t[32]", 24, 256))

    def test_has_the_parts_of_a_comment(self):
        insert = FUNCTIONS["mub_hash_insert"]
        self.assertEqual(insert["summary"], "Adds a key with a value unless the key is present.")
        self.assertEqual(insert["returns"], {"type": "int", "doc": "1 if added"})
        self.assertEqual(insert["invalidates"], "an iteration in progress, if the number of buckets doubles; pointers to keys")
        self.assertEqual(insert["cost"], "O(length) expected, amortised over the doublings of the buckets, up to 16 MiB of keys")
        self.assertEqual([found["name"] for found in insert["parameters"]], ["table", "key", "length", "value"])
        self.assertEqual((insert["level"], FUNCTIONS["mub_hash_insert_t"]["level"]), ("everyday", "low"))
        self.assertIn("by a function that takes it as const", FUNCTIONS["mub_pool_iter_new"]["threads"])

    def test_describes_callbacks(self):
        compare = CALLBACKS["mub_tree_compare_fn"]
        self.assertEqual(compare["declaration"], "typedef int (*mub_tree_compare_fn)(const mub_tree_entry *entry, "
                         "const void *key, int64_t length);")
        self.assertEqual((compare["parameters"][1]["length"], compare["returns"]["type"]), ("length", "int"))

    def test_has_the_tables_of_results(self):
        # The functions of base only return the version; the other two have no functions of their own.
        results = {module["name"]: module["results"] for module in API["modules"]
                   if module["name"] not in ("base", "each", "inline")}
        self.assertIn(["`_find`", "1", "0", ""], results["hashd"])
        self.assertEqual({len(row) for table in results.values() for row in table}, {4})
        self.assertEqual([name for name, table in results.items() if len(table) < 4], [])

    def test_has_directions_lengths_and_nullability(self):
        for function, name, *expected in (
                ("mub_hash_init", "table", "out", None, False), ("mub_hash_insert", "table", "inout", None, False),
                ("mub_hash_get", "key", "in", "length", True), ("mub_hasht_find", "key", "in", "4", False),
                ("mub_hash_cmp", "b", "in", "b_length", False), ("mub_hash_free", "release", "in", None, True),
                ("mub_array_get_at", "length", "out", None, False), ("mub_string_format", "...", "in", None, False)):
            found = next(found for found in FUNCTIONS[function]["parameters"] if found["name"] == name)
            self.assertEqual([found["direction"], found["length"], found["nullable"]], expected, f"{function}: {name}")

    def test_has_the_failure_values(self):
        for function, value in (
                ("mub_malloc", "NULL"), ("mub_hash_find", "none"), ("mub_mem_chr", "-1"), ("mub_string_append", "none"),
                ("mub_char_get_float", "0.0"), ("mub_hash_insert", "0")):
            self.assertEqual(FUNCTIONS[function]["failure"]["value"], value, function)
        self.assertIn("memory", FUNCTIONS["mub_string_append"]["failure"]["doc"])

    def test_has_the_functions_that_allocate(self):
        lines = subprocess.run([PROBE], check=True, capture_output=True, text=True).stdout.split("\n")
        counted = dict(line.split() for line in lines if line)
        self.assertEqual({name: str(int(FUNCTIONS[name]["may_allocate"])) for name in counted}, counted)
        self.assertGreater(min(Counter(counted.values()).values()), 10)


class Pages(unittest.TestCase):
    def test_exist_for_each_function_and_each_module(self):
        self.assertEqual({path.name for path in (MAN / "man3").iterdir()}, {f"{name}.3" for name in FUNCTIONS})
        self.assertEqual({path.name for path in (MAN / "man7").iterdir()},
                         {f"mub_{module['name']}.7" for module in API["modules"]})

    def test_have_the_content_of_the_headers(self):
        page = (MAN / "man3/mub_hash_insert.3").read_text()
        for text in ("mub_hash_insert \\- adds a key with a value unless the key is present\n", ".B #include <mub_hash.h>",
                     '"    const void *key,"', "length]\\fR. May\nbe NULL.", ".SH RETURN VALUE\n1 if added", ".BR mub_hash (7)\n"):
            self.assertIn(text, page)


if __name__ == "__main__":
    unittest.main()
