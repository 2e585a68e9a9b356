// Byte-string keys for slot_table.h: an entry has the offset and the length of its key in the array's key
// stream. Sorting moves entries, not key bytes.
//
// Invariant, in addition to those of slot_table.h:
//   3. The key of every entry lies within the length of the stream, and no two keys overlap. The stream may
//      also hold bytes of no entry, such as those of entries that mub_array_shrink() has dropped.
// It holds until a caller brings spare slots into use with mub_array_shrink(), or gives one a key with
// mub_array_set_at(): spare slots have stale offsets, which may refer to other keys or to bytes past the
// length. A key past the length is read as long as it lies in the stream's block, else it reads as empty.
#ifndef MUB_ARRAYS_BYTE_KEYS_H
#define MUB_ARRAYS_BYTE_KEYS_H

#include <algorithm>
#include <cstdint>

#include "arrays/slot_table.h"
#include "bytes/bytes.h"
#include "containers/key_store.h"

namespace mub {

inline int64_t key_end(const mub_array_entry &entry) { return int64_t{entry.key_offset} + entry.key_length; }

// The end of the stream's block, which is one byte longer than the capacity.
inline int64_t readable_end(const mub_stream &keys) { return keys.capacity + (keys.data != nullptr); }

inline ByteKey key_of(const mub_array &array, const mub_array_entry &entry) {
  if (key_end(entry) > readable_end(array.keys)) return {array.keys.data, 0};
  return {array.keys.data + entry.key_offset, entry.key_length};
}

// Adds `by` to the offsets of keys at or after `from`, in the first `count` slots; wraps to lower them.
inline void shift_keys(mub_array &array, int64_t count, int64_t from, uint32_t by) {
  for (int64_t i = 0; i < count; ++i) {
    uint32_t &offset = array.entries[i].key_offset;
    offset += offset >= from ? by : 0;
  }
}

template <>
struct Policy<mub_array> : PackedKeys<mub_array, false> {
  using Slot = mub_array_entry;
  static constexpr auto kSlots = &mub_array::entries;
  static constexpr bool kSwapsPools = false;

  static Key key_of(const mub_array &array, const Slot &entry) { return mub::key_of(array, entry); }
  static void store_empty_key(mub_array &array, Slot &entry) {
    entry.key_offset = static_cast<uint32_t>(array.keys.length);
    entry.key_length = 0;
  }
  // False for an empty key, too: buffer::insert() refuses to insert no bytes.
  static bool insert_key_bytes(mub_array &array, const Slot &entry, const Key &key) {
    return keys::has_room(array.keys, key.length) &&
           buffer::insert(array.keys, entry.key_offset, key.bytes, key.length);
  }
  static void set_inserted_key(mub_array &array, Slot &entry, const Key &key) {
    const uint32_t offset = entry.key_offset;
    const auto length = static_cast<uint32_t>(key.length);
    shift_keys(array, array.count + 1, offset, length);
    entry.key_offset = offset;
    entry.key_length = length;
  }
  static void erase_key(mub_array &array, Slot &entry) {
    keys::erase(array.keys, {entry.key_offset, entry.key_length});
  }
  static void shift_keys_down(mub_array &array, const Slot &entry) {
    if (entry.key_length != 0) shift_keys(array, slots::used(array), key_end(entry), 0 - entry.key_length);
  }
  static bool reserve_keys_of(mub_array &array, const mub_array &source) {
    return keys::has_room(array.keys, source.keys.length) &&
           buffer::expand(array.keys, array.keys.length + source.keys.length);
  }
};

// Compares entries with the wanted key, byte by byte as unsigned values; a prefix comes first.
struct ByteSearchOrder {
  static constexpr bool kIsDifference = false;
  const mub_array &array;
  ByteKey key;

  int operator()(const mub_array_entry &entry) const {
    const ByteKey stored = key_of(array, entry);
    return bytes::order(stored.bytes, stored.length, key.bytes, key.length);
  }
};

inline ByteSearchOrder byte_search_order(const mub_array &array, const void *key, int64_t length) {
  return {array, measured_key(key, length)};
}

inline int64_t scan_for(const mub_array &array, const ByteKey &key) {
  return slots::scan(array, [&](const mub_array_entry &entry) {
    const ByteKey stored = key_of(array, entry);
    return stored.length == key.length && bytes::equal(stored.bytes, key.bytes, key.length);
  });
}

// The length of the prefix that all keys have in common.
inline int64_t common_prefix(const mub_array &array) {
  const int64_t count = slots::used(array);
  if (count < 1) return 0;
  const ByteKey first = key_of(array, array.entries[0]);
  int64_t common = first.length;
  for (int64_t i = 1; i < count && common > 0; ++i) {
    const ByteKey key = key_of(array, array.entries[i]);
    common = std::min(common, key.length);
    common = std::mismatch(first.bytes, first.bytes + common, key.bytes).first - first.bytes;
  }
  return common;
}

// Compares entries with each other, for the sort. Past their common prefix most keys differ in the next 8
// bytes. These are loaded once, as a number that sorts as they do; bytes past the end of a key count as 0.
class ByteSortOrder {
 public:
  struct Key {
    uint64_t head;
    const uint8_t *bytes;
    int64_t length;
  };
  explicit ByteSortOrder(const mub_array &array)
      : data_(array.keys.data), readable_end_(readable_end(array.keys)), skipped_(common_prefix(array)) {}

  Key key(const mub_array_entry &entry) const {
    if (key_end(entry) > readable_end_) return {0, data_, 0};
    const int64_t offset = entry.key_offset + skipped_;
    const int64_t length = entry.key_length - skipped_;
    return {head(offset, length), data_ + offset, length};
  }
  int compare(const Key &a, const Key &b) const {
    if (a.head != b.head) return a.head < b.head ? -1 : 1;
    return bytes::compare(a.bytes, a.length, b.bytes, b.length);
  }

 private:
  uint64_t head(int64_t offset, int64_t length) const {
    // bytes::compare() cuts differences of lengths to 32 bits, here and in searches: without heads, the sort
    // agrees with the searches on keys of 2 GiB and more.
    if (readable_end_ > INT32_MAX) return 0;
    uint64_t word = 0;
    if (offset <= readable_end_ - 8) {
      word = bytes::load<uint64_t>(data_ + offset);
    } else if (length > 0) {
      std::memcpy(&word, data_ + offset, static_cast<size_t>(std::min<int64_t>(length, 8)));
    }
    word = bytes::first_byte_highest(word);
    return length >= 8 ? word : word & ~(~uint64_t{0} >> (8 * length));
  }

  const uint8_t *data_;
  int64_t readable_end_;
  int64_t skipped_;
};

}  // namespace mub

#endif
