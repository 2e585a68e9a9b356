"""Writes the interface's model as headers that Doxygen reads: one group a module."""

import re

from api_model import capital
from doxygen_text import Text, escaped

OVERALL = "base"  # the module of what every header shares


def comment(*parts):
    return "/**\n" + "\n\n".join(part for part in parts if part) + "\n*/\n"


def sentences(text):
    return re.split(r"(?<=\.) ", text)


def unsaid(text, said):
    """The sentences of `text` whose words do not stand in `said`."""
    heard = re.sub(r"\W+", " ", said).lower()
    return " ".join(s for s in sentences(text) if re.sub(r"\W+", " ", s).lower().strip() not in heard)


class Writer:
    def __init__(self, model, titles, notes):
        """`titles`: {module: its line in the README}; `notes`: {module: HTML to stand below its description}."""
        self.model, self.titles, self.notes = model, titles, notes
        self.text = Text([*model.functions, *model.records, *model.callbacks, *model.objects])

    def module_of(self, found):
        return OVERALL if found.path.name == "mub_base.h" else self.model.module_of(found.name)

    # ---- one name ----

    def function(self, found):
        text = lambda words: self.text.line(words, found.name)
        said = " ".join([found.summary, found.description, found.returns, *(p.doc for p in found.parameters)])
        parts = [f"@brief {text(found.summary)}", text(found.description)]
        parts += [f"@param[{directions(p)}] {p.name} {text(p.doc)}" for p in found.parameters]
        parts += [f"@return {text(found.returns)}" if found.returns else ""]
        if found.failure.value == "none":
            parts.append(paragraph("On failure", text(unsaid(found.failure.doc, said))))
        parts.append(paragraph("Ownership", text(unsaid(found.ownership, said))))
        parts.append(paragraph("Invalidates", text(found.invalidates)))
        parts.append(paragraph("Cost", text(found.cost)))
        return comment(*parts) + found.declaration + "\n"

    def record(self, found):
        fields = "".join(f"  {field_code(field)} /**< {self.text.line(self.model.field_doc(found, field))} */\n"
                         for field in found.fields)
        about = self.text.line(self.model.record_summary(found))
        return comment(f"@brief {about}") + f"typedef struct {found.name} {{\n{fields}}} {found.name};\n"

    def callback(self, found):
        return comment("@brief " + self.text.line(self.model.callback_doc(found))) + found.code + "\n"

    def object(self, found):
        return comment("@brief " + self.text.line(self.model.object_doc(found))) + "extern " + found.code + "\n"

    # ---- one module ----

    def functions_with_scopes(self, module, header):
        """The functions in the header's order, under the headings that stand between them."""
        last, open_group = None, False
        for name, found in self.model.functions.items():
            if found.module != module:
                continue
            position = self.model.declared[name].position
            inner = [s for s in self.model.scopes_over(position, header) if (s.level == 2 and s.paragraphs) or s.title]
            scope = inner[0] if inner and inner[0].level == 2 else None
            if scope is not last:
                yield "/** @} */\n" if open_group else ""
                open_group = scope is not None
                yield comment(f"@name {heading_of(scope)}", self.text.paragraphs(scope.paragraphs), "@{") if scope else ""
                last = scope
            yield self.function(found)
        yield "/** @} */\n" if open_group else ""

    def description(self, module, header):
        scopes = self.model.scopes[header]
        first_of_header = next(m.name for m in self.model.modules.values() if m.header == header)
        section = next((s for s in scopes if s.level == 1 and re.match(rf"mub_{module}\b", s.title)), None)
        parts = [f"<code>\\#include \"{header}\"</code>"]
        if module == first_of_header:
            parts.append(self.text.paragraphs(without_name(scopes[0].paragraphs, header)))
        else:
            parts.append(f"What the page of @ref {first_of_header} \"mub_{first_of_header}\" tells of this header's "
                         "records holds here, too.")
        parts.append(self.notes.get(module, ""))
        if section and section.paragraphs:
            parts.append(f"<h2>{escaped(section.title)}</h2>" if module == first_of_header else "")
            parts.append(self.text.paragraphs(section.paragraphs))
        return "\n\n".join(parts)

    def module(self, name, header):
        title = self.titles.get(name) or self.model.modules[name].title
        return (comment(f"@defgroup {name} mub_{name}: {title[:1].lower() + title[1:]}", self.description(name, header),
                        "@{")
                + "".join(self.record(r) for r in self.model.records.values() if self.module_of(r) == name)
                + "".join(self.callback(c) for c in self.model.callbacks.values() if self.module_of(c) == name)
                + "".join(self.object(o) for o in self.model.objects.values() if o.path.name == header
                          and name == header.removeprefix("mub_").removesuffix(".h"))
                + "".join(self.functions_with_scopes(name, header))
                + "/** @} */\n")

    def overall(self):
        head = without_name(self.model.scopes["mub_base.h"][0].paragraphs, "mub_base.h")
        return (comment(f"@defgroup {OVERALL} Rules that hold everywhere", "<code>\\#include \"mub_base.h\"</code>",
                        self.text.paragraphs(head), "@{")
                + "".join(self.callback(c) for c in self.model.callbacks.values() if self.module_of(c) == OVERALL)
                + "/** @} */\n")


def directions(parameter):
    return "in,out" if parameter.direction == "inout" else parameter.direction


def paragraph(title, text):
    return f"@par {title}\n{text}" if text else ""


def field_code(field):
    bounds = re.search(r"(?:\[\w+\])*$", field.type).group()
    return f"{field.type.removesuffix(bounds)} {field.name}{bounds};"


def heading_of(scope):
    if scope.title:
        return scope.title[:1].upper() + scope.title[1:]
    words = " ".join(" ".join(scope.paragraphs[0]).split())
    return re.match(r"The layer below|\w+ \w+", words).group()


def without_name(paragraphs, header):
    first = capital(paragraphs[0][0].removeprefix(f" {header}: "))
    return [[" " + first, *paragraphs[0][1:]], *paragraphs[1:]]
