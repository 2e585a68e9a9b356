"""GDB printers and commands for libmub's containers.

    (gdb) print table             print keys and values, texts as text, pools as counts
    (gdb) print/r table           print the raw fields
    (gdb) mub dot table > t.dot   draw a picture with Graphviz
    (gdb) mub check table         follow every link and report inconsistencies

GDB loads this automatically with an installed libmub.so.1. Otherwise: source mub_gdb.py

No function of the program is called, so core files and optimised code work too. The program's debug
information is needed only for the type of the printed record; everything that it points to is read with the
layouts below, which are part of the library's binary interface. Every walk terminates, even in damaged
containers: no link is followed twice, and no table is read beyond its capacity.
"""

import bisect
import collections
import html
import itertools
import os
import re
import struct

import gdb
import gdb.printing
import gdb.types


class Damage(Exception):
    """A container is damaged, or was not initialised."""


# ---- memory ----

def memory(address, size):
    try:
        if address == 0 or not 0 <= size < 1 << 32:
            raise Damage(f"invalid address: {size} bytes at {address:#x}")
        return bytes(gdb.selected_inferior().read_memory(address, size))
    except (gdb.error, OverflowError):
        raise Damage(f"invalid address {address:#x}") from None


def is_readable(address):
    try:
        return bool(memory(address, 1))
    except Damage:
        return False


class Layout:
    """The layout of a struct in the library, with explicit padding."""

    order = "<"

    def __init__(self, names, form):
        self.names = names.split()
        self.form = form
        self.size = struct.calcsize("<" + form)
        self.make = collections.namedtuple("record", self.names)

    def read(self, address):
        return next(self.table(address, 1))

    def table(self, address, count, batch=64):
        """The elements of the table at an address."""
        for start in range(0, count, batch):
            content = memory(address + start * self.size, min(batch, count - start) * self.size)
            for fields in struct.iter_unpack(Layout.order + self.form, content):
                yield self.make(*fields)


ARRAYS = "items count capacity pool own_pool descending", "QqqQHH4x"
CHILDREN = " ".join("children_" + name for name in ARRAYS[0].split()), ARRAYS[1]

LAYOUTS = {
    "mub_array_entry": Layout("key_offset key_length value", "IIQ"),
    "mub_arrayd_entry": Layout("key value", "I4xQ"),
    "mub_arrayx_entry": Layout("key value", "QQ"),
    "mub_hash_entry": Layout("next hash key_offset key_length value", "QIII4xQ"),
    "mub_hashd_entry": Layout("next key value", "QI4xQ"),
    "mub_hashx_entry": Layout("next key value", "QQQ"),
    "mub_hasht_entry": Layout("next key_0 key_1 key_2 key_3 value", "Q4IQ"),
    "mub_btree_node": Layout("key_offset key_length prev next value", "IIQQQ"),
    "mub_btreed_node": Layout("key prev next value", "I4xQQQ"),
    "mub_btreex_node": Layout("key prev next value", "QQQQ"),
    "mub_btree_entry": Layout("key_offset key_length level parent " + CHILDREN[0], "IIh6xQ" + CHILDREN[1]),
    "mub_btreed_entry": Layout("key level parent " + CHILDREN[0], "Ih2xQ" + CHILDREN[1]),
    "mub_btreex_entry": Layout("key level parent " + CHILDREN[0], "Qh6xQ" + CHILDREN[1]),
    "mub_list_entry": Layout("prev next key_offset key_length value", "QQIIQ"),
    "mub_lists_entry": Layout("prev next value", "QQQ"),
    "mub_listx_block": Layout("prev next count", "QQq"),  # followed by the values
    "mub_tree_entry": Layout("parent first_child prev next value", "5Q"),
    "mub_bitree_entry": Layout("parent equal left right value", "5Q"),
}
WORD = Layout("value", "Q")


def words(address, count):
    return (word.value for word in WORD.table(address, count, batch=512))


def check_table(what, address, count, capacity, size):
    """Raises Damage if the fields of a table are invalid; returns how many of its slots can be read."""
    if not (0 <= count < 1 << 56 and 0 <= capacity < 1 << 56):
        raise Damage(f"{what}: count {count}, capacity {capacity}")
    if capacity > 0 and not (is_readable(address) and is_readable(address + capacity * size - 1)):
        raise Damage(f"{what}: {capacity} slots at invalid address {address:#x}")
    return min(count, capacity)


def plural(count, noun):
    return f"{count} {noun}" + ("" if count == 1 else "s")


def shown_word(word):
    """A value: a pointer if it is a valid address, otherwise a number."""
    if word >= 1 << 32 and is_readable(word):
        return gdb.Value(word).cast(gdb.lookup_type("void").pointer())
    return gdb.Value(word)


# ---- texts ----

class Text:
    """Base of the records that are printed as text."""

    encoding = ""

    def __init__(self, record):
        self.record = record
        try:
            self.text = self.make_text()
        except (Damage, gdb.error) as damage:
            self.text = None
            self.damage = damage

    def span(self):
        """The text: a pointer to its characters, and its length."""
        length, capacity = int(self.record["length"]), int(self.record["capacity"])
        if not 0 <= length <= capacity:
            raise Damage(f"length {length}, capacity {capacity}")
        return self.record["data"], length

    def make_text(self):
        data, length = self.span()
        if length == 0:
            return ""
        size = data.type.target().sizeof
        if length >= 1 << 56 or not (is_readable(int(data)) and is_readable(int(data) + length * size - 1)):
            raise Damage(f"{length} characters at invalid address {int(data):#x}")
        return data.lazy_string(self.encoding, length)

    def to_string(self):
        return damaged(self.record, self.damage) if self.text is None else self.text

    def display_hint(self):
        return None if self.text is None else "string"


