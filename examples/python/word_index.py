"""Prints the words of a text that begin with PREFIX, with their lines, and then the most frequent words.

    word_index.py MUB_API PREFIX [LIBRARY] <text

LIBRARY is the path of the shared library, if it is not in the prefix that has MUB_API.
"""

import ctypes
import re
import sys

from mub import Library


def read(mub, text, index, counts, lines):
    """Adds the words to the tree `index`, whose values are the keys of `lines`, and to the table `counts`."""
    record, entry = ctypes.POINTER(mub.mub_btree_node)(), ctypes.POINTER(mub.mub_hash_entry)()
    for number, line in enumerate(text.lower().splitlines(), 1):
        for word in re.findall(rb"\w+", line):
            is_new = mub.mub_btree_node_set(index, word, len(word), record)
            mub.mub_hash_entry_set(counts, word, len(word), entry)
            if not record or not entry:
                raise MemoryError
            if is_new:
                record.contents.value = len(lines) + 1
            lines.setdefault(record.contents.value, []).append(number)
            entry.contents.value += 1


def with_prefix(mub, index, prefix):
    """Yields the key and the value of each record whose key begins with `prefix`, in key order."""
    cursor = mub.mub_btree_cursor()
    record = mub.mub_btree_cursor_seek(cursor, index, prefix, len(prefix))
    while record and (key := mub.key(index, record.contents)).startswith(prefix):
        yield key, record.contents.value
        record = mub.mub_btree_cursor_next(cursor)


def by_count(mub, counts):
    """The addresses of the entries of a table in an array, those with the greatest values first."""
    entries, bucket = mub.mub_arrays(), ctypes.c_int64()
    mub.mub_arrays_init(entries, 0)
    entry = mub.mub_hash_entry_first(counts, bucket)
    while entry:
        mub.mub_arrays_append(entries, ctypes.addressof(entry.contents))
        entry = mub.mub_hash_entry_next(counts, bucket, entry)
    value = lambda address: mub.mub_hash_entry.from_address(address).value
    compare = mub.callback("mub_compare_item_fn", lambda item, other, _: value(other) - value(item))
    mub.mub_arrays_qsort_p(entries, compare)
    return entries


def main(api, prefix, library=None):
    mub = Library(api, library)
    index, counts, lines = mub.mub_btree(), mub.mub_hash(), {}
    mub.mub_btree_init(index, 1, 1, 0)
    mub.mub_hash_init(counts, 1, 0)
    read(mub, sys.stdin.buffer.read(), index, counts, lines)
    for word, value in with_prefix(mub, index, prefix.encode()):
        print(word.decode(), *lines[value])
    entries = by_count(mub, counts)
    for address in entries.items[:min(3, entries.count)]:
        entry = mub.mub_hash_entry.from_address(address)
        print(entry.value, mub.key(counts, entry).decode())
    mub.mub_btree_free_all(index, mub.callback("mub_free_fn", lines.pop))
    print(len(lines), "lists of lines left")
    mub.mub_arrays_term(entries)
    mub.mub_btree_term(index)
    mub.mub_hash_term(counts)


if __name__ == "__main__":
    if not 3 <= len(sys.argv) <= 4:
        sys.exit("usage: word_index.py MUB_API PREFIX [LIBRARY] <text")
    main(*sys.argv[1:])
