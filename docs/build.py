#!/usr/bin/env python3
"""Builds the HTML documentation in PAGES; what Doxygen reads goes to WORK. What either holds is lost.

    docs/build.py --pages PAGES --work WORK --mubdex PROGRAM --library LIBMUB

The headers' comments, resolved by tools/api_model.py, become the input of Doxygen; the pictures are drawn from live
containers by mubdex; the index of the search box is made of Doxygen's tag file, so that it leads where the functions are.
"""

import argparse
import html
import json
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tools")]

import api_calls  # noqa: E402
import api_model  # noqa: E402
from doxygen_headers import OVERALL, Writer  # noqa: E402
from symbol_map import version_text  # noqa: E402
from tidy import tidy  # noqa: E402

# Pictures: of which module, from which text, and what they show.
PICTURES = {
    "hash": ("few.txt", "A live table: entries hang from the bucket of their hash, the oldest first."),
    "btree": ("many.txt", "A live tree: the records lie in the leaves in key order; above them, the greatest key of each."),
    "pool": ("many.txt", "A live pool after every other word went: released blocks wait in the order of their reuse."),
}
# What Doxygen writes beside the pages and nothing refers to.
LEFTOVERS = ["*.png", "doxygen.*", "jquery.js", "dynsections.js", "tabs.css", "menu*.js", "nav_*", "annotated.html",
             "classes.html", "functions*.html", "globals*.html", "files.html", "dir_*.html", "modules.html", "pages.html",
             "examples.html", "graph_legend.*"]


def readme_rows():
    """[(module names, header, what it is)] of the README's table, in its order."""
    rows = re.findall(r"^\| ([\w, ]+) \| `(\w+\.h)` \| (.*) \|$", (ROOT / "README.md").read_text(), re.MULTILINE)
    return [(names.split(", "), header, text) for names, header, text in rows]


def titles():
    """What the README says of a module that has a row to itself."""
    return {names[0]: re.sub(r"^`mub_\w+`: ", "", text) for names, _, text in readme_rows() if len(names) == 1}


def readme_page(modules):
    """The README as the main page, with the names of modules and functions leading to their pages."""
    def row(match):
        names = [f"[{name}](@ref {name})" if name in modules else name for name in match.group(1).split(", ")]
        return f"| {', '.join(names)} |"
    text = re.sub(r"^\| ([\w, ]+) \|(?= `)", row, (ROOT / "README.md").read_text(), flags=re.MULTILINE)
    return re.sub(r"\]\(docs/(\w+)\.md\)", r"](@ref \1)", text)


def guides():
    """{name: title} of the pages that are written by hand, the tutorial first."""
    paths = sorted((ROOT / "docs").glob("*.md"), key=lambda path: (path.stem != "tutorial", path.stem))
    return {path.stem: re.match(r"# ([^{\n]*)", path.read_text()).group(1).strip() for path in paths}


def guide_page(name):
    """The page under its own name, whatever the directory is called."""
    text = (ROOT / f"docs/{name}.md").read_text()
    return re.sub(r"^# ([^{\n]*).*", rf"# \1 {{#{name}}}", text, count=1)


# ---- the programs ----

def programs():
    for directory in ("cookbook", "tutorial", "mubdex"):
        yield from sorted((ROOT / "examples" / directory).glob("*.c"))


def opening(source):
    """The paragraphs of the comment that a program opens with; none when it opens otherwise."""
    match = re.match(r"/\*(.*?)\*/", source.read_text(), re.DOTALL)
    if not match:
        return []
    lines = [re.sub(r"^ \*", "", line) for line in match.group(1).splitlines()]
    return [paragraph.splitlines() for paragraph in re.split(r"\n\s*\n", "\n".join(lines)) if paragraph.strip()]


def example_url(source):
    name = f"{source.parent.name}/{source.name}".replace("/", "_2").replace(".", "_8")
    return f"{name}-example.html"


def example_comment(source, text):
    expected = source.with_suffix(".txt")
    printed = f"It prints:\n@verbatim\n{expected.read_text()}@endverbatim" if expected.exists() else ""
    about = text.paragraphs(opening(source))
    return f"/**\n@example {source.parent.name}/{source.name}\n{about}\n\n{printed}\n*/\n"


def cookbook_page(text):
    items = []
    for source in sorted((ROOT / "examples" / "cookbook").glob("*.c")):
        title = text.line(" ".join(" ".join(opening(source)[0]).split()))
        items.append(f'<dt><a href="{example_url(source)}">{source.stem.replace("_", " ")}</a></dt><dd>{title}</dd>')
    return ("/**\n@page cookbook Cookbook\n\nShort whole programs, each the model of one use; what they print is compared "
            "at every test run. The page of a function names those that call it.\n\n"
            f'<dl class="terms">{"".join(items)}</dl>\n\n'
            "Longer: <code>examples/mubdex</code>, an index of the words of a text, of which "
            f'<a href="{example_url(ROOT / "examples/mubdex/word_index.c")}">word index</a> is the heart.\n*/\n')


