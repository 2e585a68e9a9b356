// The keys of containers: bytes packed one after another in a stream of the container, numbers in the items,
// or none. Items (entries, records, slots) refer to packed keys by a 32-bit offset and a 32-bit length;
// cutting a key out lowers the offsets of the keys after it.
//
// What containers do with keys is a policy. All policies use the same names for the same acts; an engine
// lists at its head what it asks for besides.
//   Key                              a key as it is passed
//   key_of(container, item)          the key of an item
//   store_key(container, item, key)  gives a new item its key; false when there is no room
//   erase_key(container, item)       removes the key of an item that is about to be removed
//   reset_key(item)                  gives an item the key of one that is all zeros
//   clear_keys(container)            removes all keys, and keeps their memory
//   term_keys(container)             removes all keys, and releases their memory
//   swap_keys(a, b)                  exchanges the keys of two containers
//   clone_keys(source, copy)         makes the keys copies; false when memory runs out
#ifndef MUB_CONTAINERS_KEY_STORE_H
#define MUB_CONTAINERS_KEY_STORE_H

#include <algorithm>
#include <cstdint>

#include "bytes/bytes.h"
#include "bytes/unit_buffer.h"
#include "pool/pool.h"

namespace mub {

struct ByteKey {
  const uint8_t *bytes;
  int64_t length;
};

// No bytes are the empty key, whatever their length.
inline ByteKey raw_key(const void *key, int64_t length) {
  return {bytes::as_bytes(key), key != nullptr ? length : std::min<int64_t>(length, 0)};
}

// A negative length ends at the first NUL.
inline ByteKey measured_key(const void *key, int64_t length) { return raw_key(key, measured(key, length)); }

// ---- packed keys

namespace keys {

// Offsets have 32 bits: a store is never longer than this.
constexpr int64_t kMaxBytes = 0xFFFFFFFF;

inline bool has_room(const mub_stream &store, int64_t length) { return length <= kMaxBytes - store.length; }

// A run of bytes in a store, such as that of a key.
struct Range {
  uint32_t offset;
  uint32_t length;
};

// Cuts bytes out; a range that runs past the end is refused.
inline void erase(mub_stream &store, Range cut) {
  const int64_t position = cut.offset;
  const int64_t count = cut.length;
  const int64_t tail = store.length - position - count;
  if (tail < 0) return;
  buffer::move_units(store.data + position, store.data + position + count, tail);
  buffer::shrink(store, store.length - count);
}

// Moves an item's key down if it lies after what was cut out; the difference has 32 bits. An empty key has no
// bytes of its own: one that lies exactly there stays.
template <class Item>
void lower_offset(Item &item, Range cut) {
  const bool is_after =
      item.key_offset > cut.offset || (item.key_offset == cut.offset && item.key_length != 0);
  if (is_after) item.key_offset -= cut.length;
}

// A key in a store. The low layer can move an offset out of it, and below 0: such a key reads as empty.
template <class Item>
ByteKey key_of(const mub_stream &store, const Item &item) {
  if (int64_t{item.key_offset} + item.key_length > store.capacity) return {store.data, 0};
  return {store.data + item.key_offset, item.key_length};
}

// Lowers the offsets of all items of a container. If they are all that is in a pool of its own, they are
// visited in the order of memory, which takes a fraction of the time that for_each takes along the links.
template <class Item, class ForEach>
void lower_offsets(mub_pool *pool, bool fills_pool, Range cut, ForEach for_each) {
  const auto lower = [cut](Item &item) { lower_offset(item, cut); };
  if (fills_pool) {
    pool::for_each_block<Item>(*pool, lower);
  } else {
    for_each(lower);
  }
}

}  // namespace keys

// Keys in the stream `keys` of the container.
template <class Container>
struct PackedKeys {
  using Key = ByteKey;

  template <class Item>
  static Key key_of(const Container &container, const Item &item) {
    return keys::key_of(container.keys, item);
  }

  template <class Item>
  static bool store_key(Container &container, Item &item, const Key &key) {
    mub_stream &store = container.keys;
    const int64_t offset = store.length;
    if (!keys::has_room(store, key.length) || !buffer::append(store, key.bytes, key.length)) return false;
    item.key_offset = static_cast<uint32_t>(offset);
    item.key_length = static_cast<uint32_t>(store.length - offset);
    return true;
  }

  // For erase_key, with lower(cut), which lowers the offsets of the other items. Those of this one are reset
  // before: an empty key at offset 0 is one that no cut moves, on a free stack neither.
  template <class Item, class Lower>
  static void cut_key(Container &container, Item &item, Lower lower) {
    const keys::Range cut = {item.key_offset, item.key_length};
    reset_key(item);
    if (cut.length == 0) return;
    keys::erase(container.keys, cut);
    lower(cut);
  }

  template <class Item>
  static void reset_key(Item &item) {
    item.key_offset = 0;
    item.key_length = 0;
  }

  static void clear_keys(Container &container) { buffer::shrink(container.keys, 0); }
  static void term_keys(Container &container) { buffer::term(container.keys); }
  static void swap_keys(Container &a, Container &b) { buffer::swap(a.keys, b.keys); }
  static bool clone_keys(const Container &source, Container &copy) {
    return buffer::clone(source.keys, copy.keys);
  }
};

// ---- other keys

// What is to be done for the keys of a whole container that has no stream of keys: nothing.
template <class Container>
struct NoKeyStream {
  static void clear_keys(Container &) {}
  static void term_keys(Container &) {}
  static void swap_keys(Container &, Container &) {}
  static bool clone_keys(const Container &, Container &) { return true; }
};

// Numbers, in the field `key` of each item.
template <class Container, class Number>
struct KeysInItems : NoKeyStream<Container> {
  using Key = Number;

  template <class Item>
  static Key key_of(const Container &, const Item &item) {
    return item.key;
  }
  template <class Item>
  static bool store_key(Container &, Item &item, Key key) {
    item.key = key;
    return true;
  }
  template <class Item>
  static void erase_key(Container &, Item &item) {
    reset_key(item);
  }
  template <class Item>
  static void reset_key(Item &item) {
    item.key = 0;
  }
};

// The key of items that have none.
struct NoKey {};

template <class Container>
struct NoKeys : NoKeyStream<Container> {
  using Key = NoKey;

  template <class Item>
  static Key key_of(const Container &, const Item &) {
    return {};
  }
  template <class Item>
  static bool store_key(Container &, Item &, Key) {
    return true;
  }
  template <class Item>
  static void erase_key(Container &, Item &) {}
};

}  // namespace mub

#endif
