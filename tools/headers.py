"""Reads the public headers: what they declare, and the comments over it, cut into their parts.

Nothing here knows what a text means; api_model.py puts the parts together.
"""

import re
from pathlib import Path
from typing import NamedTuple

COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.MULTILINE)
DECLARATION = re.compile(r"\b(?:extern\s+)?MUB_API\b([^;]*);")
# The declared name stands right before the first parenthesis (a function) or bracket (an object).
NAME = re.compile(r"(\w+)\s*[(\[]")
RECORD = re.compile(r"\bstruct\s+(\w+)\s*\{(.*?)\}\s*\w*;", re.DOTALL)
FIELD = re.compile(r"([^;{}]+?)\b(\w+)((?:\[\w+\])*);")
CALLBACK = re.compile(r"\btypedef\b([^;{}()]*)\(\*(\w+)\)\s*\(([^;]*)\);")
FORMAT_ATTRIBUTE = re.compile(r"\bMUB_PRINTF\([^()]*\)")

BANNER = re.compile(r"-{4} (.*?) -+$")
LISTING = re.compile(r"(\w+), where a (?:function|record) does not say otherwise:$")
# "   name, name   text": a note on parameters, or a line of a listing. Names are words, types or "...".
NOTE = re.compile(r" {3}((?:[\w.]+(?: \*+)?)(?:, [\w.]+(?: \*+)?)*) {2,}(\S.*)$")
SENTENCE_END = re.compile(r"(?<=[.:])\s+(?=(?:Returns|Invalidates:|Cost:)\s)|(?<=[.])\s+")


class Parameter(NamedTuple):
    name: str
    type: str


class Declaration(NamedTuple):
    name: str
    path: Path
    line: int
    comment: str  # the comment that ends right above, "" when there is none
    position: int  # in the header's text
    code: str  # without MUB_API and attributes, on one line
    type: str  # of the result, or of the object
    parameters: list  # None: an object


class Field(NamedTuple):
    name: str
    type: str
    doc: str


class Record(NamedTuple):
    name: str
    path: Path
    position: int
    doc: str
    fields: list


class Callback(NamedTuple):
    name: str
    path: Path
    code: str
    comment: str


class Doc(NamedTuple):
    """A function's comment without its name."""
    sentences: list  # what it does
    notes: dict  # {parameter: text}
    returns: str
    invalidates: str
    cost: str


class Scope(NamedTuple):
    """A comment that speaks for all declarations behind it: a header's first, or one that stands alone."""
    level: int  # 0: of the header, 1: a banner that names a module, 2: within such a section
    position: int
    title: str
    paragraphs: list
    listings: dict  # {heading: {name: text}}


def blanked(pattern, text):
    """`text` with every match turned into spaces: positions and lines stay."""
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def comment_above(text, position):
    above = text[:position].rstrip()
    if not above.endswith("*/"):
        return ""
    return above[above.rindex("/*"):]


def plain_type(text):
    """`text` with the spelling of types made uniform: "const char **", "mub_hash *", "uint64_t"."""
    text = re.sub(r"\b(struct|extern)\s+", "", " ".join(text.split()))
    return re.sub(r"\s*(\*+)\s*", r" \1", text).strip()


def parameters_of(text):
    for part in text.split(","):
        part = " ".join(part.split())
        if part == "...":
            yield Parameter("...", "...")
        elif part != "void":
            kind, name = re.fullmatch(r"(.*?)(\w+)", part).groups()
            yield Parameter(name, plain_type(kind))


def declarations_of(path):
    text = path.read_text()
    code = blanked(DIRECTIVE, blanked(COMMENT, text))
    for match in DECLARATION.finditer(code):
        declared = " ".join(FORMAT_ATTRIBUTE.sub("", match.group(1)).split()).removeprefix("extern ")
        name = NAME.search(declared)
        is_function = name is not None and declared[name.end() - 1] == "("
        yield Declaration(
            name.group(1) if name else declared.split()[-1],
            path,
            code.count("\n", 0, match.start()) + 1,
            comment_above(text, match.start()),
            match.start(),
            declared + ";",
            plain_type(declared[:name.start()] if name else declared),
            list(parameters_of(declared[name.end():declared.rindex(")")])) if is_function else None,
        )


def public_headers(root):
    return sorted((Path(root) / "include").glob("*.h"))


