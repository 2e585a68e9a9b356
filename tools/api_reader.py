"""Reads the interface and its documentation from Doxygen's XML (api/Doxyfile).

    interface = read(root, strict=True)    # the content of mub-api.json, without layouts and allocations
    add_allocations(interface, names)      # the functions that may allocate
    faults(interface)                      # missing and wrong tags, one line each

With `strict`, an unknown tag or a name without documentation raises a RuntimeError with Doxygen's messages.
"""

import os
import re
import shutil
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path

# The titles that docs/interface.doxy gives to the tags.
TAGS = {"Failure": "failure", "Ownership": "ownership", "Invalidates": "invalidates", "Cost": "cost",
        "Threads": "threads", "Array bounds": "bounds", "May be NULL": "nullable", "Level": "level"}
LEVELS = {"": "everyday", "low": "low"}
FAILURE = re.compile(r"(none|0\.0|0|NULL|-1)(?:$|[;,]? +(.*))", re.DOTALL)
# The failure values that each kind of result can have.
FAILURE_VALUES = {"pointer": {"none", "NULL"}, "float": {"none", "0.0"}, "integer": {"none", "0", "-1"}}
BOUND = re.compile(r"(\w+)\[(\w+)\]")


def doxygen(root, output, strict):
    if shutil.which("doxygen") is None:
        raise RuntimeError("doxygen is not installed, so the headers cannot be read")
    settings = {**os.environ, "MUB_ROOT": str(root), "MUB_XML": str(output),
                "MUB_WARN_AS_ERROR": "FAIL_ON_WARNINGS" if strict else "NO"}
    result = subprocess.run(["doxygen", "api/Doxyfile"], cwd=Path(__file__).resolve().parent.parent, env=settings,
                            capture_output=True, text=True)
    if result.returncode != 0 or (strict and result.stderr):
        lines = result.stderr.strip().replace(f"{root}/", "").splitlines()
        raise RuntimeError("\n".join(dict.fromkeys(lines)))  # Doxygen repeats most messages
    return output / "xml"


# ---- texts ----

def spaced(text):
    return " ".join(text.split())


def text_of(element, leave_out=("parameterlist", "simplesect", "verbatim", "table", "itemizedlist")):
    """The text of an element, with code in backquotes; parts that are read separately are left out."""
    if element is None:
        return ""
    parts = [element.text or ""]
    for child in element:
        inner = text_of(child, leave_out) if child.tag not in leave_out else " "
        parts += [f"`{inner}`" if child.tag == "computeroutput" else inner, child.tail or ""]
    return spaced("".join(parts))


def paragraphs_of(member):
    texts = [text_of(paragraph) for paragraph in member.findall("detaileddescription/para")]
    return [text for text in texts if text]


def type_of(element):
    """A type spelled uniformly: "const char **", "mub_hash *", "uint64_t"."""
    text = re.sub(r"\b(struct|extern)\s+", "", spaced("".join(element.itertext())))
    return re.sub(r"\s*(\*+)\s*", r" \1", text).strip()


def type_of_parameter(element):
    """Of a pointer to an array, the type goes on after the name: "const uint32_t (*)[4]"."""
    array = element.findtext("array")
    kind = type_of(element.find("type"))
    return kind if array is None else f"{kind.removesuffix('( *)').rstrip()} (*){array}"


def is_pointer(kind):
    return kind.endswith("*") or "(*)" in kind


def blocks_of(member):
    """The paragraphs, the items of lists, "- …", and preformatted texts, whose lines are indented by four spaces."""
    for paragraph in member.findall("detaileddescription/para"):
        piece = ElementTree.Element("para")
        piece.text = paragraph.text
        for child in paragraph:
            if child.tag not in ("verbatim", "itemizedlist"):
                piece.append(child)
                continue
            yield text_of(piece)
            if child.tag == "verbatim":
                yield "\n".join(f"    {line}".rstrip() for line in child.text.rstrip().split("\n"))
            else:
                yield from (f"- {text_of(item)}" for item in child)
            piece = ElementTree.Element("para")
            piece.text = child.tail
        yield text_of(piece)


# ---- functions and callbacks ----