class String(Text):
    """mub_string"""


class Wchar(Text):
    """mub_wchar"""

    @property
    def encoding(self):
        return "UTF-16BE" if is_big_endian() else "UTF-16LE"


class Char(Text):
    """mub_char: a negative length means that the text ends at its NUL."""

    def span(self):
        data, length = self.record["data"], int(self.record["length"])
        return data, length if length >= 0 else self.measured(int(data))

    def measured(self, address, limit=1 << 16):
        length = 0
        while address != 0 and length < limit and memory(address + length, 1) != b"\0":
            length += 1
        return length


class Stringx(Text):
    """mub_stringx"""

    def span(self):
        return self.record["text"] + int(self.record["start"]), max(0, int(self.record["length"]))


class Key(Text):
    """A key of a container, disguised as a record: front ends show only texts of records in one line."""

    @staticmethod
    def make(keys, offset, length):
        """A value of the type of the stream `keys`, marked by a capacity that no stream can have."""
        fields = (int(keys["data"]) + offset) % (1 << 64), length, ~length
        return gdb.Value(struct.pack(Layout.order + "Qqq", *fields), keys.type)

    @staticmethod
    def is_one(stream):
        return int(stream["capacity"]) == ~int(stream["length"])

    def span(self):
        return self.record["data"], int(self.record["length"])


class Stream(Text):
    """mub_stream: bytes that may be text."""

    def to_string(self):
        if self.text is None:
            return super().to_string()
        return f"mub_stream of {plural(int(self.record['length']), 'byte')}, capacity {int(self.record['capacity'])}"

    def children(self):
        if self.text:
            yield "data", self.text

    def display_hint(self):
        return None


def stream_or_key(record):
    try:
        return Key(record) if Key.is_one(record) else Stream(record)
    except gdb.error:  # invalid address, or optimised out: reported as for any stream
        return Stream(record)


# ---- containers ----

def damaged(record, damage):
    return f"{type_name(record.type)} <damaged or not initialised: {damage}>"


def type_name(kind):
    kind = gdb.types.get_basic_type(kind)
    return kind.tag or kind.name or ""


def record_in(value):
    """The record in an object of a C++ type of the library, or in one of its bases; None in other objects."""
    for field in gdb.types.get_basic_type(value.type).fields():
        if field.name in ("record_", "view_"):
            return value[field]
        record = record_in(value[field]) if field.is_base_class else None
        if record is not None:
            return record
    return None


def cxx_printer(value):
    """The printer of an object of a C++ type, that of its record; values of a map_of<Map, T> are shown as T."""
    kind = gdb.types.get_basic_type(value.type)
    record = record_in(value) if kind.code == gdb.TYPE_CODE_STRUCT else None
    if record is None or type_name(record.type) not in FAMILIES:
        return None
    printer = FAMILIES[type_name(record.type)](record)
    if re.match(r"mub::(\w+::)?map_of<", type_name(kind)):
        printer.value_type = kind.template_argument(1)
    return printer


def is_big_endian():
    return "big endian" in gdb.execute("show endian", to_string=True)


class Walked:
    """Base of the records with links or tables, whose nodes subclasses walk."""

    noun = "key"
    layout_suffix = "_entry"
    value_type = None  # of the objects in blocks of the value pool or, without one, in the words

    def __init__(self, record):
        Layout.order = ">" if is_big_endian() else "<"
        self.record = record
        self.name = type_name(record.type)
        numbered = re.fullmatch("mub_(?:array|hash|btree)([dxt])", self.name)
        self.kind = numbered[1] if numbered else ""
        self.layout = LAYOUTS.get(self.name + self.layout_suffix)
        self.faults = []  # found on a walk
        self.damage = None  # an error in the record itself, which makes a walk impossible
        try:
            self.check_record()
        except (Damage, gdb.error) as damage:
            self.damage = damage

    def root_address(self):
        return int(self.record["root"].address or 0)

    def field(self, path):
        value = self.record
        for name in path.split("."):
            value = value[name]
        return int(value)

    def check_record(self):
        """Raises Damage if the record itself is invalid."""
        raise NotImplementedError

    def nodes(self):
        """The nodes in order, as tuples of the subclass. Raises Damage at an error that ends the walk."""
        raise NotImplementedError

    def walk(self, nodes=None):
        """The nodes, or those of a part, up to damage that ends the walk."""
        try:
            if self.damage is None:
                yield from self.nodes() if nodes is None else nodes
        except (Damage, gdb.error) as damage:
            self.faults.append(str(damage))

    def count(self):
        return self.field("count")

    def details(self):
        return ""

    def summary(self):
        return f"{self.name} with {plural(self.count(), self.noun)}{self.details()}"

    def to_string(self):
        try:
            return self.summary() if self.damage is None else damaged(self.record, self.damage)
        except Damage as damage:  # the summary may read memory that check_record did not
            return damaged(self.record, damage)

    def show(self, node):
        """What is printed of a node: key and value, or only the value."""
        return self.shown_key(node), self.shown_value(node.value)

    def shown_value(self, word):
        if self.value_type is None:
            return shown_word(word)
        if self.field("value_pool") == 0:
            return gdb.Value(struct.pack(Layout.order + "Q", word)[:self.value_type.sizeof], self.value_type)
        return gdb.Value(word).cast(self.value_type.pointer()).dereference()

    def check_parent(self, parent, address, entry):
        """Checks a link to a parent; 0 if the address of the root is unknown because it is not a variable."""
        if parent not in (0, entry.parent):
            self.faults.append(f"parent of {address:#x} is {entry.parent:#x}, not {parent:#x}")

    # Keys. The bytes of byte-string keys are in the key stream of the container.

    def check_keys(self):
        if self.kind == "":
            check_table("keys", self.field("keys.data"), self.field("keys.length"), self.field("keys.capacity"), 1)

    def key_bytes(self, node):
        if node.key_offset + node.key_length > self.field("keys.length"):
            raise Damage(f"the key at {node.key_offset}, {plural(node.key_length, 'byte')}, is outside the key stream")
        return memory(self.field("keys.data") + node.key_offset, node.key_length) if node.key_length > 0 else b""

    def shown_key(self, node):
        if self.kind in ("d", "x"):
            return gdb.Value(self.number(node))
        if self.kind == "t":
            key = struct.pack(Layout.order + "4I", *node[1:5])
            return gdb.Value(key, gdb.lookup_type("unsigned int").array(3))
        try:
            self.key_bytes(node)
        except Damage as damage:
            self.faults.append(str(damage))
            return "<no key>"
        return Key.make(self.record["keys"], node.key_offset, node.key_length)

    def number(self, node):
        return node.key

    def label(self, node):
        """The key, for a picture."""
        if self.kind in ("d", "x"):
            return str(self.number(node))
        if self.kind == "t":
            return " ".join(f"{word:08x}" for word in node[1:5])
        try:
            return self.key_bytes(node).decode(errors="replace")
        except Damage:
            return "<no key>"


