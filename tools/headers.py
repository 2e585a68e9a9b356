"""Reads the public headers: what they declare, and the comment over each declaration."""

import re
from pathlib import Path
from typing import NamedTuple

COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.MULTILINE)
DECLARATION = re.compile(r"\b(?:extern\s+)?MUB_API\b([^;]*);")
# The declared name stands right before the first parenthesis (a function) or bracket (an object).
NAME = re.compile(r"(\w+)\s*[(\[]")


class Declaration(NamedTuple):
    name: str
    path: Path
    line: int
    comment: str  # the comment that ends right above, "" when there is none


def blanked(pattern, text):
    """`text` with every match turned into spaces: positions and lines stay."""
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def comment_above(text, position):
    above = text[:position].rstrip()
    if not above.endswith("*/"):
        return ""
    return above[above.rindex("/*"):]


def declarations_of(path):
    text = path.read_text()
    code = blanked(DIRECTIVE, blanked(COMMENT, text))
    for match in DECLARATION.finditer(code):
        name = NAME.search(match.group(1))
        yield Declaration(
            name.group(1) if name else match.group(1).split()[-1],
            path,
            code.count("\n", 0, match.start()) + 1,
            comment_above(text, match.start()),
        )


def public_headers(root):
    return sorted((Path(root) / "include").glob("*.h"))


def declarations(root):
    return [found for path in public_headers(root) for found in declarations_of(path)]
