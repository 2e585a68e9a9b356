// The common part of the policies for keys that are stored in the entries.
#ifndef MUB_HASH_KEYS_IN_ENTRIES_H
#define MUB_HASH_KEYS_IN_ENTRIES_H

#include <cstdint>

#include "containers/key_store.h"
#include "crc32/crc32.h"

namespace mub {

template <class Word>
void store_little_endian(Word word, uint8_t *bytes) {
  for (unsigned i = 0; i < sizeof word; ++i) bytes[i] = static_cast<uint8_t>(word >> (8 * i));
}

template <class TableRecord, class EntryRecord, class KeyAsPassed>
struct KeysInEntries : KeysInItems<TableRecord, KeyAsPassed> {
  using Table = TableRecord;
  using Entry = EntryRecord;
  using Key = KeyAsPassed;
  static constexpr bool kClearsNewEntries = true;

  static void store_word(Entry &, uint64_t) {}
  static void erase_key(Table &, Entry &) {}  // a removed entry keeps its key: callers may read it
  static void reserve_keys(Table &, int64_t) {}

  // Keys are passed by value: nothing has to be copied.
  template <class Use>
  static Entry *with_pinned(const Table &, Key key, Use use) {
    return use(key);
  }
};

}  // namespace mub

#endif
