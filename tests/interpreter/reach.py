#!/usr/bin/env python3
"""reach.py SOURCE…: fails when a public function is in none of the families' sources and steps. That a program comes to
each step is what the programs test themselves.
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
    sys.exit("reached by no program: " + " ".join(sorted(functions - named)))
