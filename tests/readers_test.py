"""Every function of the public headers that takes a const record is called in readers_test.cpp.

    readers_test.py TOOLS_DIR SOURCE
"""

import re
import sys
from pathlib import Path

sys.path.insert(0, sys.argv[1])
import headers  # noqa: E402

readers = {found.name for found in headers.declarations(Path(sys.argv[1]).parent) if found.parameters
           if any(re.match(r"const mub_\w+ \*$", parameter.type) for parameter in found.parameters)}
source = headers.COMMENT.sub("", re.sub("//.*", "", Path(sys.argv[2]).read_text()))
missing = sorted(readers - set(re.findall(r"\bmub_\w+", source)))
if missing or len(readers) < 250:
    sys.exit(f"of {len(readers)} functions, not called: {' '.join(missing)}")
print(f"{len(readers)} functions")