class Container(Walked):
    """Base of the records that print their content. Of all others, front ends show only the summary."""

    hint = "map"  # how GDB writes the children: by keys, by positions ("array"), by names (None)

    def children(self):
        shown = itertools.chain.from_iterable(self.show(node) for node in self.walk())
        position = 0
        for position, child in enumerate(shown, 1):
            yield str(position - 1), child
        for fault in self.faults:
            if self.hint == "map":
                yield str(position), "<damaged>"
                position += 1
            yield str(position), f"<{fault}>"
            position += 1

    def display_hint(self):
        return self.hint


class Once:
    """The addresses met on a walk; each may be met only once."""

    def __init__(self):
        self.met = set()

    def add(self, address):
        if address in self.met:
            raise Damage(f"{address:#x} is linked twice")
        self.met.add(address)


class Array(Container):
    """mub_array, mub_arrayd, mub_arrayx"""

    def check_record(self):
        self.readable = check_table("entries", self.field("entries"), self.count(), self.field("capacity"),
                                    self.layout.size)
        self.check_keys()

    def details(self):
        return "" if self.readable == self.count() else f", but capacity {self.field('capacity')}"

    def nodes(self):
        return self.layout.table(self.field("entries"), self.readable)


class Arrays(Container):
    """mub_arrays"""

    hint = "array"
    noun = "item"

    def check_record(self):
        self.readable = check_table("items", self.field("items"), self.count(), self.field("capacity"), WORD.size)

    details = Array.details

    def nodes(self):
        return WORD.table(self.field("items"), self.readable)

    def show(self, node):
        return (shown_word(node.value),)


class Arrayt(Arrays):
    """mub_arrayt: the first four words are in the record itself."""

    noun = "word"
    inline_words = 4

    def check_record(self):
        count, capacity = self.count(), self.field("capacity")
        self.readable = check_table("words", 0, count, 0, WORD.size) + min(count, capacity)
        check_table("tail", self.field("tail"), 0, max(0, capacity - self.inline_words), WORD.size)

    def nodes(self):
        for i in range(min(self.readable, self.inline_words)):
            yield WORD.make(int(self.record["inline_items"][i]))
        yield from WORD.table(self.field("tail"), max(0, self.readable - self.inline_words))


class Hash(Container):
    """mub_hash, mub_hashd, mub_hashx, mub_hasht. A node is (bucket, address, entry)."""

    def check_record(self):
        buckets = self.field("buckets.count")
        if self.count() < 0:
            raise Damage(f"count {self.count()}")
        check_table("buckets", self.field("buckets.items"), buckets, self.field("buckets.capacity"), WORD.size)
        if buckets > self.field("buckets.capacity"):
            raise Damage(f"buckets: count {buckets}, capacity {self.field('buckets.capacity')}")
        self.check_keys()

    def details(self):
        return f" in {plural(self.field('buckets.count'), 'bucket')}"

    def nodes(self):
        once = Once()
        buckets = self.field("buckets.count")
        for bucket, address in enumerate(words(self.field("buckets.items"), buckets)):
            while address != 0:
                once.add(address)
                entry = self.layout.read(address)
                if self.bucket_of(entry, buckets) not in (bucket, None):
                    self.faults.append(f"the entry at {address:#x} is in the wrong bucket, {bucket}")
                yield bucket, address, entry
                address = entry.next
        if len(once.met) != self.count():
            self.faults.append(f"count is {self.count()}, but {len(once.met)} are linked")

    def bucket_of(self, entry, buckets):
        if self.kind == "t":
            return None
        return (entry.key if self.kind else entry.hash) % buckets

    def show(self, node):
        return super().show(node[2])


