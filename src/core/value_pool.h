// Value blocks: taken from a container's value pool for a new entry, and let go with it.
#ifndef MUB_CORE_VALUE_POOL_H
#define MUB_CORE_VALUE_POOL_H

#include <cstdint>

#include "core/pool.h"

namespace mub {

inline uint64_t word_of(const void *address) { return reinterpret_cast<uintptr_t>(address); }

template <class Record>
Record *record_of(uint64_t word) {
  return reinterpret_cast<Record *>(static_cast<uintptr_t>(word));
}

// Hands a new block, if there is one, to the caller's initialiser.
inline void initialise(uint64_t value, mub_init_fn init) {
  if (value != 0 && init != nullptr) init(value);
}

// A block of `pool`, initialised; 0 when none can be had.
inline uint64_t take_value(mub_pool *pool, mub_init_fn init) {
  const uint64_t value = word_of(pool::take(pool));
  initialise(value, init);
  return value;
}

// Returns a block to a caller's pool; the blocks of an owned pool go with the whole pool.
inline void return_value(mub_pool *pool, uint16_t owned, uint64_t value) {
  if (owned == 0) pool::give(pool, record_of<void>(value));
}

// Hands a value to the caller's releaser and its block back; 0 is no value.
inline void release_value(mub_pool *pool, uint16_t owned, uint64_t value, mub_free_fn release_it) {
  if (value == 0) return;
  if (release_it != nullptr) release_it(value);
  return_value(pool, owned, value);
}

}  // namespace mub

#endif
