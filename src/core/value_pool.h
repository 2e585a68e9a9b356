// Value blocks: taken from a container's value pool for a new entry, and released with it.
#ifndef MUB_CORE_VALUE_POOL_H
#define MUB_CORE_VALUE_POOL_H

#include <cstdint>

#include "core/pool.h"
#include "core/pool_field.h"

namespace mub {

inline uint64_t word_of(const void *address) { return reinterpret_cast<uintptr_t>(address); }

template <class Record>
Record *record_of(uint64_t word) {
  return reinterpret_cast<Record *>(static_cast<uintptr_t>(word));
}

// Passes a new block, if there is one, to the caller's initialiser.
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
template <class Field>
void return_value(const Field &values, uint64_t value) {
  if (values.owned == 0) pool::give(values.pool, record_of<void>(value));
}

// Whether a container that frees all its values visits each entry: what lies in its own pools goes with
// these.
template <class Container>
bool frees_one_by_one(const Container &container, mub_free_fn release_it) {
  return release_it != nullptr || container.owns_entry_pool == 0 || value_pool_of(container).is_callers();
}

// Passes a value to the caller's releaser and returns its block; 0 is no value.
template <class Field>
void release_value(const Field &values, uint64_t value, mub_free_fn release_it) {
  if (value == 0) return;
  if (release_it != nullptr) release_it(value);
  return_value(values, value);
}

}  // namespace mub

#endif
