"""Loaded by GDB with the shared library: loads share/mub/mub_gdb.py of the prefix that this file is installed in."""

import gdb

gdb.execute("source " + __file__[: __file__.rindex("/gdb/auto-load/")] + "/mub/mub_gdb.py")
