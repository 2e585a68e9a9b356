"""Calls the library from Python. MUB_LIBRARY and MUB_API are the paths of the installed files."""

import ctypes
import os
import subprocess
import sys
import unittest
from pathlib import Path

from mub import Library

FILES = os.environ["MUB_API"], os.environ["MUB_LIBRARY"]
mub = Library(*FILES)


class Binding(unittest.TestCase):
    def setUp(self):
        self.table = mub.mub_hash()
        mub.mub_hash_init(self.table, 1, 0)
        self.addCleanup(mub.mub_hash_term, self.table)

    def test_every_function_is_declared(self):
        names = [function["name"] for function in mub.api["functions"]]
        self.assertGreater(len(names), 800)
        missing = [name for name in names if not hasattr(mub, name)]
        self.assertEqual(["mub_string_match", "mub_string_format"], missing)  # they have a ...

    def test_64_bits_are_not_truncated(self):
        self.assertEqual(1, mub.mub_hash_insert(self.table, b"a\0b", 3, 0xFEDCBA9876543210))
        self.assertEqual(0xFEDCBA9876543210, mub.mub_hash_get(self.table, b"a\0b", 3))
        self.assertEqual(0, mub.mub_hash_find(self.table, b"a", 1))
        keys, values = ((ctypes.c_uint32 * 4) * 1)((1, 2, 3, 4)), (ctypes.c_uint64 * 1)()
        table = mub.mub_hasht()
        mub.mub_hasht_init(table, 1, 0)
        mub.mub_hasht_insert(table, keys[0], 7)
        self.assertEqual((1, 7), (mub.mub_hasht_get_many(table, keys, 1, values), values[0]))
        mub.mub_hasht_term(table)

    def test_none_is_rejected_unless_nullable(self):
        with self.assertRaisesRegex(TypeError, "mub_hash_get"):
            mub.mub_hash_get(None, b"key", 3)
        self.assertEqual(1, mub.mub_hash_insert(self.table, None, 0, 1))
        self.assertEqual(1, mub.mub_hash_find(self.table, b"", 0))
        self.assertTrue(mub.mub_hash_free(self.table, None, 0, None))

    def test_a_text_is_stored_in_a_c_char_p(self):
        fault = ctypes.c_char_p()
        self.assertEqual(1, mub.mub_hash_verify(self.table, fault))
        self.assertIsNone(fault.value)
        self.table.count += 1
        self.assertEqual(0, mub.mub_hash_verify(self.table, fault))
        self.assertIn(b"fewer blocks in use", fault.value)
        self.table.count -= 1

    def test_a_callback_may_raise(self):
        mub.mub_hash_insert(self.table, b"key", -1, 1)
        with self.assertRaises(ZeroDivisionError):
            mub.mub_hash_free_all(self.table, mub.callback("mub_free_fn", lambda value: value // 0))
        self.assertEqual(0, self.table.count)

    def test_the_program_prints_an_index(self):
        text = b"One fish two fish\nRed fish blue fish\nthree blue, red blue\n"
        program = Path(__file__).with_name("word_index.py")
        command = [sys.executable, program, FILES[0], "t", FILES[1]]
        printed = subprocess.run(command, input=text, check=True, stdout=subprocess.PIPE).stdout
        self.assertEqual(b"three 3\ntwo 1\n4 fish\n3 blue\n2 red\n0 lists of lines left\n", printed)


if __name__ == "__main__":
    unittest.main()
