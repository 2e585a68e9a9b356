// The key bytes of a container, packed one after another in its stream. Records refer to them by a 32-bit offset
// and a 32-bit length; cutting a key out lowers the offsets of the keys behind it.
#ifndef MUB_CORE_KEY_STORE_H
#define MUB_CORE_KEY_STORE_H

#include <cstdint>

#include "core/unit_buffer.h"

namespace mub::keys {

// Offsets have 32 bits: a store is never longer than this.
constexpr int64_t kMaxBytes = 0xFFFFFFFF;

inline bool has_room(const mub_stream &store, int64_t length) { return length <= kMaxBytes - store.length; }

// Appends a key; false when its bytes find no room, the store then unchanged.
inline bool append(mub_stream &store, const void *key, int64_t length) {
  return has_room(store, length) && buffer::append(store, key, length);
}

// Cuts `count` bytes out; a range that runs past the end is refused.
inline void erase(mub_stream &store, int64_t position, int64_t count) {
  const int64_t tail = store.length - position - count;
  if (tail < 0) return;
  buffer::move_units(store.data + position, store.data + position + count, tail);
  buffer::shrink(store, store.length - count);
}

// Whether a key moves down when bytes at `offset` are cut out. An empty key has no bytes of its own: one that lies
// exactly there stays.
inline bool moves_down(uint32_t key_offset, uint32_t key_length, uint32_t offset) {
  return key_offset > offset || (key_offset == offset && key_length != 0);
}

}  // namespace mub::keys

#endif
