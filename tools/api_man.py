"""Writes the manual pages from mub-api.json: section 3 for the functions, section 7 for the modules."""

import os
import re
import textwrap
import time

WIDTH = 78


def escaped(text):
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq")
    # Code (names, values, input) is bold.
    text = re.sub(r"`([^`]*)`", r"\\fB\1\\fR", text)
    return re.sub(r"(?<![\w\\])(mub_\w+)", r"\\fB\1\\fR", text).replace("\\fB\\fB", "\\fB").replace("\\fR\\fR", "\\fR")


def filled(text):
    """`text` as lines, none of which starts like a macro."""
    lines = textwrap.wrap(escaped(text), WIDTH, break_long_words=False, break_on_hyphens=False)
    return [f"\\&{line}" if line.startswith((".", "\\(aq")) else line for line in lines]


def preformatted(text):
    lines = [line[4:].replace("\\", "\\e").replace("-", "\\-") for line in text.rstrip().split("\n")]
    return [".PP", ".RS 4", ".nf", *(f"\\&{line}" for line in lines), ".fi", ".RE"]


def section(title, *texts):
    lines = [f".SH {title}"]
    for number, text in enumerate(text for text in texts if text):
        if text.startswith("    "):
            lines += preformatted(text)
        elif text.startswith("- "):
            lines += [".IP \\(bu 2", *filled(text[2:])]
        else:
            lines += ([".PP"] if number else []) + filled(text)
    return lines if len(lines) > 1 else []


def terms(title, entries):
    lines = [f".SH {title}"]
    for term, text in entries:
        lines += [".TP", f".B {escaped(term)}", *filled(text)]
    return lines if entries else []


def head(name, number, api):
    return [f'.TH {name.upper()} {number} {made_on()} "libmub {api["version"]}" libmub']


def made_on():
    """The date of the build, or SOURCE_DATE_EPOCH for reproducible builds."""
    seconds = float(os.environ.get("SOURCE_DATE_EPOCH", time.time()))
    return time.strftime("%Y-%m-%d", time.gmtime(seconds))


def declared(declaration):
    """A declaration as lines of a synopsis, with one parameter per line if it is too long for one line."""
    if len(declaration) <= WIDTH:
        return [f".B {quoted(declaration)}"]
    opening, _, parameters = declaration.partition("(")
    parts = parameters.split(", ")
    indent = " " * 4
    return [f".B {quoted(opening + '(')}"] + [
        f".B {quoted(indent + part + (',' if part != parts[-1] else ''))}" for part in parts]


def quoted(text):
    return '"' + text.replace("\\", "\\e").replace('"', '\\(dq').replace("-", "\\-") + '"'


def references(names):
    lines = [f".BR {name} ({number}){comma}" for (name, number), comma in zip(
        names, [" ,"] * (len(names) - 1) + [""])]
    return [".SH SEE ALSO", *lines]


def failure_text(failure):
    if failure["value"] == "none":
        return failure["doc"]
    return f"`{failure['value']}` {failure['doc']}".strip()


def neighbours(function, functions):
    """For SEE ALSO: the functions that the text mentions, and those declared next to it."""
    known = {other["name"] for other in functions} - {function["name"]}
    texts = [value for value in function.values() if isinstance(value, str)]
    named = [name for name in re.findall(r"\b(mub_\w+)\(\)", " ".join(texts)) if name in known]
    names = [other["name"] for other in functions if other["module"] == function["module"]]
    place = names.index(function["name"])
    return list(dict.fromkeys([*named, *names[max(place - 2, 0):place], *names[place + 1:place + 3]]))


def memory_of(function):
    memory = "May allocate memory." if function["may_allocate"] else "Allocates no memory."
    if any(parameter["type"].endswith("_fn") for parameter in function["parameters"]):
        memory += " Allocations by the callback are not counted."
    return memory


def parameter_text(parameter):
    text = sentence(parameter["doc"])
    if parameter["length"]:
        text += f" An array: `{parameter['name']}[{parameter['length']}]`."
    if parameter["nullable"]:
        text += " May be NULL."
    return text


