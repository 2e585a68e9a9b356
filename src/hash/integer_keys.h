// Integer keys for chained_table.h: a key is its own hash.
#ifndef MUB_HASH_INTEGER_KEYS_H
#define MUB_HASH_INTEGER_KEYS_H

#include <cstdint>

#include "hash/keys_in_entries.h"

namespace mub {

template <class TableRecord, class EntryRecord, class Integer>
struct IntegerKeys : KeysInEntries<TableRecord, EntryRecord, Integer> {
  using Table = TableRecord;
  using Entry = EntryRecord;

  static uint64_t word(const Table &, Integer key) { return key; }
  static uint64_t entry_word(const Entry &entry) { return entry.key; }
  static bool same_key(const Table &, const Entry &entry, Integer key) { return entry.key == key; }
  static bool matches(const Table &table, const Entry &entry, uint64_t, Integer key) {
    return same_key(table, entry, key);
  }

  // A CRC of the key, for callers who want to mix their keys; the table itself does not use it.
  static uint32_t mixed(Integer key) {
    uint8_t bytes[sizeof key];
    store_little_endian(key, bytes);
    return key_hash(bytes, sizeof bytes);
  }
};

}  // namespace mub

#endif
