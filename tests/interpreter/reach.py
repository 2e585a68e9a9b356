#!/usr/bin/env python3
"""reach.py SOURCE…: fails if a public function occurs in no step of a family and in no other source given.
The tests themselves check that programs reach each step.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tools"))
sys.dont_write_bytecode = True
import headers  # noqa: E402

named = {name for source in sys.argv[1:] for name in re.findall(r"\bmub_\w+", Path(source).read_text())}
functions = {each.name for each in headers.declarations(ROOT) if each.parameters is not None}
if functions - named:
    sys.exit("no family has a step for: " + " ".join(sorted(functions - named)))
