// The keys of containers: bytes packed in a stream of the container, numbers in the items, or none. Items
// refer to packed keys by a 32-bit offset and a 32-bit length. Removing a key cuts its bytes out and lowers
// the offsets of the keys after it.
//
//   keys ──► [ key of a | key of b | key of c | spare … ]        item c:  key_offset, key_length
//                                    ▲ key_offset
//
// Invariants of packed keys. Callers of the low layer can break them, and so can mub_array_shrink() and
// mub_array_set_at() (byte_keys.h):
//   1. The stream is at most kMaxBytes long.
//   2. The key of an item lies in the content of the stream.
//   3. The keys of all items fill the content without gaps and do not overlap; in arrays, the content may
//      also hold bytes of no entry (byte_keys.h). In a B-tree, the items are the records; leaves and inner
//      nodes refer to the same keys.
//   4. In builds for memory checkers, the spare bytes of the stream are poisoned (unit_buffer.h), except in
//      arrays, whose spare slots may have keys there.
//
// Threads: functions that take a const container write nothing.
//
// What a container does with its keys is up to its policy (policy.h). Policies that have functions on keys
// use these names; the comment at the top of an engine lists what else it requires.
//   Key                              a key as it is passed
//   key_of(container, item)          the key of an item
//   store_key(container, item, key)  gives a new item its key; false if memory runs out, or if the key stream
//                                    would be longer than kMaxBytes
//   erase_key(container, item)       removes the key of an item that is about to be removed
//   reset_key(item)                  gives an item the key of an all-zero item (not in NoKeys)
//   clear_keys(container)            removes all keys and keeps their memory
//   term_keys(container)             removes all keys and releases their memory
//   swap_keys(a, b)                  exchanges the keys of two containers
//   prefetch_key(container, item)    prefetches what key_of() refers to
//   clone_keys(source, copy)         copies all keys; false if memory runs out
#ifndef MUB_CONTAINERS_KEY_STORE_H
#define MUB_CONTAINERS_KEY_STORE_H

#include <algorithm>
#include <cstdint>

#include "base/prefetch.h"
#include "bytes/bytes.h"
#include "bytes/unit_buffer.h"
#include "pool/pool.h"

namespace mub {

struct ByteKey {
  const uint8_t *bytes;
  int64_t length;
};

// With a null pointer, a positive length counts as 0. A negative length stays negative, and matches no key.
inline ByteKey raw_key(const void *key, int64_t length) {
  return {bytes::as_bytes(key), key != nullptr ? length : std::min<int64_t>(length, 0)};
}

// With a negative length, the key ends at the first NUL.
inline ByteKey measured_key(const void *key, int64_t length) { return raw_key(key, measured(key, length)); }

// The keys that a batch function is given, by index; without lengths, all end at their first NUL.
inline auto measured_keys(const void *const *keys, const int64_t *lengths) {
  return [=](int64_t i) { return measured_key(keys[i], lengths != nullptr ? lengths[i] : -1); };
}

// ---- packed keys

namespace keys {

// A key stream is never longer than this, because offsets have 32 bits.
constexpr int64_t kMaxBytes = 0xFFFFFFFF;

inline bool has_room(const mub_stream &stream, int64_t length) { return length <= kMaxBytes - stream.length; }

// A range of bytes in a key stream, such as those of a key.
struct Range {
  uint32_t offset;
  uint32_t length;
};

// Cuts a range out of a key stream, unless it runs past the end.
inline void erase(mub_stream &stream, Range cut) {
  const int64_t position = cut.offset;
  const int64_t count = cut.length;
  const int64_t tail = stream.length - position - count;
  if (tail < 0) return;
  buffer::move_units(stream.data + position, stream.data + position + count, tail);
  buffer::shrink(stream, stream.length - count);
}

// Lowers the offset of an item's key if the key lies after the range that was cut out; the subtraction wraps
// around at 32 bits. An empty key has no bytes: if it lies exactly at the start of the range, it stays.
template <class Item>
void lower_offset(Item &item, Range cut) {
  const bool is_after =
      item.key_offset > cut.offset || (item.key_offset == cut.offset && item.key_length != 0);
  if (is_after) item.key_offset -= cut.length;
}

// The key of an item. The low layer can move an offset past the key stream, or below 0, where it wraps
// around. A key that ends past the stream's capacity is read as empty; one that ends past the length includes
// stale bytes. In arrays, the limit is the end of the block, one byte later, so that the key of a spare slot
// can be replaced wherever it lies (byte_keys.h).
template <class Item>
ByteKey key_of(const mub_stream &stream, const Item &item) {
  if (int64_t{item.key_offset} + item.key_length > stream.capacity) return {stream.data, 0};
  return {stream.data + item.key_offset, item.key_length};
}

// Lowers the offsets of a container's keys after the cut. If the pool of the items has no other live blocks,
// they are visited chunk by chunk, which takes a fraction of the time that for_each takes to follow the links
// (map_remove in bench/hash_bench.cpp).
template <class Item, class ForEach>
void lower_offsets(mub_pool *pool, bool pool_has_only_items, Range cut, ForEach for_each) {
  const auto lower = [cut](Item &item) { lower_offset(item, cut); };
  if (pool_has_only_items) {
    pool::for_each_block<Item>(*pool, lower);
  } else {
    for_each(lower);
  }
}

}  // namespace keys

// Keys in the stream `keys` of the container.
template <class Container, bool kPoisonsSpare = true>
struct PackedKeys {
  using Key = ByteKey;