class Btree(Container):
    """mub_btree, mub_btreed, mub_btreex. A node here is (address of the leaf, record)."""

    KEY_TYPES = {1: "i", 2: "I", 5: "f", 3: "q", 4: "Q", 6: "d"}

    def root(self):
        root = self.record["root"]
        fields = [int(root[name]) for name in self.layout.names if not name.startswith("children_")]
        return self.layout.make(*fields, *(int(root["children"][name]) for name in ARRAYS[0].split()))

    def check_entry(self, entry):
        if not 0 <= entry.level < 16:
            raise Damage(f"level {entry.level}")
        check_table("children", entry.children_items, entry.children_count, entry.children_capacity, WORD.size)
        if entry.children_count > entry.children_capacity:
            raise Damage(f"children: count {entry.children_count}, capacity {entry.children_capacity}")

    def check_record(self):
        if self.count() < 0:
            raise Damage(f"count {self.count()}")
        self.check_entry(self.root())
        self.check_keys()

    def details(self):
        levels = self.root().level + 1
        return f" on {plural(levels, 'level')}" if self.count() > 0 else ""

    def child_entries(self, parent, entry):
        """(address, entry) of the children of an inner node."""
        for address in words(entry.children_items, entry.children_count):
            child = self.layout.read(address)
            if child.level != entry.level - 1:
                raise Damage(f"level {child.level} at {address:#x}, below level {entry.level}")
            self.check_entry(child)
            self.check_parent(parent, address, child)
            yield address, child

    def records(self, leaf):
        for address in words(leaf.children_items, leaf.children_count):
            yield address, LAYOUTS[self.name + "_node"].read(address)

    def leaves(self):
        """Follows the tables of children: the links between records may be out of date."""
        root = self.root()
        once = Once()
        ahead = [iter([(self.root_address(), root)])]
        while ahead:
            address, entry = next(ahead[-1], (None, None))
            if entry is None:
                ahead.pop()
                continue
            once.add(address)
            if entry.level == 0:
                yield entry
            else:
                ahead.append(self.child_entries(address, entry))

    def nodes(self):
        met = 0
        once = Once()
        before = None
        for leaf in self.leaves():
            for address, record in self.records(leaf):
                once.add(address)
                met += 1
                key = self.sort_key(record)
                if before is not None and key is not None and not before < key:
                    self.faults.append(f"the record at {address:#x} is out of order")
                before = key
                yield record
        if met != self.count():
            self.faults.append(f"count is {self.count()}, but {met} are linked")

    def sort_key(self, record):
        """A sort key, or None if the order is unknown."""
        if self.kind:
            key = self.number(record)
            return key if key == key else None
        try:
            key = self.key_bytes(record)
        except Damage:
            return None
        return key.lower() if self.field("nocase") else key

    def number(self, node):
        stored = "I" if self.kind == "d" else "Q"
        form = self.KEY_TYPES.get(self.field("key_type"), stored)
        if struct.calcsize(form) != struct.calcsize(stored):
            form = stored
        return struct.unpack("<" + form, struct.pack("<" + stored, node.key))[0]


class Cursor(Container):
    """mub_btree_cursor, mub_btreed_cursor, mub_btreex_cursor: the record at the cursor."""

    def check_record(self):
        if not is_readable(self.field("tree")):
            raise Damage(f"invalid address of the tree: {self.field('tree'):#x}")
        self.tree = Btree(self.record["tree"].dereference())
        if self.tree.damage is not None:
            raise self.tree.damage
        self.index, self.leaf = self.field("index"), None
        if self.field("leaf") != 0:
            self.leaf = self.tree.layout.read(self.field("leaf"))
            self.tree.check_entry(self.leaf)
            if not -1 <= self.index <= self.leaf.children_count:
                raise Damage(f"index {self.index} in a leaf of {self.leaf.children_count}")

    def summary(self):
        if self.leaf is None:
            return f"{self.name} of an empty tree"
        if self.index < 0:
            return f"{self.name} before the first record"
        if self.index == self.leaf.children_count:
            return f"{self.name} after the last record"
        return f"{self.name} at {self.index} in a leaf of {plural(self.leaf.children_count, 'record')}"

    def nodes(self):
        if self.leaf is not None and self.index >= 0:
            for _, record in itertools.islice(self.tree.records(self.leaf), self.index, self.index + 1):
                yield record

    def show(self, node):
        return self.tree.show(node)


class List(Container):
    """mub_list: keys and values. A node is an entry."""

    def check_record(self):
        ends = self.field("head"), self.field("tail")
        if self.count() < 0 or (0 in ends) != (self.count() == 0):
            raise Damage(f"count {self.count()}, head {ends[0]:#x}, tail {ends[1]:#x}")
        for end in ends:
            if end != 0 and not is_readable(end):
                raise Damage(f"invalid address {end:#x}")
        self.check_keys()

    def links(self):
        """(address, entry) from head to tail."""
        once = Once()
        before, address = 0, self.field("head")
        while address != 0:
            once.add(address)
            entry = self.layout.read(address)
            if entry.prev != before:
                self.faults.append(f"prev of {address:#x} is {entry.prev:#x}, not {before:#x}")
            yield address, entry
            before, address = address, entry.next
        if before != self.field("tail"):
            self.faults.append(f"tail is {self.field('tail'):#x}, not {before:#x}")

    def nodes(self):
        met = 0
        for _, entry in self.links():
            met += 1
            yield entry
        if met != self.count():
            self.faults.append(f"count is {self.count()}, but {met} are linked")