def tags_of(member):
    tags = dict.fromkeys(TAGS.values(), "")
    for section in member.iter("simplesect"):
        title = section.findtext("title")
        if title:
            tags[TAGS[title]] = spaced(" ".join(text_of(part) for part in section.findall("para")))
    return tags


def documented_parameters(member):
    """{name: (direction, text)}."""
    found = {}
    for item in member.iter("parameteritem"):
        for name in item.iter("parametername"):
            found[name.text] = (name.get("direction"), text_of(item.find("parameterdescription")))
    return found


def parameters_of(declared, documented, tags):
    bounds = dict(BOUND.findall(tags["bounds"]))
    nullable = re.split(r",\s*", tags["nullable"])
    for name, kind in declared:
        direction, text = documented.get(name, (None, ""))
        yield {"name": name, "type": kind, "direction": direction or "in", "nullable": name in nullable,
               "length": bounds.get(name), "doc": text}


def result_of(member, kind):
    text = spaced(" ".join(text_of(section) for section in member.iter("simplesect") if section.get("kind") == "return"))
    return {"type": kind, "doc": text}


def failure_of(text, kind):
    """Parses `@failure VALUE; when`, or `@failure what happens` for a function without a result."""
    match = FAILURE.match(text) if kind != "void" else None
    value, doc = match.groups() if match else ("none", text)
    return {"value": value, "doc": doc or ""}


def common_part(member, kind, declared):
    tags, documented = tags_of(member), documented_parameters(member)
    return tags, {"summary": text_of(member.find("briefdescription")),
                  "description": " ".join(paragraphs_of(member)),
                  "parameters": list(parameters_of(declared, documented, tags)),
                  "returns": result_of(member, kind),
                  # For the checks only: what the comment says, compared with the declaration.
                  "_tags": tags, "_documented": list(documented)}


def arguments_of(member):
    return member.findtext("argsstring").replace(",...", ", ...")


def function_of(member, module):
    kind, name = type_of(member.find("type")), member.findtext("name")
    declared = [(found.findtext("declname") or "...", type_of_parameter(found)) for found in member.findall("param")]
    declared = [found for found in declared if found != ("...", "void")]
    tags, common = common_part(member, kind, declared)
    location = member.find("location")
    separator = "" if kind.endswith("*") else " "
    return {"name": name, "module": module, "header": Path(location.get("file")).name, "line": int(location.get("line")),
            "declaration": f"{kind}{separator}{name}{arguments_of(member)};", **common,
            "failure": failure_of(tags["failure"], kind), "ownership": tags["ownership"],
            "invalidates": tags["invalidates"], "cost": tags["cost"], "threads": tags["threads"],
            "level": LEVELS.get(tags["level"], tags["level"]), "may_allocate": False}


def callback_of(member):
    arguments = member.findtext("argsstring").removeprefix(")")
    declared = [re.fullmatch(r"(.*?)(\w+)", part.strip()).groups() for part in arguments.strip("()").split(",")]
    declared = [(name, re.sub(r"\s*(\*+)\s*", r" \1", kind).strip()) for kind, name in declared]
    kind, name = type_of(member.find("type")).removesuffix("( *").strip(), member.findtext("name")
    return {"name": name, "declaration": f"typedef {kind} (*{name}){arguments};",
            **common_part(member, kind, declared)[1]}


# ---- records and objects ----

def doc_of(member):
    return " ".join(filter(None, [text_of(member.find("briefdescription")), *paragraphs_of(member)]))


def record_of(xml, reference, module):
    compound = ElementTree.parse(xml / f"{reference}.xml").getroot().find("compounddef")
    fields = [{"name": member.findtext("name"), "type": type_of(member.find("type")) + member.findtext("argsstring"),
               "doc": doc_of(member)} for member in compound.iter("memberdef")]
    location = compound.find("location")
    return {"name": compound.findtext("compoundname"), "module": module, "summary": doc_of(compound), "fields": fields,
            "_place": (Path(location.get("file")).name, int(location.get("line")))}


