"""Turns the text of a C comment into Doxygen's markup, so that it reads as it stands."""

import html
import re

NAME = re.compile(r"\b(?:mub_\w+|CRC_TABLE)\b")
SPECIAL = re.compile(r"[\\@#%*~|\[\]]|--|(?<!\w)_|_(?!\w)")
LEAD = re.compile(r" (?:Entry pool|Value pool|Depth)\. ")
TERM = re.compile(r" (`?[A-Z]\S*(?: \S+){0,3}[.:]|mub_\S+)(?: {2,})(\S.*)$")


class Text:
    """`known` are the names that have a place in the documentation to link to."""

    def __init__(self, known):
        self.known = set(known)

    def linked(self, text, own):
        """`text`, which has no markup yet, with links at known names but the own one."""
        pieces, end = [], 0
        for match in NAME.finditer(text):
            pieces.append(escaped(text[end:match.start()]))
            name = match.group()
            pieces.append(f'@ref {name} "{name}"' if name in self.known and name != own else escaped(name))
            end = match.end()
        return "".join(pieces) + escaped(text[end:])

    def line(self, text, own=""):
        """Running text; what stands between backquotes is code."""
        parts = text.split("`")
        if len(parts) % 2 == 0:
            return self.linked(text, own)
        return "".join(f"<code>{self.linked(part, own)}</code>" if i % 2 else self.linked(part, own)
                       for i, part in enumerate(parts))

    def led(self, text, own):
        """Running text whose lead, if it has one, stands out."""
        lead = LEAD.match(" " + text)
        if not lead:
            return self.line(text, own)
        return f"<b>{lead.group().strip()}</b> {self.line(text[lead.end() - 1:], own)}"

    def paragraph(self, lines, own=""):
        """One paragraph of a header's comment: prose, a list of terms, or a drawing, which stays as it is."""
        if all(re.match(r" \S", line) for line in lines):
            return "\n\n".join(self.led(" ".join(line.strip() for line in part), own) for part in led_parts(lines))
        terms = terms_of(lines)
        if not terms:
            return drawing(lines)
        items = [f"<dt>{self.line(term, own)}</dt><dd>{self.line(text, own)}</dd>" for term, text in terms]
        return "<dl class=\"terms\">" + "".join(items) + "</dl>"

    def paragraphs(self, paragraphs, own=""):
        texts = [self.paragraph(lines, own) for lines in paragraphs]
        return "\n\n".join(texts).replace("\n@endverbatim\n\n@verbatim\n", "\n\n")


def escaped(text):
    return SPECIAL.sub(lambda match: "\\" + match.group(), html.escape(text, quote=False))


def led_parts(lines):
    """Prose, cut where a line begins with a lead: "Value pool. …" behind the end of a sentence."""
    parts = [[]]
    for line in lines:
        if parts[-1] and parts[-1][-1].endswith(".") and LEAD.match(line):
            parts.append([])
        parts[-1].append(line)
    return parts


def drawing(lines):
    return "@verbatim\n" + "\n".join(line[1:] for line in lines) + "\n@endverbatim"


def terms_of(lines):
    """[(term, text)] of a hanging list, [] when the lines are none."""
    terms = []
    for line in lines:
        start = TERM.match(line)
        if start:
            terms.append([start.group(1).rstrip(".:"), start.group(2)])
        elif terms and line.startswith("     "):
            terms[-1][1] += " " + line.strip()
        else:
            return []
    return terms
