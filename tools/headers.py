"""Finds the declarations in the public headers, for scripts that must work without Doxygen.

The headers are formatted by clang-format, so a few regular expressions find every `MUB_API` declaration. The
documentation is read by api_reader.py.
"""

import re
from pathlib import Path
from typing import NamedTuple

COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.MULTILINE)
DECLARATION = re.compile(r"\bMUB_API\b([^;]*);")
PRINTF = re.compile(r"\bMUB_PRINTF\([^()]*\)")
# The name is before the first parenthesis (a function) or bracket (an object).
NAME = re.compile(r"(\w+)\s*([(\[])")


class Parameter(NamedTuple):
    name: str
    type: str


class Declaration(NamedTuple):
    name: str
    path: Path
    line: int
    documented: bool  # there is a /** comment right above
    parameters: list  # None for an object


def blanked(pattern, text):
    """`text` with every match replaced by spaces, so that positions and lines stay the same."""
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def parameters_of(text):
    for part in filter(None, (" ".join(part.split()) for part in text.split(","))):
        if part == "...":
            yield Parameter("...", "...")
        elif part != "void":
            # In "int (*name)[4]" the type goes on after the name.
            kind, name, rest = re.fullmatch(r"(.*?)(\w+)(\)\[\w+\])?", part).groups()
            yield Parameter(name, re.sub(r"\s*(\*+)\s*", r" \1", kind).strip() + (rest or ""))


def declarations_of(path):
    text = path.read_text()
    code = blanked(DIRECTIVE, blanked(COMMENT, text))
    for match in DECLARATION.finditer(code):
        declared = PRINTF.sub("", match.group(1))
        name = NAME.search(declared)
        above = text[:match.start()].removesuffix("extern ").rstrip()
        yield Declaration(
            name.group(1), path, code.count("\n", 0, match.start()) + 1,
            above.endswith("*/") and above[above.rindex("/*"):].startswith("/**"),
            list(parameters_of(declared[name.end():declared.rindex(")")])) if name.group(2) == "(" else None)


def public_headers(root):
    return sorted((Path(root) / "include").glob("*.h"))


def declarations(root):
    return [found for path in public_headers(root) for found in declarations_of(path)]
