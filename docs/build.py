#!/usr/bin/env python3
"""Builds the HTML manual in PAGES, with intermediate files in WORK. Existing content of both is deleted.

    docs/build.py --pages PAGES --work WORK --mubdex PROGRAM --library LIBMUB

Doxygen reads the public headers, and files that this script writes: the README, the guides, the examples, and
pictures that mubdex draws from live containers. The index of the search box is made from Doxygen's XML.
"""

import argparse
import html
import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tools")]

import api_calls  # noqa: E402
import api_reader  # noqa: E402
import search_index  # noqa: E402
from symbol_map import version_text  # noqa: E402
from tidy import tidy  # noqa: E402

# {module: (text, caption)} of the pictures.
PICTURES = {
    "hash": ("few.txt", "A hash table: each bucket has a chain of entries, the oldest first."),
    "btree": ("many.txt", "A B-tree: the leaves list the records in key order; each inner node has the greatest key of its children."),
    "pool": ("many.txt", "A pool after every other word was removed: the free stack lists the returned blocks in the order of reuse."),
}
# Characters of plain text that Markdown or Doxygen would interpret.
SPECIAL = re.compile(r"[\\@#%*~|\[\]<>&_]")
# Files that Doxygen writes but no page refers to.
LEFTOVERS = ["*.png", "doxygen.*", "jquery.js", "dynsections.js", "tabs.css", "menu*.js", "nav_*", "annotated.html",
             "classes.html", "functions*.html", "globals*.html", "files.html", "dir_*.html", "modules.html", "pages.html",
             "examples.html", "graph_legend.*", "hierarchy.html", "*mub_1_1detail*.html", "namespacemub*"]


def readme_rows():
    """[(module names, header, description)] of the table in README."""
    rows = re.findall(r"^\| ([\w, ]+) \| `(\w+\.h)` \| (.*) \|$", (ROOT / "README.md").read_text(), re.MULTILINE)
    return [(names.split(", "), header, text) for names, header, text in rows]


def readme_page(modules):
    """The README as the main page, with links to the pages of modules and guides."""
    def row(match):
        names = [f"[{name}](@ref {name})" if name in modules else name for name in match.group(1).split(", ")]
        return f"| {', '.join(names)} |"
    text = re.sub(r"^\| ([\w, ]+) \|(?= `)", row, (ROOT / "README.md").read_text(), flags=re.MULTILINE)
    return with_anchors(re.sub(r"\]\(docs/(\w+)\.md\)", r"](@ref \1)", text), "index")


def with_anchors(text, page):
    """A guide whose sections have anchors."""
    def heading(match):
        return f"{match.group()} {{#{page}_{re.sub('[^a-z0-9]+', '_', match.group(1).lower()).strip('_')}}}"
    return re.sub(r"^###? (.*)$", heading, text, flags=re.MULTILINE)


def guides():
    """{name: title} of the pages in docs/; those for new users come first."""
    first = ["tutorial", "choosing", "cpp", "debugging", "reliability", "performance"]
    paths = sorted((ROOT / "docs").glob("*.md"))
    paths.sort(key=lambda path: first.index(path.stem) if path.stem in first else len(first))
    return {path.stem: re.match(r"# ([^{\n]*)", path.read_text()).group(1).strip() for path in paths}


def guide_page(name):
    """The guide, with its file name as its page name, and links to the pages of examples."""
    text = (ROOT / f"docs/{name}.md").read_text()
    text = re.sub(r"\]\(\.\./(examples/[\w./]+)\)", lambda match: f"]({example_url(ROOT / match.group(1))})", text)
    return with_anchors(re.sub(r"^# ([^{\n]*).*", rf"# \1 {{#{name}}}", text, count=1), name)


# ---- examples ----

def programs():
    for directory in ("cookbook", "tutorial", "comparison", "mubdex"):
        yield from sorted(path for path in (ROOT / "examples" / directory).iterdir() if path.suffix in (".c", ".cpp"))


def opening(source):
    """The paragraphs of the comment at the beginning of a program; empty if there is none."""
    match = re.match(r"/\*(.*?)\*/", source.read_text(), re.DOTALL)
    if not match:
        return []
    lines = [re.sub(r"^ \*", "", line) for line in match.group(1).splitlines()]
    return [paragraph.splitlines() for paragraph in re.split(r"\n\s*\n", "\n".join(lines)) if paragraph.strip()]


def example_url(source):
    name = f"{source.parent.name}/{source.name}".replace("/", "_2").replace(".", "_8")
    return f"{name}-example.html"


def escaped(lines):
    return SPECIAL.sub(lambda match: "\\" + match.group(), " ".join(" ".join(lines).split()))


def marked_up(paragraph):
    """A paragraph of prose, or an indented table or drawing as verbatim text."""
    if all(re.match(r" \S", line) for line in paragraph):
        return escaped(paragraph)
    return "@verbatim\n" + "\n".join(line[1:] for line in paragraph) + "\n@endverbatim"


def example_comment(source):
    expected = source.with_suffix(".txt")
    printed = f"It prints:\n@verbatim\n{expected.read_text()}@endverbatim" if expected.exists() else ""
    about = "\n\n".join(marked_up(paragraph) for paragraph in opening(source))
    return f"/**\n@example {source.parent.name}/{source.name}\n{about}\n\n{printed}\n*/\n"