class Lists(List):
    """mub_lists: only values. A node is an entry."""

    hint = "array"
    noun = "value"

    def check_keys(self):
        pass

    def show(self, node):
        return (shown_word(node.value),)


def block_values(address, block):
    if not 0 <= block.count <= 32:
        raise Damage(f"the block at {address:#x} has a count of {block.count}")
    yield from words(address + LAYOUTS["mub_listx_block"].size, block.count)


class Listx(Lists):
    """mub_listx. A node is a value."""

    layout_suffix = "_block"

    def nodes(self):
        met = 0
        for address, block in self.links():
            for value in block_values(address, block):
                met += 1
                yield WORD.make(value)
        if met != self.count():
            self.faults.append(f"count is {self.count()}, but the blocks hold {met}")


class ListxBlock(Container):
    """mub_listx_block: its values, without the spare slots."""

    hint = "array"
    noun = "value"

    def check_record(self):
        if not 0 <= self.count() <= 32:
            raise Damage(f"count {self.count()}")

    def details(self):
        return f", prev {self.field('prev'):#x}, next {self.field('next'):#x}"

    def nodes(self):
        return (WORD.make(int(self.record["values"][i])) for i in range(self.count()))

    def show(self, node):
        return (shown_word(node.value),)


class Path:
    """The place of an entry in a tree: the path of its parent, None for the root, and a step."""

    def __init__(self, up=None, step=None):
        self.up = up
        self.step = step

    def __str__(self, limit=6):
        path, steps = self, []
        while path.up is not None and len(steps) < limit:
            steps.append(str(path.step))
            path = path.up
        return ("..." if path.up is not None else "") + ".".join(reversed(steps)) or "root"


class RootedTree(Container):
    """Base of the trees whose root is in the record itself. A node is (path, address, entry)."""

    hint = None
    noun = "link"

    def root(self):
        return self.layout.make(*(self.field("root." + name) for name in self.layout.names))

    def check_record(self):
        for name in self.layout.names[1:-1]:
            address = self.field("root." + name)
            if address != 0 and not is_readable(address):
                raise Damage(f"invalid address {address:#x}")

    def children(self):
        for path, _, entry in self.walk():
            yield str(path), shown_word(entry.value)
        for fault in self.faults:
            yield "damaged", f"<{fault}>"

    def show(self, node):
        return (shown_word(node[2].value),)


class Tree(RootedTree):
    """mub_tree: paths count the children of each entry from 1."""

    def nodes(self):
        once = Once()
        root = self.root()
        once.add(self.root_address())
        top = Path()
        if root.value != 0:
            yield top, self.root_address(), root
        ahead = [(top, self.ring(self.root_address(), root))]
        while ahead:
            above, ring = ahead[-1]
            place, address, entry = next(ring, (0, 0, None))
            if entry is None:
                ahead.pop()
                continue
            once.add(address)
            path = Path(above, place)
            yield path, address, entry
            if entry.first_child != 0:
                ahead.append((path, self.ring(address, entry)))

    def ring(self, parent, entry):
        """(index, address, entry) of the children of an entry."""
        first = address = entry.first_child
        place = before = 0
        while address != 0:
            place += 1
            child = self.layout.read(address)
            self.check_parent(parent, address, child)
            if place > 1 and child.prev != before:
                self.faults.append(f"prev of {address:#x} is {child.prev:#x}, not {before:#x}")
            yield place, address, child
            before, address = address, child.next
            if address == first:
                return
        if first != 0:
            self.faults.append(f"the ring of {first:#x} is not closed")


class Bitree(RootedTree):
    """mub_bitree, in order. Paths consist of the names of links."""

    def nodes(self):
        once = Once()
        once.add(self.root_address())
        ahead = [(Path(), self.root_address(), self.root(), False)]
        while ahead:
            path, address, entry, is_due = ahead.pop()
            if is_due:
                yield path, address, entry
                continue
            # Last in, first out: entries that sort later are pushed first.
            for name, waits in (("right", True), ("equal", True), (None, False), ("left", True)):
                if not waits:
                    ahead.append((path, address, entry, True))
                    continue
                linked = getattr(entry, name)
                if linked != 0:
                    once.add(linked)
                    ahead.append((Path(path, name), linked, self.layout.read(linked), False))


class Bits(Container):
    """mub_bits: the numbers of the bits that are set."""

    hint = "array"
    counted_bytes = 1 << 20

    def check_record(self):
        size = self.field("size")
        check_table("bits", self.field("data"), size, size, 1)

    def count(self):
        size = self.field("size")
        content = memory(self.field("data"), min(size, self.counted_bytes)) if size > 0 else b""
        return sum(bin(byte).count("1") * times for byte, times in collections.Counter(content).items())

    def summary(self):
        size = self.field("size")
        where = " of the first MiB" if size > self.counted_bytes else ""
        return f"mub_bits of {plural(size, 'byte')}, {plural(self.count(), 'bit')}{where} set"

    def nodes(self, batch=1 << 16):
        data, size = self.field("data"), self.field("size")
        for start in range(0, size, batch):
            content = memory(data + start, min(batch, size - start))
            for match in re.finditer(b"[^\0]", content):  # a set may be large and almost empty
                for bit in range(8):
                    if match.group()[0] & 0x80 >> bit:
                        yield 8 * (start + match.start()) + bit

    def show(self, node):
        return (gdb.Value(node),)


