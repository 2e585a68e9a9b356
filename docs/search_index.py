"""The index of the search box: functions, records, C++ members, guides and examples, from Doxygen's XML.

    rows(xml, pages, allocates)     [name, module, URL, summary, whether it may allocate, more words] for each
    synonyms(path)                  {a word of other libraries: [our words, …]}
"""

import re
import xml.etree.ElementTree as ElementTree

from api_reader import text_of

# The parts of a section that are not its text.
NO_TEXT = {"programlisting", "verbatim", "title", "sect2"}
NO_SUMMARY = NO_TEXT | {"table", "itemizedlist", "orderedlist"}


def compound(path):
    return ElementTree.parse(path).getroot().find("compounddef")


def brief(element):
    return text_of(element.find("briefdescription"))


def member_rows(scope, module, prefix, page, kinds, allocates):
    """The public members of a module or a class; overloads once, and neither constructors nor operators."""
    seen = {scope.findtext("compoundname").split("::")[-1]}
    for member in scope.iter("memberdef"):
        name, anchor = member.findtext("name"), member.get("id").rpartition("_1")[2]
        is_wanted = member.get("kind") in kinds and member.get("prot") == "public" and re.fullmatch(r"\w+", name)
        if is_wanted and name not in seen:
            seen.add(name)
            yield [name if prefix == "" else f"{prefix}::{name}", module, f"{page}#{anchor}", brief(member),
                   allocates.get(name), ""]


def module_rows(xml, pages, allocates):
    kinds = ("function", "typedef", "variable", "define")
    for path in sorted(xml.glob("group__*.xml")):
        group = compound(path)
        name, page = group.findtext("compoundname"), f"{group.get('id')}.html"
        module, prefix = ("C++", "mub") if name.endswith("_hpp") else (name, "")
        yield from member_rows(group, module, prefix, page, kinds, allocates)
        for inner in group.findall("innerclass"):
            id_ = inner.get("refid")
            record, own_page = compound(xml / f"{id_}.xml"), f"{id_}.html"
            has_page = (pages / own_page).exists()
            yield [inner.text, module, own_page if has_page else f"{page}#{id_}", brief(record), None, ""]
            if has_page:
                yield from member_rows(record, module, inner.text, own_page, ("function",), {})


def words_of(element):
    parts = [element.text or ""]
    for child in element:
        parts += ["" if child.tag in NO_TEXT else words_of(child), child.tail or ""]
    return " ".join(parts)


def guide_row(title, module, url, section):
    paragraphs = section.findall("para") + section.findall("para//listitem/para")
    texts = filter(None, (text_of(paragraph, NO_SUMMARY) for paragraph in paragraphs))
    summary = next(texts, "").split(". ")[0].removesuffix(".")
    words = dict.fromkeys(re.findall("[a-z0-9]{3,}", words_of(section).lower()))
    return [title, module, url, summary, None, " ".join(words)]


def guide_rows(xml):
    """The sections of the guides, and the examples."""
    for path in sorted(xml.glob("*.xml")):
        page = compound(path)
        kind = "" if page is None else page.get("kind")
        if kind == "page":
            for section in [*page.iter("sect1"), *page.iter("sect2")]:
                title = f"{page.findtext('title')}: {text_of(section.find('title'))}"
                page_id, _, anchor = section.get("id").partition("_1")
                yield guide_row(title, "guide", f"{page_id}.html#{anchor}", section)
        elif kind == "example":
            yield guide_row(page.findtext("compoundname"), "example", f"{page.get('id')}.html", page.find("detaileddescription"))


def rows(xml, pages, allocates):
    found = [*module_rows(xml, pages, allocates), *guide_rows(xml)]
    missing = set(allocates) - {row[0] for row in found}
    if missing:
        raise RuntimeError(f"no documentation found for {', '.join(sorted(missing))}")
    return found


def synonyms(path):
    lines = [line for line in path.read_text().splitlines() if line and not line.startswith("#")]
    return {foreign.strip(): [ours.strip() for ours in all_ours.split(",")]
            for foreign, all_ours in (line.split("=") for line in lines)}
