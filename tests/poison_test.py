"""Every error in poison_faults.cpp is reported at its line; without a checker, nothing is.

    poison_test.py PROGRAM SOURCE asan|valgrind|none
"""

import re
import subprocess
import sys
from pathlib import Path

program, source, checker = sys.argv[1:]
REPORTS = {"asan": "use-after-poison", "valgrind": "Invalid (read|write) of size|Unaddressable byte"}
COMMAND = ["valgrind", "--quiet", "--error-exitcode=9"] if checker == "valgrind" else []

failed = False
text = Path(source).read_text()
lines = {name: number for number, line in enumerate(text.splitlines(), 1)
         for name in re.findall(r"; +// (\w+)$", line)}
for name in re.findall(r'faults\["(\w+)"\] =', text):
    run = subprocess.run([*COMMAND, program, name], capture_output=True, text=True, errors="replace")
    if checker == "none" or name == "none":
        is_right = run.returncode == 0 and run.stdout + run.stderr == ""
    else:
        place = re.search(r"poison_faults\.cpp:(\d+)", run.stderr)
        is_right = (run.returncode != 0 and re.search(REPORTS[checker], run.stderr) is not None
                    and place is not None and int(place[1]) == lines[name])
    if not is_right:
        failed = True
        print(f"{name}, line {lines.get(name)}: exit status {run.returncode}\n{run.stdout}{run.stderr}")
sys.exit(failed)