def object_of(member):
    kind, name, bounds = type_of(member.find("type")), member.findtext("name"), member.findtext("argsstring")
    return {"name": name, "type": kind + bounds, "declaration": f"extern {kind} {name}{bounds};", "doc": doc_of(member)}


# ---- macros ----

def macro_of(member, module):
    documented = documented_parameters(member)
    parameters = [found.findtext("defname") for found in member.findall("param")]
    location = member.find("location")
    return {"name": member.findtext("name"), "module": module, "header": Path(location.get("file")).name,
            "parameters": [{"name": name, "doc": documented.get(name, (None, ""))[1]} for name in parameters],
            "summary": text_of(member.find("briefdescription")), "description": " ".join(paragraphs_of(member)),
            "_line": int(location.get("line"))}


def constants_of(member, module, known):
    """The macro as a constant, if its value is a number or a text, or an expression of numbers and known constants."""
    initializer = member.find("initializer")
    text = "" if initializer is None else "".join(initializer.itertext())
    text = re.sub(r"MUB_\w+", lambda name: str(known.get(name[0], name[0])), text)
    if not re.fullmatch(r'[\d\s()+*]+|"[^"\\]*"', text):
        return []
    return [{"name": member.findtext("name"), "module": module, "value": eval(text), "doc": doc_of(member)}]


# ---- modules ----

def table_of(group):
    """The rows of the table of results at the head of a header; the first row has the titles."""
    return [[text_of(entry) for entry in row.findall("entry")] for row in group.findall("detaileddescription//row")]


def group_text(group):
    texts = [text_of(group.find("briefdescription")), *blocks_of(group)]
    return [text for text in texts if text and not text.startswith("What the everyday operations return")]


def module_of(group, parent):
    """A module, with the documentation that the head of its header has for all modules in it."""
    location = group.find(".//memberdef/location")
    header = f"mub_{group.findtext('compoundname')}.h" if location is None else Path(location.get("file")).name
    name, title = group.findtext("compoundname"), group.findtext("title").partition(": ")[2]
    texts, around = group_text(group), group_text(parent) if parent is not None else []
    return {"name": name, "header": header, "title": title, "summary": texts[0],
            "description": "\n".join([*texts[1:], *around]),
            "results": table_of(group) or (table_of(parent) if parent is not None else [])}


def groups_of(xml):
    """{name: group}, and {name: its parent group}."""
    groups = [ElementTree.parse(path).getroot().find("compounddef") for path in sorted(xml.glob("group__*.xml"))]
    by_id = {group.get("id"): group for group in groups}
    parents = {by_id[inner.get("refid")].findtext("compoundname"): group
               for group in groups for inner in group.findall("innergroup")}
    return {group.findtext("compoundname"): group for group in groups}, parents


def read(root, strict):
    with tempfile.TemporaryDirectory() as work:
        return interface_of(doxygen(Path(root).resolve(), Path(work), strict))


def add_allocations(interface, allocating):
    for function in interface["functions"]:
        function["may_allocate"] = function["name"] in allocating


def interface_of(xml):
    groups, parents = groups_of(xml)
    interface = {"modules": [], "records": [], "callbacks": [], "constants": [], "objects": [], "functions": [],
                 "macros": []}
    for name, group in groups.items():
        members = {kind: [member for member in group.iter("memberdef") if member.get("kind") == kind]
                   for kind in ("function", "typedef", "variable", "define")}
        if not name.endswith("_h"):  # a group of modules
            interface["modules"].append(module_of(group, parents.get(name)))
        interface["functions"] += [function_of(member, name) for member in members["function"]]
        interface["records"] += [record_of(xml, inner.get("refid"), name) for inner in group.findall("innerclass")]
        interface["callbacks"] += [callback_of(member) for member in members["typedef"] if member.findtext("argsstring")]
        interface["objects"] += [object_of(member) for member in members["variable"]]
        for member in members["define"]:
            if member.find("param") is None:
                known = {constant["name"]: constant["value"] for constant in interface["constants"]}
                interface["constants"] += constants_of(member, name, known)
            elif documented_parameters(member):
                interface["macros"].append(macro_of(member, name))
    in_order(interface)
    return interface


