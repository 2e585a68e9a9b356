#!/usr/bin/env python3
"""Writes what bindings and manuals are made of, from the public headers and the built library.

    tools/api_export.py probe                                       a C program that prints the layout of the records
    tools/api_export.py json --library LIB --layout FILE OUTPUT     mub-api.json
    tools/api_export.py man MUB_API_JSON DIRECTORY                  the manual pages, in man3/ and man7/
    tools/api_export.py check [--library LIB]                       reports what the comments leave untold

`--root DIR` reads the headers of another tree. A fault is one line; the result is then 1, and nothing is written.
"""

import argparse
import json
import sys
from pathlib import Path

sys.dont_write_bytecode = True
import api_calls  # noqa: E402
import api_man  # noqa: E402
import api_model  # noqa: E402
from symbol_map import version_text  # noqa: E402


def probe_text(model):
    """Prints one line a record, "name size alignment", and one a field, "name.field offset size"."""
    lines = ["#include <stddef.h>", "#include <stdio.h>", '#include "mub.h"', "", "int main(void) {"]
    for record in model.records.values():
        name = record.name
        lines.append(f'  printf("{name} %zu %zu\\n", sizeof({name}), _Alignof({name}));')
        for field in record.fields:
            place = f"offsetof({name}, {field.name}), sizeof((({name} *)0)->{field.name})"
            lines.append(f'  printf("{name}.{field.name} %zu %zu\\n", {place});')
    return "\n".join([*lines, "  return 0;", "}", ""])


def layout_of(path):
    """{name: (size, alignment)} and {name.field: (offset, size)} of what the probe printed."""
    lines = (line.split() for line in Path(path).read_text().splitlines())
    return {name: (int(first), int(second)) for name, first, second in lines}


def record_json(model, record, layout):
    size, alignment = layout[record.name]
    fields = []
    for field in record.fields:
        offset, field_size = layout[f"{record.name}.{field.name}"]
        fields.append({"name": field.name, "type": field.type, "offset": offset, "size": field_size,
                       "doc": model.field_doc(record, field)})
    # The first word of its name is its module: mub_hash_entry is of hash.
    word = record.name.removeprefix("mub_").split("_")[0]
    return {"name": record.name, "module": word, "size": size, "alignment": alignment,
            "summary": model.record_summary(record), "fields": fields}


def function_json(function, allocating):
    return {
        "name": function.name, "module": function.module, "header": function.header, "line": function.line,
        "declaration": function.declaration, "summary": function.summary, "description": function.description,
        "parameters": [parameter._asdict() for parameter in function.parameters],
        "returns": {"type": function.result_type, "doc": function.returns},
        "failure": function.failure._asdict(), "ownership": function.ownership, "invalidates": function.invalidates,
        "cost": function.cost, "refers_to": function.refers_to, "may_allocate": function.name in allocating,
    }


def interface_json(model, layout):
    version = version_text(model.root)
    return {
        "library": "mub", "version": version, "soname": f"libmub.so.{version.split('.')[0]}",
        "modules": [module._asdict() for module in model.modules.values()],
        "records": [record_json(model, record, layout) for record in model.records.values()],
        "callbacks": [{"name": found.name, "declaration": found.code, "doc": model.callback_doc(found)}
                      for found in model.callbacks.values()],
        "objects": [{"name": found.name, "type": f"{found.type}{found.code[found.code.index('['):-1]}",
                     "declaration": f"extern {found.code}",
                     "doc": model.object_doc(found)}
                    for found in model.objects.values()],
        "functions": [function_json(function, model.allocating) for function in model.functions.values()],
    }


def faults_of(model):
    """All that cannot be told of the interface; asking for every text finds it."""
    model.functions  # noqa: B018
    for record in model.records.values():
        model.record_summary(record)
        for field in record.fields:
            model.field_doc(record, field)
    for callback in model.callbacks.values():
        model.callback_doc(callback)
    return model.faults


def model_of(arguments):
    allocating = api_calls.allocating(arguments.library) if arguments.library else ()
    return api_model.load(arguments.root, allocating)


def run(arguments):
    if arguments.command == "man":
        api_man.write_pages(json.loads(Path(arguments.json).read_text()), Path(arguments.directory))
        return 0
    model = model_of(arguments)
    if arguments.command == "probe":
        print(probe_text(model), end="")
        return 0
    faults = faults_of(model)
    print("".join(f"{fault}\n" for fault in faults), end="")
    if not faults and arguments.command == "json":
        text = json.dumps(interface_json(model, layout_of(arguments.layout)), indent=1, ensure_ascii=False)
        Path(arguments.output).write_text(text + "\n")
    return 1 if faults else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parent.parent)
    parser.set_defaults(library=None)
    commands = parser.add_subparsers(dest="command", required=True)
    commands.add_parser("probe")
    checking = commands.add_parser("check")
    checking.add_argument("--library")
    exporting = commands.add_parser("json")
    exporting.add_argument("--library", required=True)
    exporting.add_argument("--layout", required=True)
    exporting.add_argument("output")
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
