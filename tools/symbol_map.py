"""Reads and writes src/mub.map, the linker's version script: the exported names and their versions.

A name stays in the node of the version that released it. A new name goes to the node of the current version,
the MAJOR.MINOR of mub_base.h.
"""

import re
from pathlib import Path

NODE = re.compile(r"^(\w+\.\d+) \{\n(.*?)^\}", re.MULTILINE | re.DOTALL)
LISTED = re.compile(r"^ +(\w+);$", re.MULTILINE)
VERSION_PART = re.compile(r"^#define MUB_VERSION_(MAJOR|MINOR|PATCH) (\d+)$", re.MULTILINE)


def header_version(root):
    """(major, minor, patch) of include/mub_base.h."""
    parts = dict(VERSION_PART.findall((Path(root) / "include/mub_base.h").read_text()))
    return tuple(int(parts[part]) for part in ("MAJOR", "MINOR", "PATCH"))


def version_text(root):
    return ".".join(map(str, header_version(root)))


def map_nodes(root):
    """The names of each node of src/mub.map, in the order of the nodes."""
    path = Path(root) / "src/mub.map"
    text = path.read_text() if path.exists() else ""
    return {node: LISTED.findall(body) for node, body in NODE.findall(text)}


def map_text(nodes):
    text, parent = "", ""
    for node, names in nodes.items():
        listed = "".join(f"    {name};\n" for name in sorted(set(names)))
        hidden = "" if parent else "  local:\n    *;\n"
        text += f"{node} {{\n  global:\n{listed}{hidden}}}{parent};\n"
        parent = f" {node}"
    return text


def updated_map(root, names):
    """src/mub.map for the declared `names`. Names of earlier versions stay, whether declared or not."""
    names, nodes = set(names), map_nodes(root)
    major, minor, _ = header_version(root)
    current = f"MUB_{major}.{minor}"
    nodes[current] = [name for name in nodes.get(current, []) if name in names]
    placed = {name for listed in nodes.values() for name in listed}
    nodes[current] += names - placed
    return map_text({node: listed for node, listed in nodes.items() if listed})
