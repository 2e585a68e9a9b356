"""Finds the functions of the built library that may allocate: those from which malloc can be reached.

The call graph is read from the machine code with `objdump`. Its edges are direct calls and jumps, and
functions whose address is taken. Calls through pointers are not followed, as they lead to the caller's
callbacks; neither are calls inside the C library.
"""

import re
import shutil
import subprocess

ALLOCATORS = {"malloc"}  # check_api makes sure that there are no others
FUNCTION = re.compile(r"^[0-9a-f]+ <(.+)>:$")
TARGET = re.compile(r"<([^<>+]+)(?:\+0x[0-9a-f]+)?>")


def output_of(*command):
    if shutil.which(command[0]) is None:
        raise RuntimeError(f"{command[0]} is not installed, so the calls cannot be read")
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def calls_in(library):
    """{function: the functions and data that it refers to}."""
    if ".symtab" not in output_of("readelf", "-SW", library):
        raise RuntimeError(f"{library} is stripped: calls to its local functions have no names")
    calls, current = {}, set()
    for line in output_of("objdump", "-d", "--no-show-raw-insn", library).splitlines():
        start = FUNCTION.match(line)
        if start:
            current = calls.setdefault(start.group(1), set())
        elif "\t" in line:
            current.update(target.partition("@")[0] for target in TARGET.findall(line))
    return calls


def callers_of(targets, calls):
    """All functions from which one of `targets` can be reached."""
    callers = {}
    for caller, called in calls.items():
        for name in called:
            callers.setdefault(name, set()).add(caller)
    reached, ahead = set(), list(targets)
    while ahead:
        for caller in callers.get(ahead.pop(), ()):
            if caller not in reached:
                reached.add(caller)
                ahead.append(caller)
    return reached


def allocating(library):
    """The names of all functions of the library that may allocate."""
    reached = callers_of(ALLOCATORS, calls_in(library))
    if not reached:
        raise RuntimeError(f"{library}: no function allocates, so its machine code was not understood")
    return reached
