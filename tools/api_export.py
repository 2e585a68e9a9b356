#!/usr/bin/env python3
"""Writes mub-api.json and the manual pages from the public headers and the built library.

    tools/api_export.py read INTERFACE                  the documentation of the headers, as read by Doxygen
    tools/api_export.py probe INTERFACE                 a C program that prints the layout of the records
    tools/api_export.py json INTERFACE --library LIB --layout FILE OUTPUT    mub-api.json
    tools/api_export.py man MUB_API_JSON DIRECTORY      the manual pages, in man3/ and man7/
    tools/api_export.py check [--library LIB]           reports missing and wrong tags

`--root DIR` reads the headers of another tree. Each error is printed on one line. If there is one, the exit
status is 1 and nothing is written.
"""

import argparse
import json
import sys
from pathlib import Path

sys.dont_write_bytecode = True
import api_calls  # noqa: E402
import api_man  # noqa: E402
import api_reader  # noqa: E402
from symbol_map import version_text  # noqa: E402


def loaded(path):
    return json.loads(Path(path).read_text())


def write_json(value, path):
    Path(path).write_text(json.dumps(value, indent=1, ensure_ascii=False) + "\n")


def probe_text(interface):
    """A C program that prints "name size alignment" for each record, "name.field offset size" for each field."""
    lines = ["#include <stddef.h>", "#include <stdio.h>", '#include "mub.h"', "", "int main(void) {"]
    for record in interface["records"]:
        name = record["name"]
        lines.append(f'  printf("{name} %zu %zu\\n", sizeof({name}), _Alignof({name}));')
        for field in (field["name"] for field in record["fields"]):
            place = f"offsetof({name}, {field}), sizeof((({name} *)0)->{field})"
            lines.append(f'  printf("{name}.{field} %zu %zu\\n", {place});')
    return "\n".join([*lines, "  return 0;", "}", ""])


def layout_of(path):
    """{name: (size, alignment)} and {name.field: (offset, size)}, from the output of the probe."""
    lines = (line.split() for line in Path(path).read_text().splitlines())
    return {name: (int(first), int(second)) for name, first, second in lines}


def add_layout(record, layout):
    record["size"], record["alignment"] = layout[record["name"]]
    for field in record["fields"]:
        field["offset"], field["size"] = layout[f"{record['name']}.{field['name']}"]


def public(value):
    """`value` without the keys that are only for the checks, which begin with an underscore."""
    if isinstance(value, dict):
        return {key: public(part) for key, part in value.items() if not key.startswith("_")}
    return [public(part) for part in value] if isinstance(value, list) else value


def interface_json(interface, root, layout):
    for record in interface["records"]:
        add_layout(record, layout)
    version = version_text(root)
    return {"library": "mub", "version": version, "soname": f"libmub.so.{version.split('.')[0]}", **public(interface)}


def checked(interface, library):
    """Adds `may_allocate` from the machine code and prints the errors; true if there are none."""
    api_reader.add_allocations(interface, api_calls.allocating(library) if library else ())
    found = list(api_reader.faults(interface))
    print("".join(f"{fault}\n" for fault in found), end="")
    return not found


def run(arguments):
    command = arguments.command
    if command == "read":
        write_json(api_reader.read(arguments.root, strict=False), arguments.interface)
    elif command == "probe":
        print(probe_text(loaded(arguments.interface)), end="")
    elif command == "man":
        api_man.write_pages(loaded(arguments.json), Path(arguments.directory))
    elif command == "check":
        return 0 if checked(api_reader.read(arguments.root, strict=True), arguments.library) else 1
    else:
        interface = loaded(arguments.interface)
        if not checked(interface, arguments.library):
            return 1
        write_json(interface_json(interface, arguments.root, layout_of(arguments.layout)), arguments.output)
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parent.parent)
    commands = parser.add_subparsers(dest="command", required=True)
    for name in ("read", "probe", "json"):
        command = commands.add_parser(name)
        command.add_argument("interface")
        if name == "json":
            command.add_argument("--library", required=True)
            command.add_argument("--layout", required=True)
            command.add_argument("output")
    checking = commands.add_parser("check")
    checking.add_argument("--library")
    writing = commands.add_parser("man")
    writing.add_argument("json")
    writing.add_argument("directory")
    try:
        return run(parser.parse_args())
    except (RuntimeError, ValueError) as fault:
        print(fault)
        return 1


if __name__ == "__main__":
    sys.exit(main())