class Pool(Walked):
    """mub_pool: only counts. A node is (chunk, slot, address) of a block that was ever taken."""

    def check_record(self):
        for name in "block_size", "blocks_per_chunk", "live_count":
            if not 0 <= self.field(name) < 1 << 56:
                raise Damage(f"{name} {self.field(name)}")
        if self.field("block_size") == 0 and self.field("chunk_count") > 0:
            raise Damage(f"block_size 0, but {plural(self.field('chunk_count'), 'chunk')}")
        for table, group in ("chunks", "chunk"), ("free_pages", "free"):
            count, capacity, used = (self.field(f"{group}_{name}") for name in ("count", "capacity", "used"))
            check_table(table, self.field(table), count, capacity, WORD.size)
            if count > capacity or not -1 <= used <= self.field("blocks_per_chunk"):
                raise Damage(f"{table}: count {count}, capacity {capacity}, used {used}")

    def summary(self):
        return (f"mub_pool with {plural(self.field('live_count'), 'live block')} of "
                f"{plural(self.field('block_size'), 'byte')}, {self.used('free')} free, "
                f"in {plural(self.field('chunk_count'), 'chunk')} of {self.field('blocks_per_chunk')}")

    def used(self, group):
        """The number of blocks taken from chunks, or of addresses on free pages."""
        pages = self.field(group + "_count")
        return (pages - 1) * self.field("blocks_per_chunk") + self.field(group + "_used") if pages > 0 else 0

    def chunks(self):
        """(address, blocks used) of each."""
        per_chunk, left = self.field("blocks_per_chunk"), self.used("chunk")
        for base in words(self.field("chunks"), self.field("chunk_count")):
            yield base, min(per_chunk, left)
            left -= per_chunk

    def nodes(self):
        size = self.field("block_size")
        for chunk, (base, used) in enumerate(self.chunks()):
            if not (is_readable(base) and is_readable(base + max(1, used * size) - 1)):
                raise Damage(f"invalid address {base:#x} of chunk {chunk}")
            for slot in range(used):
                yield chunk, slot, base + slot * size
        self.check_free()

    def free_blocks(self):
        """The returned blocks; the first one is reused next."""
        blocks = []
        left = self.used("free")
        for page in words(self.field("free_pages"), self.field("free_count")):
            blocks += words(page, min(left, self.field("blocks_per_chunk")))
            left -= self.field("blocks_per_chunk")
        return blocks[::-1]

    def show(self, node):
        return ()

    def check_free(self):
        free, taken, live = self.free_blocks(), self.used("chunk"), self.field("live_count")
        chunks = sorted(self.chunks())
        # A clone made without a chunk map leaves nulls on its free stack.
        for block, times in collections.Counter(filter(None, free)).items():
            chunk = bisect.bisect_right(chunks, (block, 1 << 64)) - 1
            base, used = chunks[chunk] if chunk >= 0 else (0, 0)
            slot, rest = divmod(block - base, max(1, self.field("block_size")))
            if rest != 0 or slot >= used:
                self.faults.append(f"{block:#x} is on the free stack, but is not a block of the pool")
            if times > 1:
                self.faults.append(f"{block:#x} is on the free stack {times} times")
        if live + len(free) > taken:
            self.faults.append(f"live_count is {live}, but of {taken} blocks {len(free)} are free")


FAMILIES = {
    "mub_stream": stream_or_key, "mub_string": String, "mub_stringx": Stringx, "mub_char": Char, "mub_wchar": Wchar,
    "mub_pool": Pool, "mub_bits": Bits, "mub_tree": Tree, "mub_bitree": Bitree,
    "mub_array": Array, "mub_arrayd": Array, "mub_arrayx": Array, "mub_arrays": Arrays, "mub_arrayt": Arrayt,
    "mub_hash": Hash, "mub_hashd": Hash, "mub_hashx": Hash, "mub_hasht": Hash,
    "mub_btree": Btree, "mub_btreed": Btree, "mub_btreex": Btree,
    "mub_btree_cursor": Cursor, "mub_btreed_cursor": Cursor, "mub_btreex_cursor": Cursor,
    "mub_list": List, "mub_lists": Lists, "mub_listx": Listx, "mub_listx_block": ListxBlock,
}


# ---- pictures ----

BLUE, YELLOW, RED, GREY = "#dce6f2", "#fdf1d3", "#f3d6d6", "#eef1f4"  # light, for dark text on any background
MAX_BUCKETS, MAX_CHAIN, MAX_LEAVES, MAX_BRANCHES, MAX_LINKED, MAX_CHUNKS, MAX_BLOCKS = 64, 6, 8, 2, 24, 8, 16
MAX_LETTERS, MAX_COUNTED = 16, 10000


def escape(text):
    """Only ASCII, as GDB may be unable to write other characters."""
    text = text if len(text) <= MAX_LETTERS else text[:MAX_LETTERS] + "\u2026"
    text = re.sub("[\0-\x1f\x7f]", "\ufffd", text)
    return html.escape(text).encode("ascii", "xmlcharrefreplace").decode()


