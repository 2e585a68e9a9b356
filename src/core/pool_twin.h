// A pool and its clone: blocks have the same chunk and offset in both, so an address in one is translated to the
// other through the sorted chunk map.
#ifndef MUB_CORE_POOL_TWIN_H
#define MUB_CORE_POOL_TWIN_H

#include <algorithm>
#include <cstdint>

#include "core/alloc.h"
#include "core/pool.h"
#include "core/value_pool.h"

namespace mub {

class PoolTwin {
 public:
  PoolTwin() = default;
  ~PoolTwin() {
    release(last_);
    release(map_);
  }
  PoolTwin(const PoolTwin &) = delete;
  PoolTwin &operator=(const PoolTwin &) = delete;

  // Maps `source`; false when memory runs out.
  bool map(const mub_pool &source) {
    source_ = &source;
    chunk_bytes_ = pool::chunk_bytes(source);
    map_ = pool::map(source);
    return map_ != nullptr || source.chunk_count == 0;
  }
  // Makes `destination` the copy of the mapped pool; false when memory runs out, `destination` then empty.
  bool clone_to(mub_pool &destination) {
    destination_ = &destination;
    return pool::clone(*source_, map_, destination);
  }
  // Both, and the means to translate.
  bool clone(const mub_pool &source, mub_pool &destination) {
    return map(source) && index_chunks() && clone_to(destination);
  }

  const mub_pool_chunk *chunk_map() const { return map_; }

  // The address in the clone of an address in the source; 0 for a word that lies in none of its chunks.
  uint64_t translate(uint64_t word) {
    // Neighbours in a structure are mostly neighbours in memory: try the chunk of the last call first.
    if (word - base_ < chunk_bytes_ && base_ != 0) return word - base_ + twin_base_;
    return translate_by_search(word);
  }

 private:
  // The range of the chunks' bases is cut into granules, no larger than a chunk unless chunks are far between; for
  // each, last_[g] is the position in the map of the last chunk that starts in it or before it.
  bool index_chunks() {
    const int64_t count = source_->chunk_count;
    if (count == 0) return true;  // the map may still be there, without an element
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

  // Position of the last chunk that starts at or before `word`, which is not below the first.
  int64_t find_chunk(uint64_t word) const {
    const uint64_t granule = std::min(granule_of(word), granules_ - 1);
    const int64_t last = last_[granule];
    // Mostly it is the last of the granule or the one before, with even odds: no branch chooses. More chunks lie
    // in a granule only when others are far away.
    const int64_t position = last - (map_[last].base > word ? 1 : 0);
    if (map_[position].base <= word) return position;  // GCOVR_EXCL_BR_LINE
    return pool::find_chunk(map_, position, word);     // GCOVR_EXCL_LINE
  }

  uint64_t translate_by_search(uint64_t word) {
    if (granules_ == 0 || word < map_[0].base) return 0;
    const int64_t position = find_chunk(word);
    if (word - map_[position].base >= chunk_bytes_) return 0;
    base_ = map_[position].base;
    twin_base_ = word_of(destination_->chunks[map_[position].index]);
    return word - base_ + twin_base_;
  }

  static constexpr int64_t kGranulesPerChunk = 8;

  const mub_pool *source_ = nullptr;
  const mub_pool *destination_ = nullptr;
  mub_pool_chunk *map_ = nullptr;
  uint64_t chunk_bytes_ = 0;
  int32_t *last_ = nullptr;
  uint64_t granules_ = 0;
  int granule_bits_ = 0;
  // The chunk of the last translation and its twin.
  uint64_t base_ = 0;
  uint64_t twin_base_ = 0;
};

// The pool outside a container that its values refer into, cloned beside it for the caller's callback.
class UserPools {
 public:
  UserPools(mub_pool *source, mub_pool *destination, mub_clone_fn callback)
      : source_(source), destination_(destination), callback_(callback) {}

  // Whether the copy would go into a pool of the container's clone.
  bool fill(const mub_pool *destination) const { return destination_ == destination; }

  // Clones the pool when there is one. A pool paired with itself is left alone, and nothing replaces what the container
  // clones into the destination itself. False when memory runs out.
  bool clone_beside(bool is_filled) {
    if (source_ == nullptr || destination_ == nullptr || callback_ == nullptr) return true;
    if (!twin_.map(*source_)) return false;
    return source_ == destination_ || is_filled || twin_.clone_to(*destination_);
  }

  // Lets a copy share a caller's pool. One of its own is given up for that, and then is no user's pool any more.
  void share(mub_pool *callers_pool, mub_pool *&pool, uint16_t &owned) {
    if (owned != 0 && (pool == source_ || pool == destination_)) source_ = destination_ = nullptr;
    PoolField{pool, owned}.destroy();
    pool = callers_pool;
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

// The pools of a container and those of its clone: which are cloned, and the means to translate between them.
class PoolTwins {
 public:
  // Clones the pools that both own, and the user's pool beside them; false when memory runs out.
  template <class Container>
  bool clone(const Container &source, const Container &copy, UserPools &user) {
    const mub_pool *from[] = {owned(source.entry_pool, source.owns_entry_pool),
                              owned(source.value_pool, source.owns_value_pool)};
    mub_pool *to[] = {owned(copy.entry_pool, copy.owns_entry_pool),
                      owned(copy.value_pool, copy.owns_value_pool)};
    clones_entries_ = from[0] != nullptr && to[0] != nullptr;
    clones_values_ = from[1] != nullptr && to[1] != nullptr;
    const bool is_filled = user.fill(to[0]) || user.fill(to[1]);
    return (!clones_entries_ || entries_.clone(*from[0], *to[0])) &&
           (!clones_values_ || values_.clone(*from[1], *to[1])) && user.clone_beside(is_filled);
  }

  // Otherwise the entries are to be copied one by one.
  bool clones_entries() const { return clones_entries_; }

  uint64_t entry_word(uint64_t source) { return entries_.translate(source); }
  template <class Entry>
  Entry *entry(const Entry *source) {
    return record_of<Entry>(entry_word(word_of(source)));
  }
  uint64_t value(uint64_t source) { return values_.translate(source); }

 private:
  static mub_pool *owned(mub_pool *pool, uint16_t flag) { return flag != 0 ? pool : nullptr; }

  PoolTwin entries_;
  PoolTwin values_;
  bool clones_entries_ = false;
  bool clones_values_ = false;
};

}  // namespace mub

#endif
