// The pools of a container. For each, the record has a field and a flag beside it: the flag is 1 for a pool
// that the container has made and will destroy, and 0 for a caller's pool or none.
#ifndef MUB_CORE_POOL_FIELD_H
#define MUB_CORE_POOL_FIELD_H

#include <cstdint>
#include <type_traits>
#include <utility>

#include "core/pool.h"

namespace mub {

// Pool and Flag are constant where the container is.
template <class Pool, class Flag>
struct PoolField {
  Pool &pool;
  Flag &owned;

  bool is_owned() const { return owned != 0 && pool != nullptr; }
  bool is_callers() const { return owned == 0 && pool != nullptr; }

  // Makes a pool of the container's own, if there is memory for it.
  void make(int64_t block_size) const {
    pool = pool::create(block_size);
    owned = pool != nullptr ? 1 : 0;
  }
  void empty() const {
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

// Only the B-trees have a pool of nodes besides that of the entries.
template <class Container, class = void>
constexpr bool kHasNodePool = false;
template <class Container>
constexpr bool kHasNodePool<Container, std::void_t<decltype(Container::node_pool)>> = true;

// Calls `use` with each pool of a container, or with those of two containers side by side.
template <class Use, class Container, class... SecondContainer>
void for_each_pool(Use use, Container &container, SecondContainer &...second) {
  use(entry_pool_of(container), entry_pool_of(second)...);
  if constexpr (kHasNodePool<Container>) use(node_pool_of(container), node_pool_of(second)...);
  use(value_pool_of(container), value_pool_of(second)...);
}

template <class Container>
void empty_pools(Container &container) {
  for_each_pool([](const auto &field) { field.empty(); }, container);
}

template <class Container>
void destroy_pools(Container &container) {
  for_each_pool([](const auto &field) { field.destroy(); }, container);
}

template <class Container>
void swap_pools(Container &a, Container &b) {
  for_each_pool([](const auto &field, const auto &other) { field.swap(other); }, a, b);
}

// Whether a container's own pool has `count` live blocks, all of which are then those of its `count` items:
// the container may change what lies in the chunks without following its own links, given that its blocks on
// the free stack are harmless to the change. A block that a caller popped off the free stack is not counted
// as live; so all blocks have to be accounted for.
template <class Block, class Field>
bool holds_only(const Field &field, int64_t count) {
  if (field.owned == 0) return false;
  const mub_pool &pool = *field.pool;
  return pool.live_count == count && pool.block_size == int64_t{sizeof(Block)} &&
         pool::blocks_ever_taken(pool) == count + pool::free_blocks(pool);
}

}  // namespace mub

#endif
