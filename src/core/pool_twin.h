// A pool and its clone: blocks have the same chunk and offset in both, so an address in one is translated to the
// other through the sorted chunk map.
#ifndef MUB_CORE_POOL_TWIN_H
#define MUB_CORE_POOL_TWIN_H

#include <cstdint>

#include "core/alloc.h"
#include "core/pool.h"

namespace mub {

class PoolTwin {
 public:
  PoolTwin() = default;
  ~PoolTwin() { release(map_); }
  PoolTwin(const PoolTwin &) = delete;
  PoolTwin &operator=(const PoolTwin &) = delete;

  // Maps `source`; false when memory runs out.
  bool map(const mub_pool &source) {
    source_ = &source;
    chunk_bytes_ = static_cast<uint64_t>(source.blocks_per_chunk * source.block_size);
    map_ = pool::map(source);
    return map_ != nullptr || source.chunk_count == 0;
  }
  // Makes `destination` the copy of the mapped pool; false when memory runs out, `destination` then empty.
  bool clone_to(mub_pool &destination) {
    destination_ = &destination;
    return pool::clone(*source_, map_, destination);
  }
  bool clone(const mub_pool &source, mub_pool &destination) { return map(source) && clone_to(destination); }

  const mub_pool_chunk *chunk_map() const { return map_; }

  // The address in the clone of an address in the source; 0 for a word that lies in none of its chunks.
  uint64_t translate(uint64_t word) {
    // Neighbours in a structure are mostly neighbours in memory: try the chunk of the last call first.
    if (word - base_ < chunk_bytes_ && base_ != 0) return word - base_ + twin_base_;
    return translate_by_search(word);
  }

 private:
  uint64_t translate_by_search(uint64_t word) {
    if (map_ == nullptr) return 0;
    const int64_t position = pool::find_chunk(map_, source_->chunk_count, word);
    if (position < 0 || word - map_[position].base >= chunk_bytes_) return 0;
    base_ = map_[position].base;
    twin_base_ = reinterpret_cast<uintptr_t>(destination_->chunks[map_[position].index]);
    return word - base_ + twin_base_;
  }

  const mub_pool *source_ = nullptr;
  const mub_pool *destination_ = nullptr;
  mub_pool_chunk *map_ = nullptr;
  uint64_t chunk_bytes_ = 0;
  uint64_t base_ = 0;
  uint64_t twin_base_ = 0;
};

// The pool outside a container that its values refer into, cloned beside it for the caller's callback.
class UserPools {
 public:
  UserPools(mub_pool *source, mub_pool *destination, mub_clone_fn callback)
      : source_(source), destination_(destination), callback_(callback) {}

  bool are(const mub_pool *source, const mub_pool *destination) const {
    return source_ == source && destination_ == destination;
  }

  // Clones the pool when there is one. A pool paired with itself is left alone, and so is a pair that the container
  // has cloned itself. False when memory runs out.
  bool clone_beside(bool already_cloned) {
    if (source_ == nullptr || destination_ == nullptr || callback_ == nullptr) return true;
    if (!twin_.map(*source_)) return false;
    return source_ == destination_ || already_cloned || twin_.clone_to(*destination_);
  }

  void mend(uint64_t source_value, uint64_t value) const {
    if (callback_ != nullptr) callback_(twin_.chunk_map(), source_value, source_, value, destination_);
  }

 private:
  mub_pool *source_;
  mub_pool *destination_;
  mub_clone_fn callback_;
  PoolTwin twin_;
};

}  // namespace mub

#endif