def cookbook_page():
    items = []
    for source in (path for path in programs() if path.parent.name == "cookbook"):
        title = html.escape(" ".join(" ".join(opening(source)[0]).split()))
        items.append(f'<dt><a href="{example_url(source)}">{source.stem.replace("_", " ")}</a></dt><dd>{title}</dd>')
    return ("/**\n@page cookbook Cookbook\n\nShort complete programs, one per task. The tests compare their "
            "output. The page of a function lists the examples that call it.\n\n"
            f'<dl class="terms">{"".join(items)}</dl>\n\n'
            "A larger example: <code>examples/mubdex</code>, an index of the words of a text. Its core is "
            f'<a href="{example_url(ROOT / "examples/mubdex/word_index.c")}">word index</a>.\n*/\n')


# ---- page heads and navigation ----

def header_group(header):
    return header.removeprefix("mub_").replace(".", "_")


def module_heads(modules):
    """The beginning of a module's page: its header, and a link to the page of that header."""
    for module in modules:
        header, siblings = module["header"], [other for other in modules if other["header"] == module["header"]]
        include = f'<code>\\#include \"{header}\"</code>'.replace('\\"', '"')
        if len(siblings) > 1:
            include += (f'; see @ref {header_group(header)} "{header}" for what its modules share, and for a table of '
                        'results.')
        yield f'/**\n@addtogroup {module["name"]}\n@details {include}\n*/\n'


def contents(modules):
    """The navigation: the guides, then the modules, with one line per row of the table in README."""
    link = lambda url, name: f'<a href="$relpath^{url}">{name}</a>'
    listed = [names for names, _, _ in readme_rows()]
    listed += [[name] for name in modules if not any(name in names for names in listed)]
    pages = [link("index.html", "Overview"), link("cookbook.html", "Cookbook"), link("group__base.html", "Rules"),
             link("group__hpp.html", "C++ types")]
    pages[1:1] = [link(f"{name}.html", title) for name, title in guides().items()]
    lines = [", ".join(link(f"group__{name}.html", name) for name in names if name in modules) for names in listed]
    item = lambda lines: "".join(f"<li>{line}</li>\n" for line in lines)
    return f"<ul>\n{item(pages)}</ul>\n<h2>Modules</h2>\n<ul>\n{item(lines)}</ul>"


def drawn(module, out, mubdex):
    text, caption = PICTURES[module]
    dot = subprocess.run([mubdex, "--dot", module, ROOT / "docs/pictures" / text], check=True, capture_output=True).stdout
    svg = subprocess.run(["dot", "-Tsvg"], input=dot, check=True, capture_output=True).stdout
    (out / f"{module}.svg").write_bytes(svg)
    return (f'/**\n@addtogroup {module}\n@details @htmlonly<figure><img src="{module}.svg" alt="{html.escape(caption)}">'
            f"<figcaption>{html.escape(caption)}</figcaption></figure>@endhtmlonly\n*/\n")


# ---- main ----

def write_input(modules, work, out, mubdex):
    source, names = work / "input", [module["name"] for module in modules]
    (source / "modules.dox").write_text("".join(module_heads(modules)))
    (source / "pictures.dox").write_text("".join(drawn(module, out, mubdex) for module in PICTURES))
    (source / "examples.dox").write_text(cookbook_page() + "".join(example_comment(path) for path in programs()))
    (source / "README.md").write_text(readme_page(names))
    for name in guides():
        (source / f"{name}.md").write_text(guide_page(name))
    header = (ROOT / "docs/header.html").read_text().replace("@MODULES@", contents(names))
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

    try:
        interface = api_reader.read(ROOT, strict=True)
    except RuntimeError as fault:
        sys.exit(f"docs/build.py: {fault}")
    api_reader.add_allocations(interface, api_calls.allocating(options.library))
    write_input(interface["modules"], work, pages, options.mubdex)
    settings = {"MUB_ROOT": str(ROOT), "MUB_DOCS_WORK": str(work.resolve()), "MUB_VERSION": version_text(ROOT),
                "MUB_WARN_AS_ERROR": "FAIL_ON_WARNINGS"}
    if subprocess.run(["doxygen", "docs/Doxyfile"], cwd=ROOT, env={**os.environ, **settings}).returncode != 0:
        sys.exit("docs/build.py: Doxygen failed")
    shutil.copytree(work / "html", pages, dirs_exist_ok=True)
    for path in {path for pattern in LEFTOVERS for path in pages.glob(pattern)}:
        path.unlink()
    for path in pages.glob("*.html"):
        path.write_text(tidy(path.read_text()))

    try:
        rows = search_index.rows(work / "xml", pages, {one["name"]: one["may_allocate"] for one in interface["functions"]})
    except RuntimeError as fault:
        sys.exit(f"docs/build.py: {fault}")
    synonyms = search_index.synonyms(ROOT / "docs/synonyms.txt")
    (pages / "api-index.js").write_text(
        "window.MUB_INDEX = [\n" + ",\n".join(json.dumps(row, ensure_ascii=False) for row in rows) + "\n];\n"
        f"window.MUB_SYNONYMS = {json.dumps(synonyms)};\n")
    shutil.copy(ROOT / "docs/search.js", pages)


if __name__ == "__main__":
    main()
