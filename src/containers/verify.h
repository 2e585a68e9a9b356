// The checks that all containers have in common: their pools, and their key streams.
//
// An engine first checks its pools, then follows its links. It cannot recognise an address that is not that
// of an entry, but compares the number of blocks in use with the count before it follows a link, and follows
// no more links than the count allows. So it terminates, and does not read memory that was released with a
// pool.
//
// Threads: nothing is written.
#ifndef MUB_CONTAINERS_VERIFY_H
#define MUB_CONTAINERS_VERIFY_H

#include <cstdint>
#include <type_traits>

#include "base/fault.h"
#include "bytes/unit_buffer.h"
#include "containers/container_pools.h"
#include "containers/key_store.h"
#include "pool/pool.h"

namespace mub {

// The sentences of more than one check.
constexpr Fault kWrongCount = "The count is not the number of linked items.";
constexpr Fault kKeyOutside = "A key is outside the key stream.";

// ---- pools

// Of an external pool, only the record: its free stack is the caller's concern.
template <class Field>
Fault verify_pool(const Field &field) {
  if (field.pool == nullptr) return nullptr;
  return field.is_owned() ? pool::verify(*field.pool) : pool::verify_record(*field.pool);
}

template <class Container>
Fault verify_pools(const Container &container) {
  for (const auto &field : pools_of(container)) {
    if (const Fault fault = verify_pool(field)) return fault;
  }
  return nullptr;
}

// Checks that `count` blocks of a pool can be in use. The pool itself was checked before.
template <class Block, class Field>
Fault verify_blocks(const Field &field, int64_t count) {
  if (count < 1) return nullptr;
  if (field.pool == nullptr) return "A pool that the container needs is missing.";
  const mub_pool &pool = *field.pool;
  if (pool.block_size < int64_t{sizeof(Block)}) return "The blocks of a pool are smaller than the entries.";
  const bool has_blocks = count <= pool::carved_blocks(pool) - pool::free_blocks(pool);
  return has_blocks ? nullptr : "A pool has fewer blocks in use than there are entries.";
}

// ---- keys

// Mixes the bits of a number: the finaliser of SplitMix64.
inline uint64_t mixed_bits(uint64_t number) {
  number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9;
  number = (number ^ number >> 27) * 0x94D049BB133111EB;
  return number ^ number >> 31;
}

// Checks the keys of a container, one item at a time. There is nothing to check without a key stream.
template <class Container, class = void>
struct KeyCheck {
  explicit KeyCheck(const Container &) {}
  Fault begin() const { return nullptr; }
  template <class Item>
  Fault add(const Item &) {
    return nullptr;
  }
  Fault end() const { return nullptr; }
};

// Packed keys: key_store.h has the invariants. To find gaps and overlaps without a list of all keys, a hash
// of the start of each key is added to a sum, and a hash of its end subtracted. If the keys fill the stream,
// every end but the last is the start of another key, and only hash(0) - hash(length) remains. With any other
// keys, some starts and ends do not cancel out, since keys cannot form a cycle: each ends after it starts,
// apart from empty keys, which add nothing. The sum is then different, except with a probability of 2^-64.
template <class Container>
struct KeyCheck<Container, std::void_t<decltype(Container::keys)>> {
  explicit KeyCheck(const Container &container) : stream(container.keys) {}

  Fault begin() const {
    if (buffer::verify(stream) != nullptr) return "The key stream is not intact: see mub_stream_verify().";
    return stream.length <= keys::kMaxBytes ? nullptr : "The key stream is too long for 32-bit offsets.";
  }
  template <class Item>
  Fault add(const Item &item) {
    const int64_t end = int64_t{item.key_offset} + item.key_length;
    if (end > stream.length) return kKeyOutside;
    starts_minus_ends += mixed_bits(item.key_offset) - mixed_bits(static_cast<uint64_t>(end));
    return nullptr;
  }
  Fault end() const {
    const uint64_t whole = mixed_bits(0) - mixed_bits(static_cast<uint64_t>(stream.length));
    return starts_minus_ends == whole ? nullptr : "The keys overlap, or the key stream has bytes of no key.";
  }

  const mub_stream &stream;
  uint64_t starts_minus_ends = 0;
};

}  // namespace mub

#endif
