"""Which functions of the built library may take heap memory: those from which a call of malloc can be reached.

The call graph is read from the machine code, so it is that of the library as it is: `objdump` names the target of every
direct call and jump, and every function whose address is taken, which counts as a call too. Not followed are calls
through pointers, which lead to the caller's callbacks (what these do is theirs to know), and what the C library does
inside its own functions.
"""

import re
import shutil
import subprocess

ALLOCATORS = {"malloc"}  # check_api sees to it that there are no others
FUNCTION = re.compile(r"^[0-9a-f]+ <(.+)>:$")
TARGET = re.compile(r"<([^<>+]+)(?:\+0x[0-9a-f]+)?>")


def output_of(*command):
    if shutil.which(command[0]) is None:
        raise RuntimeError(f"{command[0]} is not there, and without it nothing is known of the calls")
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
    """All from which one of `targets` can be reached."""
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
    """The names of all functions in the library that may allocate."""
    reached = callers_of(ALLOCATORS, calls_in(library))
    if not reached:
        raise RuntimeError(f"{library}: nothing allocates, so its machine code was not understood")
    return reached