def cell(text, attributes=""):
    return f"<TD {attributes}>{escape(str(text))}</TD>"


def filled(text, fill):
    return cell(text, f'BGCOLOR="{fill}"')


def more(count):
    return f"&#8230; {count} more"


def word_text(word):
    return f"{word:#x}" if word >= 1 << 32 else str(word)


class Picture:
    """The lines of a Graphviz file."""

    def __init__(self, container, attributes):
        self.container = container
        self.lines = [
            attributes,
            'bgcolor=transparent fontname="sans-serif" fontsize=11 fontcolor="#7f8c9b" labelloc=t',
            'node [shape=plain fontname="sans-serif" fontsize=11 fontcolor="#1d2733"]',
            'edge [color="#7f8c9b" fontcolor="#7f8c9b" fontname="sans-serif" fontsize=9 arrowsize=0.6]']
        self.count = 0

    def node(self, kind, rows, fill=YELLOW):
        """Draws a table of rows of cells. Returns its name."""
        self.count += 1
        body = "".join(f"<TR>{''.join(row)}</TR>" for row in rows)
        self.lines.append(f'n{self.count} [class={kind} label=<<TABLE BORDER="0" CELLBORDER="1" CELLSPACING="0" '
                          f'COLOR="#7f8c9b" BGCOLOR="{fill}">{body}</TABLE>>]')
        return f"n{self.count}"

    def dots(self, source, count):
        """Draws how much is left out after a node."""
        self.count += 1
        self.lines.append(f'n{self.count} [class=more label="{more(count)}" fontcolor="#7f8c9b"]')
        self.edge(source, f"n{self.count}")

    def edge(self, source, target, attributes=""):
        self.lines.append(f"{source} -> {target} [{attributes}]")

    def text(self):
        title = re.sub(r'[<>&"\\]', "", "; ".join([self.container.to_string(), *self.container.faults[:5]]))
        return "\n  ".join([f"digraph {self.container.name} {{", f'label="{title}"', *self.lines]) + "\n}\n"


def draw_hash(table):
    picture = Picture(table, "rankdir=LR nodesep=0.06 ranksep=0.25")
    count = table.field("buckets.count")
    rows = [[cell(i, f'PORT="b{i}"')] for i in range(min(count, MAX_BUCKETS))]
    rows += [[f"<TD>{more(count - MAX_BUCKETS)}</TD>"]] if count > MAX_BUCKETS else []
    buckets = picture.node("buckets", [[cell("bucket")]] + rows, BLUE)
    drawn = itertools.takewhile(lambda node: node[0] < MAX_BUCKETS, table.walk())
    for bucket, chain in itertools.groupby(drawn, lambda node: node[0]):
        before = f"{buckets}:b{bucket}:e"
        for _, _, entry in itertools.islice(chain, MAX_CHAIN):
            node = picture.node("entry", [[cell(table.label(entry)), cell(word_text(entry.value))]])
            picture.edge(before, node)
            before = node
        left_out = sum(1 for _ in chain)
        if left_out > 0:
            picture.dots(before, left_out)
    return picture


def draw_btree(tree):
    picture = Picture(tree, "nodesep=0.2 ranksep=0.5")

    def draw_leaf(entry):
        rows = [[cell(tree.label(record), 'ALIGN="LEFT"'), cell(word_text(record.value), 'ALIGN="RIGHT"')]
                for _, record in tree.walk(tree.records(entry))]
        return picture.node("leaf", [[cell("level 0", f'COLSPAN="2" BGCOLOR="{BLUE}"')]] + rows)

    def draw_entry(address, entry):
        if entry.level == 0:
            return draw_leaf(entry)
        drawn = min(entry.children_count, MAX_LEAVES if entry.level == 1 else MAX_BRANCHES)
        children = list(itertools.islice(tree.walk(tree.child_entries(address, entry)), drawn))
        cells = [cell(tree.label(child), f'PORT="c{i}"') for i, (_, child) in enumerate(children)]
        cells += [f"<TD>{more(entry.children_count - drawn)}</TD>"] if drawn < entry.children_count else []
        head = [[cell(f"level {entry.level}", f'COLSPAN="{max(1, len(cells))}"')]]
        node = picture.node("branch", head + ([cells] if cells else []), BLUE)
        for i, child in enumerate(children):
            picture.edge(f"{node}:c{i}:s", draw_entry(*child) + ":n")
        return node

    draw_entry(tree.root_address(), tree.root())
    return picture


def draw_list(chain):
    picture = Picture(chain, "rankdir=LR nodesep=0.1 ranksep=0.25")
    before = picture.node("head", [[cell("head")]], BLUE)
    links = chain.walk(chain.links())
    for i, (address, entry) in enumerate(itertools.islice(links, MAX_LINKED)):
        node = picture.node("entry", list_rows(chain, address, entry))
        picture.edge(before, node, "dir=both" if i > 0 else "")
        before = node
    left_out = sum(1 for _ in itertools.islice(links, MAX_COUNTED))
    if left_out > 0:
        picture.dots(before, left_out)
    else:
        picture.edge(picture.node("tail", [[cell("tail")]], BLUE), before, "constraint=false")
    return picture


def list_rows(chain, address, entry):
    if chain.name == "mub_listx":
        return [[cell(word_text(value))] for value in chain.walk(block_values(address, entry))] or [[cell("empty")]]
    key = [cell(chain.label(entry))] if chain.name == "mub_list" else []
    return [key + [cell(word_text(entry.value))]]


