// The key bytes of a container, packed one after another in its stream. Records refer to them by a 32-bit offset
// and a 32-bit length; cutting a key out lowers the offsets of the keys behind it.
#ifndef MUB_CORE_KEY_STORE_H
#define MUB_CORE_KEY_STORE_H

#include <algorithm>
#include <cstdint>

#include "core/bytes.h"
#include "core/unit_buffer.h"

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

namespace keys {

// Offsets have 32 bits: a store is never longer than this.
constexpr int64_t kMaxBytes = 0xFFFFFFFF;

inline bool has_room(const mub_stream &store, int64_t length) { return length <= kMaxBytes - store.length; }

// Appends a key; false when its bytes find no room, the store then unchanged.
inline bool append(mub_stream &store, const void *key, int64_t length) {
  return has_room(store, length) && buffer::append(store, key, length);
}

// The same, and makes a record refer to the key's bytes; unchanged without room.
template <class Record>
bool append_for(Record &record, mub_stream &store, const ByteKey &key) {
  const int64_t offset = store.length;
  if (!append(store, key.bytes, key.length)) return false;
  record.key_offset = static_cast<uint32_t>(offset);
  record.key_length = static_cast<uint32_t>(store.length - offset);
  return true;
}

// A record's key. The low layer can move an offset out of the store, and below 0: such a key reads as empty.
template <class Record>
ByteKey key_of(const mub_stream &store, const Record &record) {
  if (int64_t{record.key_offset} + record.key_length > store.capacity) return {store.data, 0};
  return {store.data + record.key_offset, record.key_length};
}

// Cuts `count` bytes out; a range that runs past the end is refused.
inline void erase(mub_stream &store, int64_t position, int64_t count) {
  const int64_t tail = store.length - position - count;
  if (tail < 0) return;
  buffer::move_units(store.data + position, store.data + position + count, tail);
  buffer::shrink(store, store.length - count);
}

// Moves a record's key down after `length` bytes at `offset` were cut out; the difference has 32 bits. An
// empty key has no bytes of its own: one that lies exactly there stays.
template <class Record>
void move_down(Record &record, uint32_t offset, uint32_t length) {
  const bool is_after = record.key_offset > offset || (record.key_offset == offset && record.key_length != 0);
  if (is_after) record.key_offset -= length;
}

}  // namespace keys
}  // namespace mub

#endif
