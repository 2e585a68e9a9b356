"""Finds the places of a C++ source that mutation testing can change, and the changes for each.

The places come from clang's syntax tree and are all in function bodies. Excluded are declarations, comments,
strings, template brackets, the arguments of macros, and prefetches, on which no result depends.
"""

import re
import sys
from pathlib import Path
from typing import NamedTuple

# Debian's binding works with any Python, but only Debian's Python searches this directory.
sys.path.append("/usr/lib/python3/dist-packages")
from clang.cindex import CursorKind, Index, TranslationUnit, TypeKind  # noqa: E402

# The replacements of each operator: off by one at the bound, and the opposite.
BINARY = {
    "<": ("<=", ">"), "<=": ("<", ">="), ">": (">=", "<"), ">=": (">", "<="), "==": ("!=",), "!=": ("==",),
    "+": ("-",), "-": ("+",), "+=": ("-=",), "-=": ("+=",), "&&": ("||",), "||": ("&&",),
    "&": ("|",), "|": ("&",), "<<": (">>",), ">>": ("<<",), "&=": ("|=",), "|=": ("&=",),
}
UNARY = {"!": "", "++": "--", "--": "++"}
INTEGER = re.compile(r"(0[xX][0-9a-fA-F']+|[0-9][0-9']*)([uUlL]*)")
ASSIGNMENT = re.compile(r"([-+*/%&|^]|<<|>>)?=")
BRANCHES = {
    CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.DO_STMT, CursorKind.FOR_STMT, CursorKind.CXX_FOR_RANGE_STMT,
    CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT,
}
OPERATIONS = {CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR}


class Place(NamedTuple):
    path: str  # relative to the root
    start: int  # offsets in bytes
    end: int
    changes: tuple  # the replacement texts