def declarations(root):
    return [found for path in public_headers(root) for found in declarations_of(path)]


def lines_of(comment):
    """The lines of a comment, one blank before their text as it stands behind the "*"."""
    lines = comment.removeprefix("/*").removesuffix("*/").splitlines()
    return [lines[0].rstrip()] + [re.sub(r"^ *\*", "", line).rstrip() for line in lines[1:]] if lines else []


def joined(lines):
    return " ".join(" ".join(lines).split())


def sentences_of(text):
    return [sentence for sentence in SENTENCE_END.split(text) if sentence]


def noted(lines):
    """(the lines that are no notes, {name: text} of those that are)."""
    others, notes, names = [], {}, None
    for line in lines:
        start = NOTE.match(line)
        if start:
            names = start.group(1).split(", ")
            notes.update({name: start.group(2) for name in names})
        elif names and line.startswith("    "):
            notes.update({name: notes[name] + " " + line.strip() for name in names})
        else:
            names = None
            others.append(line)
    return others, {name: joined([text]) for name, text in notes.items()}


def doc_of(comment, name):
    """The parts of a function's comment. "Returns" takes one sentence; "Invalidates:" and "Cost:" all up to the next
    of the three."""
    lines, notes = noted(lines_of(comment))
    does, parts, current = [], {"Returns": [], "Invalidates:": [], "Cost:": []}, None
    for sentence in sentences_of(joined(lines).removeprefix(f"{name}:").strip()):
        word = sentence.split()[0]
        if word in parts:
            parts[word].append(sentence.removeprefix(word).strip())
            current = parts[word] if word != "Returns" else None
        elif current is not None:
            current.append(sentence)
        else:
            does.append(sentence)
    return Doc(does, notes, *(" ".join(part) for part in parts.values()))


def comments_alone(text):
    """The comments that stand alone: a blank line behind them, or another comment, and the header's first."""
    for match in COMMENT.finditer(text):
        starts_line = not text[:match.start()].rpartition("\n")[2].strip()
        if match.start() == 0 or (starts_line and re.match(r"\n\s*(\n|/\*)", text[match.end():])):
            yield match


def paragraphs_of(lines):
    paragraphs = [[]]
    for line in lines:
        if line.strip():
            paragraphs[-1].append(line)
        elif paragraphs[-1]:
            paragraphs.append([])
    return [paragraph for paragraph in paragraphs if paragraph]


def scope_of(match):
    lines = lines_of(match.group())
    banner = BANNER.fullmatch(lines[0].strip())
    title = banner.group(1) if banner else ""
    level = 0 if match.start() == 0 else 1 if title.startswith("mub_") else 2
    paragraphs, listings = [], {}
    for paragraph in paragraphs_of(lines[1:] if banner else lines):
        heading = LISTING.fullmatch(paragraph[0].strip())
        if heading:
            others, listed = noted(paragraph[1:])
            listings[heading.group(1)] = listed
            if others:
                raise ValueError(f"no line of a listing: {others[0]}")
        else:
            paragraphs.append(paragraph)
    return Scope(level, match.start(), title, paragraphs, listings)


def scopes_of(path):
    return [scope_of(match) for match in comments_alone(path.read_text())]


def fields_of(body):
    """The fields between a record's braces, each with the comment that starts on the line where it ends."""
    code = blanked(COMMENT, body)
    for match in FIELD.finditer(code):
        line_end = body.find("\n", match.end())
        comment = COMMENT.search(body, match.end())
        has_doc = comment and comment.start() < line_end and not code[match.end():comment.start()].strip()
        kind, name, bounds = match.groups()
        yield Field(name, plain_type(kind) + bounds, joined(lines_of(comment.group())) if has_doc else "")


def records_of(path):
    text = path.read_text()
    code = blanked(COMMENT, text)
    for match in RECORD.finditer(code):
        start = code.rindex("\n", 0, match.start()) + 1
        doc = joined(lines_of(comment_above(text, start)))
        if text[:start].endswith("\n\n"):
            doc = ""
        body = text[match.start(2):match.end(2)]
        yield Record(match.group(1), path, start, doc, list(fields_of(body)))


def callbacks_of(path):
    text = path.read_text()
    code = blanked(COMMENT, text)
    for match in CALLBACK.finditer(code):
        declared = " ".join(text[match.start():match.end()].split())
        yield Callback(match.group(2), path, declared, comment_above(text, match.start()))
