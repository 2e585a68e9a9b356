// The pools of a container. Each has a field in the record and a flag, which is 1 for an owned pool and 0 for
// an external pool or none (but see 2). Values may be blocks of the value pool, taken when an entry is added.
//
//   container   entry_pool, owns_entry_pool ──► entries
//               node_pool,  owns_node_pool  ──► records, in B-trees only
//               value_pool, owns_value_pool ──► values         (in arrays: pool, own_pool)
//
// Invariants:
//   1. An owned pool is a heap-allocated mub_pool that belongs to one container.
//   2. A flag of 1 does not mean that there is a pool: a terminated mub_tree or mub_bitree keeps its flags.
//   3. The block size of an owned pool of entries or records is the size of these; that of a value pool is
//      set by the caller.
//
// Threads: functions that take a const container write nothing.
#ifndef MUB_CONTAINERS_CONTAINER_POOLS_H
#define MUB_CONTAINERS_CONTAINER_POOLS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "pool/pool.h"

namespace mub {

// Pool and Flag are const where the container is.
template <class Pool, class Flag>
struct PoolField {
  Pool &pool;
  Flag &owned;

  bool is_owned() const { return owned != 0 && pool != nullptr; }
  bool is_external() const { return owned == 0 && pool != nullptr; }

  // Makes an owned pool, if there is memory for it.
  void make(int64_t block_size) const {
    pool = pool::create(block_size);
    owned = pool != nullptr ? 1 : 0;
  }
  void make_empty() const {
    if (is_owned()) pool::empty(*pool);
  }
  void destroy() const {
    if (owned == 0) return;
    pool::destroy(pool);
    pool = nullptr;
    owned = 0;
  }
  void swap(const PoolField &other) const {
    std::swap(pool, other.pool);
    std::swap(owned, other.owned);
  }
};
template <class Pool, class Flag>
PoolField(Pool &, Flag &) -> PoolField<Pool, Flag>;

template <class Container>
auto entry_pool_of(Container &container) {
  return PoolField{container.entry_pool, container.owns_entry_pool};
}

template <class Container>
auto node_pool_of(Container &container) {
  return PoolField{container.node_pool, container.owns_node_pool};
}

template <class Container>
auto value_pool_of(Container &container) {
  return PoolField{container.value_pool, container.owns_value_pool};
}

// Only B-trees have a node pool.
template <class Container, class = void>
constexpr bool kHasNodePool = false;
template <class Container>
constexpr bool kHasNodePool<Container, std::void_t<decltype(Container::node_pool)>> = true;

// The pools, in the order in which they are made and cloned.
template <class Container>
auto pools_of(Container &container) {
  if constexpr (kHasNodePool<Container>) {
    return std::array{entry_pool_of(container), node_pool_of(container), value_pool_of(container)};
  } else {
    return std::array{entry_pool_of(container), value_pool_of(container)};
  }
}

template <class Container>
void empty_pools(Container &container) {
  for (const auto &field : pools_of(container)) field.make_empty();
}

template <class Container>
void destroy_pools(Container &container) {
  for (const auto &field : pools_of(container)) field.destroy();
}

template <class Container>
void swap_pools(Container &a, Container &b) {
  const auto fields = pools_of(a);
  const auto others = pools_of(b);
  for (size_t i = 0; i < fields.size(); ++i) fields[i].swap(others[i]);
}

// Whether an owned pool has exactly `count` live blocks. If the container has `count` items in the pool,
// every live block is then one of them, and the container may change its items chunk by chunk instead of
// following their links, provided that the same change does no harm to blocks on the free stack. A block that
// a caller popped off the free stack does not count as live, so the number of carved blocks is compared, too.
template <class Block, class Field>
bool has_exactly_live(const Field &field, int64_t count) {
  if (!field.is_owned()) return false;
  const mub_pool &pool = *field.pool;
  return pool.live_count == count && pool.block_size == int64_t{sizeof(Block)} &&
         pool::carved_blocks(pool) == count + pool::free_blocks(pool);
}

// ---- values

// Passes a new block, if there is one, to the caller's init function.
inline void initialise(uint64_t value, mub_init_fn init) {
  if (value != 0 && init != nullptr) init(value);
}

// Takes a block of `pool` and initialises it; 0 if there is none.
inline uint64_t take_value(mub_pool *pool, mub_init_fn init) {
  const uint64_t value = word_of(pool::take(pool));
  initialise(value, init);
  return value;
}

// Returns a block to an external pool. The blocks of an owned pool are released with the whole pool.
template <class Field>
inline void give_back(const Field &value_pool, uint64_t value) {
  if (value_pool.owned == 0) pool::give(value_pool.pool, pointer_of<void>(value));
}

// Whether freeing everything has to visit each entry. Blocks of owned pools need no visit.
template <class Container>
bool must_visit_entries(const Container &container, mub_free_fn release_it) {
  return release_it != nullptr || container.owns_entry_pool == 0 || value_pool_of(container).is_external();
}

// Passes a value to the caller's release function, and returns its block to an external pool. 0 is no value.
template <class Field>
inline void release_value(const Field &value_pool, uint64_t value, mub_free_fn release_it) {
  if (value == 0) return;
  if (release_it != nullptr) release_it(value);
  give_back(value_pool, value);
}

}  // namespace mub

#endif