  template <class Item>
  static Key key_of(const Container &container, const Item &item) {
    return keys::key_of(container.keys, item);
  }

  template <class Item>
  static void prefetch_key(const Container &container, const Item &item) {
    prefetch(key_of(container, item).bytes);
  }

  template <class Item>
  static bool store_key(Container &container, Item &item, const Key &key) {
    mub_stream &stream = container.keys;
    const int64_t offset = stream.length;
    if (!keys::has_room(stream, key.length)) return false;
    buffer::open(stream, key.length);
    const bool is_stored = buffer::append(stream, key.bytes, key.length);
    close_keys(container);
    if (!is_stored) return false;
    item.key_offset = static_cast<uint32_t>(offset);
    item.key_length = static_cast<uint32_t>(stream.length - offset);
    return true;
  }

  // Implements erase_key, given lower(cut), which lowers the offsets of the other items. The fields of this
  // item are reset first: no cut moves an empty key at offset 0, so passes over the pool leave its block as
  // it is once it is free. (mub_hash restores the fields. Later passes may change them in the free block,
  // which is harmless: the next entry in it overwrites them.)
  template <class Item, class Lower>
  static void cut_key(Container &container, Item &item, Lower lower) {
    const keys::Range cut = {item.key_offset, item.key_length};
    reset_key(item);
    if (cut.length == 0) return;
    const int64_t old_length = container.keys.length;
    keys::erase(container.keys, cut);
    close_keys(container, old_length);
    lower(cut);
  }

  template <class Item>
  static void reset_key(Item &item) {
    item.key_offset = 0;
    item.key_length = 0;
  }

  static void clear_keys(Container &container) {
    const int64_t old_length = container.keys.length;
    buffer::shrink(container.keys, 0);
    close_keys(container, old_length);
  }
  static void term_keys(Container &container) { buffer::term(container.keys); }
  static void swap_keys(Container &a, Container &b) {
    buffer::swap(a.keys, b.keys);
    close_keys(a);
    close_keys(b);
  }
  static bool clone_keys(const Container &source, Container &copy) {
    buffer::open(copy.keys);
    const bool is_done = buffer::clone(source.keys, copy.keys);
    close_keys(copy);
    return is_done;
  }

  // Poisons the spare bytes of the stream again, in builds for memory checkers. `old_length` is the greatest
  // length that it had since they were poisoned, if it is shorter now; 0 if it only became longer.
  static MUB_POISON_HOOK void close_keys(Container &container, int64_t old_length = 0) {
    if constexpr (kPoisonsSpare) buffer::close(container.keys, old_length);
  }
};

// ---- other keys

// For containers without a key stream, there is nothing to do for all keys together.
template <class Container>
struct NoKeyStream {
  template <class Item>
  static void prefetch_key(const Container &, const Item &) {}
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

// The key of items without keys.
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