def in_order(interface):
    """Sorts everything by header, in the order of declaration."""
    place = {function["name"]: (function["header"], function["line"]) for function in interface["functions"]}
    interface["functions"].sort(key=lambda function: place[function["name"]])
    interface["records"].sort(key=lambda record: record["_place"])
    interface["macros"].sort(key=lambda macro: (macro["header"], macro["_line"]))
    first = {}
    for function in interface["functions"]:
        first.setdefault(function["module"], place[function["name"]])
    interface["modules"].sort(key=lambda module: first.get(module["name"], (module["header"], 0)))


# ---- faults ----

def faults(interface):
    records = {record["name"] for record in interface["records"]}
    for function in interface["functions"]:
        where = f"{function['header']}:{function['line']}: {function['name']}"
        yield from (f"{where}: {fault}" for fault in [*parts_faults(function), *function_faults(function, records)])
    for callback in interface["callbacks"]:
        yield from (f"{callback['name']}: {fault}" for fault in parts_faults(callback))
    for macro in interface["macros"]:
        yield from (f"{macro['name']}: no @param {parameter['name']}" for parameter in macro["parameters"]
                    if not parameter["doc"])
    for record in interface["records"]:
        yield from [f"{record['name']}: not documented"] if not record["summary"] else []
        yield from (f"{record['name']}.{field['name']}: not documented" for field in record["fields"] if not field["doc"])


def parts_faults(found):
    """The checks that callbacks and functions share."""
    if not found["summary"]:
        yield "not documented"
    types = {parameter["name"]: parameter["type"] for parameter in found["parameters"]}
    for parameter in found["parameters"]:
        if not parameter["doc"]:
            yield f"no @param {parameter['name']}"
        if parameter["name"] == "...":
            continue
        if parameter["direction"] != "in" and not is_pointer(parameter["type"]):
            yield f"@param {parameter['name']}: {parameter['direction']}, but not a pointer"
        if parameter["direction"] != "in" and re.fullmatch(r"const [^*]*\*", parameter["type"]):
            yield f"@param {parameter['name']}: {parameter['direction']}, but const"
    for name in found["_documented"]:
        if name not in types:
            yield f"@param {name}: no such parameter"
    if bool(found["returns"]["doc"]) != (found["returns"]["type"] != "void"):
        yield "@return is missing, or the function returns void"
    yield from bounds_faults(found["_tags"]["bounds"], types)
    for name in filter(None, re.split(r",\s*", found["_tags"]["nullable"])):
        if not types.get(name, "").endswith(("*", "_fn")):
            yield f"@nullable {name}: no pointer parameter of that name"


def bounds_faults(text, types):
    if text and not re.fullmatch(r"\w+\[\w+\](, \w+\[\w+\])*", text):
        yield f"@bounds {text}: not of the form NAME[LENGTH], …"
    for name, length in BOUND.findall(text):
        if not is_pointer(types.get(name, "")):
            yield f"@bounds {name}: no pointer parameter of that name"
        if not length.isdigit() and not re.fullmatch(r"u?int(\d+_t)?( \*)?", types.get(length, "")):
            yield f"@bounds {name}: {length} is not a length"


def function_faults(function, records):
    tags, kind = function["_tags"], function["returns"]["type"]
    if function["level"] not in LEVELS.values():
        yield f"@level {function['level']}: not one of {', '.join(filter(None, LEVELS))}"
    if kind != "void" and tags["failure"]:
        number = "float" if kind in ("float", "double") else "integer"
        allowed = FAILURE_VALUES["pointer" if kind.endswith("*") else number]
        if not FAILURE.match(tags["failure"]):
            yield f"@failure {tags['failure']}: must begin with a value or with 'none'"
        elif function["failure"]["value"] not in allowed:
            yield f"@failure {function['failure']['value']}: not a value of {kind}"
    if function["may_allocate"] and not tags["failure"]:
        yield "may allocate, but has no @failure"
    if kind.endswith("*") and not tags["ownership"]:
        yield "returns a pointer, but has no @owner"
    changed = [parameter for parameter in function["parameters"] if parameter["type"].removesuffix(" *") in records]
    if changed and not tags["invalidates"]:
        yield "changes a record, but has no @invalidates"