def draw_tree(tree):
    """The root is drawn even if its value is 0, as the links start there."""
    picture = Picture(tree, "nodesep=0.2 ranksep=0.35")
    root = picture.node("root", [[cell("root")], [cell(word_text(tree.field("root.value")))]], BLUE)
    nodes = (node for node in tree.walk() if node[0].up is not None)
    drawn = list(itertools.islice(nodes, MAX_LINKED))
    names = {path: picture.node("entry", [[cell(word_text(entry.value))]]) for path, _, entry in drawn}
    for path, name in names.items():
        source = names.get(path.up) if path.up.up is not None else root
        if source is not None:
            picture.edge(source, name, f'label="{path.step}"' + (" style=dashed" if path.step == "equal" else ""))
    left_out = sum(1 for _ in itertools.islice(nodes, MAX_COUNTED))
    if left_out > 0:
        picture.dots(root, left_out)
    return picture


def draw_pool(pool):
    picture = Picture(pool, "")
    turns = {block: turn for turn, block in enumerate(pool.free_blocks(), 1)}
    per_chunk, size = pool.field("blocks_per_chunk"), pool.field("block_size")
    rows = []
    for chunk, (base, used) in enumerate(itertools.islice(pool.chunks(), MAX_CHUNKS)):
        row = [filled(f"chunk {chunk}", BLUE), filled(f"{base:#x}", BLUE)]
        for slot in range(min(per_chunk, MAX_BLOCKS)):
            turn = turns.get(base + slot * size)
            row.append(filled("unused", GREY) if slot >= used else
                       filled(f"free {turn}", RED) if turn else filled("live", YELLOW))
        row += [f"<TD>{more(per_chunk - MAX_BLOCKS)}</TD>"] if per_chunk > MAX_BLOCKS else []
        rows.append(row)
    left_out = pool.field("chunk_count") - len(rows)
    rows += [[f"<TD>{more(left_out)}</TD>"]] if left_out > 0 else []
    picture.node("pool", rows or [[cell("no chunk")]], BLUE)
    return picture


PICTURES = {Hash: draw_hash, Btree: draw_btree, List: draw_list, Lists: draw_list, Listx: draw_list, Tree: draw_tree,
            Bitree: draw_tree, Pool: draw_pool}


# ---- commands ----

def container_at(expression):
    """The container that an expression denotes or points to."""
    if not expression:
        raise gdb.GdbError("expected a container, or a pointer to one")
    record = gdb.parse_and_eval(expression)
    if record.type.strip_typedefs().code == gdb.TYPE_CODE_PTR:
        record = record.dereference()
    if type_name(record.type).startswith("mub::"):
        record = record_in(record) or record
    family = FAMILIES.get(type_name(record.type))
    if family is None or not (isinstance(family, type) and issubclass(family, Walked)):
        raise gdb.GdbError(f"{expression} is not a container that can be checked or drawn, but has the type {type_name(record.type)}")
    return family(record)


class MubCommand(gdb.Command):
    """Inspect libmub's containers. (The command print shows their keys and values.)
mub dot VAR [> FILE]   a picture for Graphviz
mub check VAR          follow every link and report inconsistencies"""

    def __init__(self):
        super().__init__("mub", gdb.COMMAND_DATA, prefix=True)


class MubDot(gdb.Command):
    """Draw a container for Graphviz.
usage: mub dot VAR [> FILE]
VAR is a hash table, B-tree, list, tree or pool, or points to one. Large containers are drawn in part, with the
number of items left out.
Example: mub dot table > /tmp/t.dot, then in a shell: dot -Tsvg /tmp/t.dot -o t.svg"""

    def __init__(self):
        super().__init__("mub dot", gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty):
        expression, file = re.fullmatch(r"\s*(.*?)(?:\s+>\s*(\S+))?\s*", argument).groups()
        container = container_at(expression)
        draw = PICTURES.get(type(container))
        if draw is None:
            raise gdb.GdbError(f"{container.name} cannot be drawn; hash tables, B-trees, lists, trees and pools can")
        if container.damage is not None:
            raise gdb.GdbError(container.to_string())
        try:
            text = draw(container).text()
            if file is None:
                gdb.write(text)
            else:
                with open(os.path.expanduser(file), "w", encoding="ascii") as out:
                    out.write(text)
        except (Damage, OSError) as problem:
            raise gdb.GdbError(str(problem)) from None


class MubCheck(gdb.Command):
    """Follow every link of a container and report inconsistencies.
usage: mub check VAR
VAR is a container, or points to one."""

    def __init__(self):
        super().__init__("mub check", gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty, shown=20):
        container = container_at(argument.strip())
        for node in container.walk():
            container.show(node)  # its key may be damaged
        faults = container.faults if container.damage is None else [str(container.damage)]
        for fault in faults[:shown]:
            gdb.write(f"{fault}\n")
        gdb.write(f"{container.to_string()}: {plural(len(faults), 'error') if faults else 'intact'}\n")


def register():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("libmub")
    for name, family in FAMILIES.items():
        printers.add_printer(name, f"^{name}$", family)
    printers.add_printer("mub.hpp", "^mub::", cxx_printer)
    gdb.printing.register_pretty_printer(gdb.current_objfile(), printers, replace=True)
    MubCommand()
    MubDot()
    MubCheck()


register()
