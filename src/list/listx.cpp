// mub_listx: an unrolled list. The entries of linked_list.h are blocks of up to 32 values.
#include <algorithm>
#include <utility>

#include "list/linked_list.h"
#include "list/verify.h"

namespace mub {
namespace {

constexpr int64_t kSlots = sizeof mub_listx_block{}.values / sizeof(uint64_t);

// The number of values in a block, even if the caller has stored a count that is out of range.
int64_t held(const mub_listx_block &block) { return std::clamp<int64_t>(block.count, 0, kSlots); }

}  // namespace

template <>
struct Policy<mub_listx> : ListEntries<mub_listx, NoKeys<mub_listx>> {
  static constexpr int64_t kMaxValues = kSlots;

  static int64_t values_in(const Entry &block) { return block.count; }
  static void release_values(mub_listx &list, const Entry &block, mub_free_fn release_it) {
    for (int64_t i = 0; i < held(block); ++i) {
      release_value(value_pool_of(list), block.values[i], release_it);
    }
  }
};

namespace {

using linked_list::End;

// Returns a block with room for one more value: the one at the end of the list, or a new one, not yet linked.
template <End kEnd>
mub_listx_block *block_with_room(mub_listx &list) {
  mub_listx_block *block = linked_list::entry_at(list, kEnd);
  return block != nullptr && held(*block) < kSlots ? block : linked_list::take_entry(list);
}

template <End kEnd>
void put(mub_listx &list, mub_listx_block &block, uint64_t value) {
  if (&block != linked_list::entry_at(list, kEnd))
    linked_list::link(list, linked_list::gap_at(list, kEnd), block);
  const int64_t count = held(block);
  uint64_t *slot = block.values + count;
  if constexpr (kEnd == End::kHead) {
    slot = block.values;
    std::copy_backward(slot, slot + count, slot + count + 1);
  }
  *slot = value;
  block.count = count + 1;
  ++list.count;
}

template <End kEnd>
mub_listx *add(mub_listx &list, uint64_t value) {
  mub_listx_block *block = block_with_room<kEnd>(list);
  if (block == nullptr) return nullptr;
  put<kEnd>(list, *block, value);
  return &list;
}

// `init` runs before the value is added. It must not change the list. In case it did, look again: the block
// may be full, or back in its pool.
template <End kEnd>
uint64_t add_new(mub_listx &list, mub_init_fn init) {
  mub_listx_block *block = block_with_room<kEnd>(list);
  if (block == nullptr) return 0;
  const int64_t count = list.count;
  const uint64_t value = take_value(list.value_pool, init);
  if (list.count != count) block = block_with_room<kEnd>(list);  // GCOVR_EXCL_BR_LINE
  if (block == nullptr) return 0;                                // GCOVR_EXCL_BR_LINE
  put<kEnd>(list, *block, value);
  return value;
}

template <End kEnd>
uint64_t remove(mub_listx &list) {
  mub_listx_block *block = linked_list::entry_at(list, kEnd);
  const int64_t count = block != nullptr ? held(*block) : 0;
  if (count == 0) return 0;
  const int64_t rest = count - 1;
  const uint64_t value = std::exchange(block->values[kEnd == End::kHead ? 0 : rest], 0);
  --list.count;
  block->count = rest;
  if (rest == 0) {
    linked_list::unlink(list, *block);
    pool::give(list.entry_pool, block);
  } else if constexpr (kEnd == End::kHead) {
    std::copy(block->values + 1, block->values + count, block->values);
  }
  return value;
}

}  // namespace
}  // namespace mub

using namespace mub;

extern "C" {

mub_listx *mub_listx_init(mub_listx *list, int with_entry_pool, int with_value_pool) {
  linked_list::init(*list, with_entry_pool, with_value_pool);
  return list;
}

mub_listx *mub_listx_term(mub_listx *list) {
  linked_list::term(*list);
  return list;
}

int mub_listx_verify(const mub_listx *list, const char **what) {
  return report(linked_list::verify(*list), what);
}

int64_t mub_listx_memory_bytes(const mub_listx *list) { return linked_list::memory_bytes(*list); }

mub_listx_block *mub_listx_entry_new(mub_listx *list) { return linked_list::take_entry(*list); }

mub_listx *mub_listx_add_head(mub_listx *list, uint64_t value) { return add<End::kHead>(*list, value); }

mub_listx *mub_listx_add_tail(mub_listx *list, uint64_t value) { return add<End::kTail>(*list, value); }

uint64_t mub_listx_add_head_new(mub_listx *list, mub_init_fn init) {
  return add_new<End::kHead>(*list, init);
}

uint64_t mub_listx_add_tail_new(mub_listx *list, mub_init_fn init) {
  return add_new<End::kTail>(*list, init);
}

uint64_t mub_listx_remove_head(mub_listx *list) { return remove<End::kHead>(*list); }

uint64_t mub_listx_remove_tail(mub_listx *list) { return remove<End::kTail>(*list); }

mub_listx *mub_listx_remove_all(mub_listx *list) {
  linked_list::remove_all(*list);
  return list;
}

void mub_listx_free_all(mub_listx *list, mub_free_fn release) { linked_list::free_all(*list, release); }

void mub_listx_remove_all_entry(mub_listx *list) { linked_list::return_to_external_pool(*list); }

void mub_listx_free_all_entry(mub_listx *list, mub_free_fn release) {
  linked_list::free_all_entry(*list, release);
}

void mub_listx_free_array(mub_listx *list, mub_listx_block *block, mub_free_fn release) {
  Policy<mub_listx>::release_values(*list, *block, release);
}
}
