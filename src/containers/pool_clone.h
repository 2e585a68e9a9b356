// Copies of pools, for cloning containers. A block has the same chunk number and the same offset in a pool
// and in its copy, so that an address in the pool can be translated to one in the copy.
//
//   address ──► last chunk at or below it ──► index, offset ──► destination_->chunks[index] + offset
//
// Invariants of PoolCloner, once clone() has returned true:
//   1. destination_->chunks[i] was copied from source_->chunks[i], and chunk_bytes_ is the size of both.
//   2. map_ has all chunks of the source, in ascending order of their addresses.
//   3. last_[g] is the position in map_ of the last chunk that starts in granule g or before it; the
//      granules, of 2^granule_bits_ bytes each, begin at the first chunk and cover the start of each.
//   4. base_ and copy_base_ are 0, or the addresses of a chunk and its copy.
//
// Threads: nothing is written to the source, but new blocks may be taken from its external pools. The objects
// are locals of the function that clones.
#ifndef MUB_CONTAINERS_POOL_CLONE_H
#define MUB_CONTAINERS_POOL_CLONE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/alloc.h"
#include "containers/container_pools.h"
#include "pool/pool.h"

namespace mub {

// Clones a pool as a whole, and translates addresses in it to those in its copy.
class PoolCloner {
 public:
  PoolCloner() = default;
  ~PoolCloner() {
    release(last_);
    release(map_);
  }
  PoolCloner(const PoolCloner &) = delete;
  PoolCloner &operator=(const PoolCloner &) = delete;

  // Makes the chunk map of `source`; false if memory runs out.
  bool map(const mub_pool &source) {
    source_ = &source;
    chunk_bytes_ = pool::chunk_bytes(source);
    map_ = pool::map(source);
    return map_ != nullptr || source.chunk_count == 0;
  }
  // Makes `destination` a copy of the pool given to map(). Returns false and leaves it empty if memory runs
  // out.
  bool clone_to(mub_pool &destination) {
    destination_ = &destination;
    return pool::clone(*source_, map_, destination);
  }
  // map() and clone_to(), and makes the index for translate(). Not inlined, so that all kinds of containers
  // share one function.
  __attribute__((noinline)) bool clone(const mub_pool &source, mub_pool &destination) {
    return map(source) && index_chunks() && clone_to(destination);
  }

  const mub_pool_chunk *chunk_map() const { return map_; }

  // The address in the copy of an address in the source; 0 for a word that is in none of the source's chunks.
  uint64_t translate(uint64_t word) {
    // Neighbours in a structure are mostly neighbours in memory: try the chunk of the last translation first.
    if (word - base_ < chunk_bytes_ && base_ != 0) return word - base_ + copy_base_;
    return translate_by_search(word);
  }

 private:
  // Makes last_, an index of the map. The addresses from the first chunk's start to the last one's are
  // divided into granules, which are no larger than a chunk unless the chunks are far apart.
  bool index_chunks() {
    const int64_t count = source_->chunk_count;
    if (count == 0) return true;  // the map may exist without an element
    const uint64_t span = map_[count - 1].base - map_[0].base;
    while ((uint64_t{2} << granule_bits_) <= chunk_bytes_) ++granule_bits_;
    while (span >> granule_bits_ > static_cast<uint64_t>(kGranulesPerChunk * count)) ++granule_bits_;
    granules_ = (span >> granule_bits_) + 1;
    last_ = static_cast<int32_t *>(allocate(static_cast<int64_t>(granules_), sizeof(int32_t)));
    if (last_ == nullptr) return false;
    uint64_t granule = 0;
    for (int64_t position = 1; position < count; ++position) {
      while (granule < granule_of(map_[position].base)) last_[granule++] = static_cast<int32_t>(position - 1);
    }
    last_[granule] = static_cast<int32_t>(count - 1);
    return true;
  }

  uint64_t granule_of(uint64_t address) const { return (address - map_[0].base) >> granule_bits_; }

  // The position of the last chunk that starts at or below `word`, which is not below the first.
  int64_t find_chunk(uint64_t word) const {
    const uint64_t granule = std::min(granule_of(word), granules_ - 1);
    const int64_t last = last_[granule];
    // Usually the chunk is the last of the granule or the one before, equally often; so the choice is made
    // without a branch. More chunks start in one granule only if the chunks lie far apart.
    const int64_t position = last - (map_[last].base > word ? 1 : 0);
    if (map_[position].base <= word) return position;  // GCOVR_EXCL_BR_LINE
    return pool::find_chunk(map_, position, word);     // GCOVR_EXCL_LINE
  }

  uint64_t translate_by_search(uint64_t word) {
    if (granules_ == 0 || word < map_[0].base) return 0;
    const int64_t position = find_chunk(word);
    if (word - map_[position].base >= chunk_bytes_) return 0;
    base_ = map_[position].base;
    copy_base_ = word_of(destination_->chunks[map_[position].index]);
    return word - base_ + copy_base_;
  }