class Finder:
    def __init__(self, source, unit, path):
        self.source = source
        self.path = path
        self.changes = {}  # {(start, end): [text]}
        self.macros = [span for cursor in unit.cursor.get_children()
                       if cursor.kind == CursorKind.MACRO_INSTANTIATION and (span := self.span(cursor))]

    def span(self, cursor):
        """(start, end) in this file, or None if the cursor is in another file."""
        start, end = cursor.extent.start, cursor.extent.end
        if start.file is None or end.file is None or {start.file.name, end.file.name} != {self.path}:
            return None
        return start.offset, end.offset

    def text(self, span):
        return self.source[span[0]:span[1]].decode()

    def follows(self, span, pattern):
        return re.compile(pattern.encode()).match(self.source, span[1]) is not None

    def add(self, span, *texts):
        if any(start < span[1] and span[0] < end for start, end in self.macros):
            return
        old = self.text(span)
        known = self.changes.setdefault(span, [])
        known += [text for text in dict.fromkeys(texts) if text != old and text not in known]

    def operator_between(self, children):
        """(operator, its span) of a binary operation, or ("", None)."""
        if len(children) != 2 or None in (spans := [self.span(child) for child in children]):
            return "", None
        gap = (spans[0][1], spans[1][0])
        operator = self.text(gap).strip() if gap[0] < gap[1] else ""
        start = gap[0] + self.source[gap[0]:gap[1]].find(operator.encode())
        return operator, (start, start + len(operator.encode()))

    def add_operation(self, children):
        operator, span = self.operator_between(children)
        if operator in BINARY:
            self.add(span, *BINARY[operator])

    def add_unary(self, span):
        for operator, changed in UNARY.items():
            size = len(operator)
            if self.text(span).startswith(operator):
                self.add((span[0], span[0] + size), changed)
            elif size == 2 and self.text(span).endswith(operator):
                self.add((span[1] - size, span[1]), changed)

    def add_integer(self, span):
        match = INTEGER.fullmatch(self.text(span))
        if match:
            value, suffix = int(match.group(1).replace("'", ""), 0), match.group(2)
            changed = dict.fromkeys((0, 1, value + 1, value - 1))
            self.add(span, *(f"{n}{suffix}" if n >= 0 else f"({n}{suffix})" for n in changed if n != value))

    def add_condition(self, kind, children):
        """The condition is the expression before `)`, or in a `for` between the semicolons."""
        for child in children:
            span = self.span(child)
            if span is None or not child.kind.is_expression():
                continue
            if kind == CursorKind.FOR_STMT:
                is_condition = re.search(rb";\s*$", self.source[:span[0]][-200:]) and self.follows(span, r"\s*;")
            else:
                is_condition = kind == CursorKind.CONDITIONAL_OPERATOR or self.follows(span, r"\s*\)")
            if is_condition:
                self.add(span, f"!({self.text(span)})", "true", "false")
                return

    def is_deletable(self, cursor):
        while cursor.kind == CursorKind.UNEXPOSED_EXPR and len(inner := list(cursor.get_children())) == 1:
            cursor = inner[0]
        children = list(cursor.get_children())
        if cursor.kind == CursorKind.RETURN_STMT:
            return not children or children[0].type.kind == TypeKind.VOID
        if cursor.kind in OPERATIONS:
            return ASSIGNMENT.fullmatch(self.operator_between(children)[0]) is not None
        if cursor.kind == CursorKind.UNARY_OPERATOR:
            return re.search(r"^(\+\+|--)|(\+\+|--)$", self.text(self.span(cursor))) is not None
        return cursor.kind == CursorKind.CALL_EXPR

    def add_statements(self, kind, children):
        # An expression before a semicolon is a statement, except in the head of a `for`.
        for index, child in enumerate(children):
            span = self.span(child)
            if span is None or not self.follows(span, r"\s*;") or not self.is_deletable(child):
                continue
            if self.calls(child, "prefetch"):
                continue
            if kind == CursorKind.FOR_STMT and index < len(children) - 1:
                continue
            self.add(span, "")

    def add_swapped_arguments(self, cursor):
        spans = [self.span(argument) for argument in cursor.get_arguments()]
        for first, second in zip(spans, spans[1:]):
            if first and second and re.fullmatch(rb"\s*,\s*", self.source[first[1]:second[0]]):
                between = self.text((first[1], second[0]))
                self.add((first[0], second[1]), self.text(second) + between + self.text(first))

    def calls(self, cursor, name):
        """Whether it is a call of a function whose name begins with `name`."""
        return re.match(rf"[\w:.]*\b{name}\w*[(<]", self.text(self.span(cursor) or (0, 0)))

    def visit(self, cursor, in_body=False):
        kind = cursor.kind
        if kind == CursorKind.STATIC_ASSERT or cursor.spelling.startswith("prefetch") or self.calls(cursor, "prefetch"):
            return
        in_body = in_body or kind == CursorKind.COMPOUND_STMT
        children = list(cursor.get_children())
        span = self.span(cursor)
        if in_body and span:
            if kind in OPERATIONS:
                self.add_operation(children)
            elif kind == CursorKind.UNARY_OPERATOR:
                self.add_unary(span)
            elif kind == CursorKind.INTEGER_LITERAL:
                self.add_integer(span)
            elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
                self.add(span, "false" if self.text(span) == "true" else "true")
            elif kind == CursorKind.CALL_EXPR:
                # The order of arguments does not matter to these.
                if not self.calls(cursor, "(swap|min|max)"):
                    self.add_swapped_arguments(cursor)
            if kind in BRANCHES | {CursorKind.CONDITIONAL_OPERATOR}:
                self.add_condition(kind, children)
            if kind in BRANCHES | {CursorKind.COMPOUND_STMT}:
                self.add_statements(kind, children)
        for child in children:
            self.visit(child, in_body)


def places_of(root, path):
    """The places of root/path, in the order of the source text."""
    root = Path(root)
    full = str(root / path)
    arguments = ["-x", "c++", "-std=c++17", f"-I{root}/src", f"-I{root}/include"]
    unit = Index.create().parse(full, arguments, options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    errors = [str(found) for found in unit.diagnostics if found.severity >= found.Error]
    if errors:
        raise SystemExit(f"{path}: clang cannot parse it: {errors[0]}")
    finder = Finder(Path(full).read_bytes(), unit, full)
    for cursor in unit.cursor.get_children():
        if not cursor.kind.is_preprocessing() and finder.span(cursor):
            finder.visit(cursor)
    return [Place(path, *span, tuple(texts)) for span, texts in sorted(finder.changes.items()) if texts]


def changed_source(source, place, text):
    return source[:place.start] + text.encode() + source[place.end:]


def difference(source, place, text):
    """(line number, old lines, new lines) of a change: whole lines without their indentation."""
    first = source.rfind(b"\n", 0, place.start) + 1
    last = source.find(b"\n", place.end)
    last = len(source) if last < 0 else last
    old = source[first:last].decode()
    new = (source[first:place.start] + text.encode() + source[place.end:last]).decode()
    strip = lambda lines: tuple(line.strip() for line in lines.split("\n"))  # noqa: E731
    return source.count(b"\n", 0, first) + 1, strip(old), strip(new)
