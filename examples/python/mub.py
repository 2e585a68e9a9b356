"""libmub for Python. Declares every record, constant, callback and function from mub-api.json with ctypes.

    mub = Library("/usr/share/mub/mub-api.json")
    words = mub.mub_hash()
    mub.mub_hash_init(words, 1, 0)

A record is a ctypes structure, passed as it is; keep it alive until its _term. For a pointer to a number or to
a pointer, pass an instance of that ctypes type, which receives the result; for const char **, a c_char_p.
Keys and texts are bytes. For a callback, pass mub.callback("mub_free_fn", function).

The library is that of `path`; without one, that of the prefix where the file is installed, or the system's.
"""

import ctypes
import json
import re
import threading
from pathlib import Path

NUMBERS = {"void": None, "char": ctypes.c_char, "int": ctypes.c_int, "float": ctypes.c_float,
           "double": ctypes.c_double, "int16_t": ctypes.c_int16, "int64_t": ctypes.c_int64,
           "uint8_t": ctypes.c_uint8, "uint16_t": ctypes.c_uint16, "uint32_t": ctypes.c_uint32,
           "uint64_t": ctypes.c_uint64}


class Library:
    def __init__(self, api, path=None):
        with open(api, encoding="utf-8") as file:
            self.api = json.load(file)
        self._native = ctypes.CDLL(path or self._installed(api))
        self._thread = threading.local()  # `fault`: the exception of a callback
        self._types = dict(NUMBERS)
        # Records refer to each other, so all of them exist before the first one gets its fields.
        records = {record["name"]: record for record in self.api["records"]}
        for name in records:
            self._types[name] = type(name, (ctypes.Structure,), {})
            setattr(self, name, self._types[name])
        for record in records.values():
            self._set_fields(record, records)
        for constant in self.api["constants"]:
            setattr(self, constant["name"], constant["value"])
        for callback in self.api["callbacks"]:
            self._types[callback["name"]] = ctypes.CFUNCTYPE(*self._signature(callback))
        for function in self.api["functions"]:
            if "..." not in [parameter["type"] for parameter in function["parameters"]]:
                setattr(self, function["name"], self._function(function))

    def _installed(self, api):
        """The library in the prefix that has share/mub/mub-api.json. Its directory depends on the system."""
        prefix = Path(api).resolve().parent.parent.parent
        found = [path for lib in ("lib", "lib64", "lib/*-linux-*") for path in prefix.glob(f"{lib}/{self.api['soname']}")]
        return str(found[0]) if found else self.api["soname"]

    def _type(self, declared):
        """The ctypes type of a C type: "const mub_hash *", "uint64_t[4]", "const uint32_t (*)[4]"."""
        if declared == "const char **":
            return ctypes.POINTER(ctypes.c_char_p)
        declared = re.sub(r"\bconst\b", "", declared).strip()
        if declared == "void *":
            return ctypes.c_void_p
        if pointer := re.fullmatch(r"(.+)\(\*\)(.*)|(.+)\*", declared):
            return ctypes.POINTER(self._type("".join(filter(None, pointer.groups()))))
        if array := re.fullmatch(r"(.+)\[(\d+)\]", declared):
            return self._type(array[1]) * int(array[2])
        return self._types[declared.strip()]

    def _signature(self, function):
        """The types of the result and of the parameters."""
        types = [one["type"] for one in (function["returns"], *function["parameters"])]
        return [ctypes.c_char_p if type_ == "const char *" else self._type(type_) for type_ in types]

    def _set_fields(self, record, records):
        """Defines the fields of a record, those of the records that it contains first."""
        structure = self._types[record["name"]]
        if hasattr(structure, "_fields_"):
            return
        for field in record["fields"]:
            if field["type"] in records:
                self._set_fields(records[field["type"]], records)
        structure._fields_ = [(field["name"], self._type(field["type"])) for field in record["fields"]]
        offsets = [getattr(structure, field["name"]).offset for field in record["fields"]]
        if [ctypes.sizeof(structure), *offsets] != [record["size"], *(field["offset"] for field in record["fields"])]:
            raise RuntimeError(f"{record['name']}: layout differs from the library's")

    def _function(self, function):
        """Calls a C function. Rejects None where NULL would crash, and raises what a callback has raised."""
        native = getattr(self._native, function["name"])
        native.restype, *native.argtypes = self._signature(function)
        required = [not one["nullable"] for one in function["parameters"]]

        def call(*arguments):
            if any(value is None and is_required for value, is_required in zip(arguments, required)):
                raise TypeError(f"{function['declaration']}: only nullable arguments may be None")
            # ctypes accepts None for a pointer, but not for a callback.
            result = native(*(kind() if value is None else value for value, kind in zip(arguments, native.argtypes)))
            if fault := self._thread.__dict__.pop("fault", None):
                raise fault
            return result

        return call

    def callback(self, name, function):
        """A C function pointer to a Python function. What that raises is raised by the call that it runs in."""
        def guarded(*arguments):
            try:
                return function(*arguments)
            except BaseException as fault:  # must not pass through the library
                self._thread.fault = fault
                return 0
        return self._types[name](guarded)

    @staticmethod
    def key(container, entry):
        """The key of an entry of a container with byte-string keys."""
        start = ctypes.addressof(container.keys.data.contents) + entry.key_offset if entry.key_length else None
        return ctypes.string_at(start, entry.key_length)
