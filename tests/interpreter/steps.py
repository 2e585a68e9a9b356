#!/usr/bin/env python3
"""steps.py SOURCES OUT KIND…: generates steps for the functions of some records, from the public headers.

KIND is a record, or RECORD+PREFIX… to include functions with other prefixes. SOURCES are separated by commas.
Each function becomes step<op::OPERATION, ROLE…>; the types and names of parameters select their roles. An
operation with an overload of by_hand in a source gets a record, and draws its other arguments there. A function
with neither roles for all parameters nor a by_hand is an error. Functions<RECORD>::OPERATION_ is the function
itself. A family that has only its own steps lists them: // steps of KIND: FUNCTION…
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tools"))
sys.dont_write_bytecode = True
import headers  # noqa: E402

# (pattern of "type name", role). In a role, %s is the record, %t the type and %n the name. The first match is
# used; a pattern with several parts, separated by semicolons, matches as many parameters.
ROLES = [
    (r"%r \* destination", "Destination<%s>"),
    (r"(const )?%r \* .*", "Self<%s>"),
    (r"const void \* key;int64_t length", "Key<%s>"),
    (r"(uint32_t|uint64_t|const uint32_t \*) key", "Key<%s>"),
    (r"uint64_t (value|item)", "Value<%s>"),
    (r"uint64_t \* (value_out|value|item)", "Out<uint64_t>"),
    (r"int \* inserted_out", "Out<int>"),
    (r"mub_\w+ \*\* (node|entry)_out", "NodeOut<%s>"),
    (r"const char \*\* what", "Out<const char *>"),
    (r"mub_init_fn .*", "Init"),
    (r"mub_free_fn .*", "Free"),
    (r"mub_clone_fn .*", "Cloner"),
    (r"mub_pool \* source_user_pool", "UserPool<0>"),
    (r"mub_pool \* destination_user_pool", "UserPool<1>"),
]


def roles_of(function, record):
    left = [f"{parameter.type} {parameter.name}" for parameter in function.parameters]
    roles = []
    while left:
        for pattern, role in ROLES:
            parts = pattern.replace("%r", record).split(";")
            if len(parts) <= len(left) and all(re.fullmatch(part, one) for part, one in zip(parts, left)):
                if role in ("Self<%s>", "Destination<%s>"):
                    role = role.replace("Self", "Peer") if roles else "Self<%s>"
                words = left[0].split()
                roles.append(role.replace("%s", record).replace("%n", words[-1]).replace("%t", words[0]))
                left = left[len(parts):]
                break
        else:
            sys.exit(f"{function.name}: no role for `{left[0]}`, and no by_hand")
    return roles


def base_of(operation, operations):
    """An operation with suffix _x or _index is checked like the operation without the suffix."""
    without = re.sub("_x|_index", "", operation)
    return f" : {without}_" if without != operation and without in operations else ""


def main(sources, out, *kinds):
    texts = "".join(Path(source).read_text() for source in sources.split(","))
    ROLES[:0] = re.findall(r"^// role (.+) = (.+)$", texts, re.MULTILINE)
    by_hand = set(re.findall(r"op::(\w+)_\b", " ".join(re.findall(r"by_hand\([^()]*", texts))))
    operations, tables, lines, records = set(re.findall(r"op::(\w+)_\b", texts)), [], [], []
    for record, *others in (kind.split("+") for kind in kinds):
        records.append(record)
        tables.append(f"template <>\nstruct Functions<{record}> {{")
        lines.append(f"template <>\nStepsOf<{record}> steps_of<{record}>() {{\n  return {{")
        for function in headers.declarations(ROOT):
            name = function.name
            prefix = next((each for each in [record, *others] if name.startswith(each + "_")), None)
            if function.parameters is None or prefix is None:
                continue
            operation = name.removeprefix(prefix + "_")
            operations.add(operation)
            if prefix == record:
                tables.append(f"  static constexpr auto {operation}_ = {name};")
            if operation in by_hand:
                body = f"by_hand(op::{operation}_(), world, Self<{record}>(world).slot, {name});"
            else:
                body = f"step<op::{operation}_, {', '.join(roles_of(function, record))}>(world, {name});"
            lines.append(f'    {{"{name}", [](WorldOf<{record}> &world) {{ {body} }}}},')
        tables.append("};")
        lines.append("  };\n}")
    # The trailing underscore avoids clashes with keywords and macros.
    tags = "".join(f'struct {operation}_{base_of(operation, operations)} {{\n'
                   f'  static constexpr std::string_view kName = "{operation}";\n}};\n'
                   for operation in sorted(operations))
    for kind, names in re.findall(r"^// steps of (\w+): (.*)$", texts, re.MULTILINE):
        entries = "\n".join(f'    {{"{name}", {name}}},' for name in names.split())
        lines.append(f"template <>\nStepsOf<{kind}> steps_of<{kind}>() {{\n  return {{\n{entries}\n  }};\n}}")
        records.append(kind)
    functions = "\n".join(
        ['#include "mub.h"', "namespace mub_test {", "template <class R>\nstruct Functions;", *tables, "}"])
    Path(out + "_ops.inc").write_text(f"#include <string_view>\n\nnamespace mub_test::op {{\n{tags}}}\n{functions}\n")
    lines.append(f"using Kinds = ::testing::Types<{', '.join(records)}>;")
    Path(out + "_steps.inc").write_text("\n".join(
        ["namespace mub_test {", *lines, "}", '#include "interpreter/drivers.h"', ""]))


main(*sys.argv[1:])