  // Bounds the index to about 8 numbers per chunk. With 1, a clone of 1e5 keys takes 1.5 times as long; 64
  // gains nothing (map_clone in bench/hash_bench.cpp).
  static constexpr int64_t kGranulesPerChunk = 8;

  const mub_pool *source_ = nullptr;
  const mub_pool *destination_ = nullptr;
  mub_pool_chunk *map_ = nullptr;
  uint64_t chunk_bytes_ = 0;
  int32_t *last_ = nullptr;
  uint64_t granules_ = 0;
  int granule_bits_ = 0;
  // The chunk of the last translation, and its copy.
  uint64_t base_ = 0;
  uint64_t copy_base_ = 0;
};

// The user pool of a clone: the source's, the one that becomes its copy, and the callback that the caller
// passes with them.
class UserPoolClone {
 public:
  UserPoolClone(mub_pool *source, mub_pool *destination, mub_clone_fn call)
      : source_(source), destination_(destination), call_(call) {}

  // Forbids cloning the user pool over `pool`, which belongs to the container's clone.
  void protect(const mub_pool *pool) { is_protected_ = is_protected_ || pool == destination_; }

  // Clones the user pool, if both pools and the callback are given. Nothing is copied if the destination
  // is the source or protected. Returns false if memory runs out.
  bool clone_pool() {
    if (source_ == nullptr || destination_ == nullptr || call_ == nullptr) return true;
    if (!cloner_.map(*source_)) return false;
    return source_ == destination_ || is_protected_ || cloner_.clone_to(*destination_);
  }

  // Stops using `pool`, which is about to be destroyed.
  void forget(const mub_pool *pool) {
    if (pool == source_ || pool == destination_) source_ = destination_ = nullptr;
  }

  void notify(uint64_t source_value, uint64_t value) const {
    if (call_ != nullptr) call_(cloner_.chunk_map(), source_value, source_, value, destination_);
  }

 private:
  mub_pool *source_;
  mub_pool *destination_;
  mub_clone_fn call_;
  bool is_protected_ = false;
  PoolCloner cloner_;
};

// Makes a clone share a pool that its source does not own, or have none if the source has none. The clone's
// own pool is destroyed.
template <class Field>
void share_pool(mub_pool *external_pool, const Field &copy, UserPoolClone &user_pool) {
  if (copy.owned != 0) user_pool.forget(copy.pool);
  copy.destroy();
  copy.pool = external_pool;
}

template <class Container>
void share_external_pools(const Container &source, Container &copy, UserPoolClone &user_pool) {
  const auto from = pools_of(source);
  const auto to = pools_of(copy);
  for (size_t i = 0; i < from.size(); ++i) {
    if (from[i].owned == 0) share_pool(from[i].pool, to[i], user_pool);
  }
}

// Copies the blocks of one pool of a container. If both containers own their pools, clone() copies the pool
// as a whole, blocks that are not in use included; otherwise it copies nothing, and copy_of() takes a new
// block of the clone's pool for each.
class BlockCopier {
 public:
  // Returns false if memory runs out.
  template <class Source, class Copy>
  bool clone(const Source &source, const Copy &copy, UserPoolClone &user_pool) {
    pool_ = copy.pool;
    is_whole_ = source.is_owned() && copy.is_owned();
    if (copy.is_owned()) user_pool.protect(copy.pool);
    return !is_whole_ || cloner_.clone(*source.pool, *copy.pool);
  }
  // Called instead of clone(): every copy is a new block of `pool`.
  void use_new_blocks_of(mub_pool *pool) { pool_ = pool; }

  bool is_whole() const { return is_whole_; }

  // nullptr if memory runs out or, where the pool was copied as a whole, the block is not of the pool.
  template <class Block>
  Block *copy_of(const Block &block) {
    if (is_whole_) return pointer_of<Block>(translate(word_of(&block)));
    auto *copy = static_cast<Block *>(pool::take(pool_));
    if (copy != nullptr) *copy = block;
    return copy;
  }

  // The address in the copy of an address in the pool; 0 for any other word, and for all words unless the
  // pool was copied as a whole.
  uint64_t translate(uint64_t word) { return cloner_.translate(word); }

 private:
  mub_pool *pool_ = nullptr;
  bool is_whole_ = false;
  PoolCloner cloner_;
};

// Copies the blocks of all pools of a container; the members are named like the fields of its record.
struct ContainerBlockCopiers {
  // Returns false if memory runs out. The user pool comes last, when the copy's own pools are protected: the
  // caller may have passed one of them as its destination.
  template <class Container>
  bool clone(const Container &source, const Container &copy, UserPoolClone &user_pool) {
    if (!entry_pool.clone(entry_pool_of(source), entry_pool_of(copy), user_pool)) return false;
    if constexpr (kHasNodePool<Container>) {
      if (!node_pool.clone(node_pool_of(source), node_pool_of(copy), user_pool)) return false;
    }
    return value_pool.clone(value_pool_of(source), value_pool_of(copy), user_pool) && user_pool.clone_pool();
  }

  BlockCopier entry_pool;
  BlockCopier node_pool;
  BlockCopier value_pool;
};

}  // namespace mub

#endif