# ---- what surrounds the pages ----

def contents(modules):
    """The links at the side: the pages, then the modules, those of a header in one line."""
    link = lambda url, name: f'<a href="$relpath^{url}">{name}</a>'
    listed = [names for names, _, _ in readme_rows()]
    listed += [[name] for name in modules if not any(name in names for names in listed)]
    pages = [link("index.html", "Overview"), link("cookbook.html", "Cookbook"), link(f"group__{OVERALL}.html", "Rules")]
    pages[1:1] = [link(f"{name}.html", title) for name, title in guides().items()]
    lines = [", ".join(link(f"group__{name}.html", name) for name in names if name in modules) for names in listed]
    item = lambda lines: "".join(f"<li>{line}</li>\n" for line in lines)
    return f"<ul>\n{item(pages)}</ul>\n<h2>Modules</h2>\n<ul>\n{item(lines)}</ul>"


def drawn(module, out, mubdex):
    text, caption = PICTURES[module]
    dot = subprocess.run([mubdex, "--dot", module, ROOT / "docs/pictures" / text], check=True, capture_output=True).stdout
    svg = subprocess.run(["dot", "-Tsvg"], input=dot, check=True, capture_output=True).stdout
    (out / f"{module}.svg").write_bytes(svg)
    return (f'\n@htmlonly<figure><img src="{module}.svg" alt="{html.escape(caption)}">'
            f"<figcaption>{html.escape(caption)}</figcaption></figure>@endhtmlonly\n")


# ---- the index of the search box ----

def places(tag_file):
    """{name: URL} of all that Doxygen has documented."""
    found = {}
    for compound in ElementTree.parse(tag_file).getroot().iter("compound"):
        for member in compound.iter("member"):
            if compound.get("kind") == "group":
                found[member.findtext("name")] = f'{member.findtext("anchorfile")}#{member.findtext("anchor")}'
        if compound.get("kind") == "struct":
            found[compound.findtext("name")] = compound.findtext("filename")
    return found


def search_index(model, tag_file):
    """One row a function: name, module, URL, summary, and whether it may allocate."""
    url = places(tag_file)
    missing = [name for name in model.functions if name not in url]
    if missing:
        sys.exit(f"docs/build.py: no place in the pages for {', '.join(missing)}")
    return [[f.name, f.module, url[f.name], f.summary, f.name in model.allocating] for f in model.functions.values()]


# ---- all of it ----

def write_input(model, work, out, mubdex):
    notes = {module: drawn(module, out, mubdex) for module in PICTURES}
    writer = Writer(model, titles(), notes)
    source = work / "input"
    (source / "base.h").write_text(writer.overall())
    for module in model.modules.values():
        (source / f"{module.name}.h").write_text(writer.module(module.name, module.header))
    (source / "examples.dox").write_text(cookbook_page(writer.text)
                                         + "".join(example_comment(p, writer.text) for p in programs()))
    (source / "README.md").write_text(readme_page(model.modules))
    for name in guides():
        (source / f"{name}.md").write_text(guide_page(name))
    header = (ROOT / "docs/header.html").read_text().replace("@MODULES@", contents(model.modules))
    (work / "header.html").write_text(header)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--pages", type=Path, required=True)
    parser.add_argument("--work", type=Path, required=True)
    parser.add_argument("--mubdex", required=True)
    parser.add_argument("--library", required=True)
    options = parser.parse_args()
    work, pages = options.work, options.pages
    for directory in (work, pages):
        shutil.rmtree(directory, ignore_errors=True)
    (work / "input").mkdir(parents=True)
    pages.mkdir()

    model = api_model.load(ROOT, api_calls.allocating(options.library))
    write_input(model, work, pages, options.mubdex)
    if model.faults:
        print("\n".join(model.faults[:20]), file=sys.stderr)
        sys.exit(f"docs/build.py: {len(model.faults)} things are not told in the headers")
    settings = {"MUB_ROOT": str(ROOT), "MUB_DOCS_WORK": str(work.resolve()), "MUB_VERSION": version_text(ROOT)}
    if subprocess.run(["doxygen", str(ROOT / "docs/Doxyfile")], env={**os.environ, **settings}).returncode != 0:
        sys.exit("docs/build.py: Doxygen found faults in its input")
    shutil.copytree(work / "html", pages, dirs_exist_ok=True)
    for path in {path for pattern in LEFTOVERS for path in pages.glob(pattern)}:
        path.unlink()
    for path in pages.glob("*.html"):
        path.write_text(tidy(path.read_text()))

    rows = search_index(model, work / "mub.tag")
    (pages / "api-index.js").write_text(
        "window.MUB_INDEX = [\n" + ",\n".join(json.dumps(row, ensure_ascii=False) for row in rows) + "\n];\n")
    shutil.copy(ROOT / "docs/search.js", pages)


if __name__ == "__main__":
    main()