def function_page(function, api):
    see = [(name, 3) for name in neighbours(function, api["functions"])] + [(f"mub_{function['module']}", 7)]
    low = "A building block of the everyday functions." if function["level"] == "low" else ""
    return [
        *head(function["name"], 3, api),
        ".SH NAME", f"{function['name']} \\- {escaped(plain(function['summary']))}",
        ".SH SYNOPSIS", ".nf", f".B #include <{function['header']}>", ".PP", *declared(function["declaration"]), ".fi",
        *section("DESCRIPTION", function["summary"], function["description"], low),
        *terms("PARAMETERS", [(f"{parameter['name']} ({parameter['direction']})", parameter_text(parameter))
                              for parameter in function["parameters"]]),
        *section("RETURN VALUE", sentence(function["returns"]["doc"])),
        *section("FAILURE", sentence(failure_text(function["failure"]))),
        *section("OWNERSHIP", sentence(function["ownership"])),
        *section("INVALIDATES", sentence(function["invalidates"])),
        *section("COST", sentence(function["cost"] or "constant")),
        *section("MEMORY", memory_of(function)),
        *section("THREADS", sentence(function["threads"])),
        *references(see),
    ]


def sentence(text):
    """`text` as a sentence. A name or value at its beginning is not capitalised."""
    if not text:
        return ""
    first = text if re.match(r"mub_|`|NULL|[a-z]+_|O\(", text) else text[:1].upper() + text[1:]
    return first if first.endswith((".", "!", "?")) else first + "."


def plain(summary):
    """A summary in the form of a NAME line: not capitalised, without a full stop."""
    text = summary.rstrip(".")
    return text if re.match(r"[A-Z]{2}|mub_", text) else text[:1].lower() + text[1:]


def record_section(record):
    lines = [f".SS {record['name']}", *filled(f"{record['summary']} {record['size']} bytes.")]
    for field in record["fields"]:
        lines += [".TP", f".B {quoted(field_declaration(field))}", *filled(sentence(field["doc"]))]
    return lines


def results(rows):
    """The table of results, as input for tbl."""
    if not rows:
        return []
    # The other columns share the width that the names leave. They are too narrow for justified text.
    block = lambda text: f"T{{\n.ad l\n{chr(10).join(filled(text)) or chr(92) + '&'}\nT}}"
    lines = ["\t".join([escaped(name), *map(block, texts)]) for name, *texts in rows]
    formats = ["lb " * len(rows[0]), "l " + "lx " * (len(rows[0]) - 1) + "."]
    return [".SH RESULTS", ".TS", "allbox;", *formats, *lines, ".TE"]


def field_declaration(field):
    kind, bracket, bound = field["type"].partition("[")
    return f"{kind}{'' if kind.endswith('*') else ' '}{field['name']}{bracket}{bound}"


def blocks(description):
    """The paragraphs, which are lines, and the preformatted texts, whose lines begin with four spaces."""
    return re.findall(r"(?:^    .*\n?|^\n(?=    ))+|^.+$", description, re.MULTILINE)


def called(macro):
    return f"{macro['name']}({', '.join(parameter['name'] for parameter in macro['parameters'])})"


def macro_text(macro):
    parameters = "; ".join(f"`{parameter['name']}`: {parameter['doc']}" for parameter in macro["parameters"])
    return f"{macro['summary']} {macro['description']} {sentence(parameters)}"


def module_page(module, api):
    mine = [function for function in api["functions"] if function["module"] == module["name"]]
    records = [record for record in api["records"] if record["module"] == module["name"]]
    lines = [
        *(["'\\\" t"] if module["results"] else []),
        *head(f"mub_{module['name']}", 7, api),
        ".SH NAME", f"mub_{module['name']} \\- {escaped(plain(module['title']))}",
        ".SH SYNOPSIS", f".B #include <{module['header']}>",
        *section("DESCRIPTION", module["summary"], *blocks(module["description"])),
        *results(module["results"]),
    ]
    if records:
        lines += [".SH RECORDS"] + [line for record in records for line in record_section(record)]
    lines += terms("CONSTANTS", [(f"{constant['name']} = {constant['value']}", constant["doc"])
                                 for constant in api["constants"] if constant["module"] == module["name"]])
    lines += terms("MACROS", [(called(macro), macro_text(macro))
                              for macro in api["macros"] if macro["module"] == module["name"]])
    lines += terms("FUNCTIONS", [(f"{function['name']}(3)", function["summary"]) for function in mine])
    others = [(f"mub_{other['name']}", 7) for other in api["modules"]
              if other["header"] == module["header"] and other != module]
    return lines + (references(others) if others else [])


def write_pages(api, directory):
    for number, pages in ((3, [(function["name"], function_page(function, api)) for function in api["functions"]]),
                          (7, [(f"mub_{module['name']}", module_page(module, api)) for module in api["modules"]])):
        target = directory / f"man{number}"
        target.mkdir(parents=True, exist_ok=True)
        expected = {f"{name}.{number}" for name, _ in pages}
        for stray in [path for path in target.iterdir() if path.name not in expected]:
            stray.unlink()
        for name, lines in pages:
            (target / f"{name}.{number}").write_text("\n".join(lines) + "\n")
