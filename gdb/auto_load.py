"""Loaded by GDB with the shared library. Loads share/mub/mub_gdb.py below the prefix of this file."""

import gdb

gdb.execute("source " + __file__[: __file__.rindex("/gdb/auto-load/")] + "/mub/mub_gdb.py")
