// mub_arrays: slot_table.h with bare 64-bit items, ordered by the comparators that callers pass.
#include "arrays/slot_clone.h"
#include "arrays/verify.h"

using namespace mub;

namespace {

// Compares items with the wanted key by a caller's comparator.
struct ItemSearchOrder {
  static constexpr bool kIsDifference = false;
  uint64_t key;
  uint64_t context;
  mub_compare_item_fn call;

  bool is_given() const { return call != nullptr; }
  int operator()(uint64_t item) const { return call(item, key, context); }
};

struct ContextSearchOrder {
  static constexpr bool kIsDifference = false;
  uint64_t context;
  uint64_t key;
  uint64_t extra;
  mub_compare_context_fn call;

  bool is_given() const { return call != nullptr; }
  int operator()(uint64_t item) const { return call(context, item, key, extra); }
};

// For both kinds of comparator. Without a comparator nothing is found, and new items are appended.

template <class SearchOrder>
int insert(mub_arrays &array, uint64_t item, const SearchOrder &order) {
  if (order.is_given()) return slots::insert(array, NoKey{}, item, order);
  slots::append(array, NoKey{}, item);
  return 1;
}

template <class SearchOrder>
int insert_new(mub_arrays &array, uint64_t &item_out, mub_init_fn init, const SearchOrder &order) {
  if (order.is_given()) return slots::insert_new(array, NoKey{}, item_out, init, order);
  return slots::insert_new_at(array, array.count, NoKey{}, item_out, init);
}

template <class SearchOrder>
int64_t find_index(const mub_arrays &array, const SearchOrder &order) {
  return order.is_given() ? slots::find_index(array, order) : -1;
}

template <class SearchOrder>
int64_t nearest_index(const mub_arrays &array, const SearchOrder &order) {
  return order.is_given() ? slots::nearest_index(array, order) : -1;
}

uint64_t item_at(const mub_arrays &array, int64_t index) {
  return slots::value_or_0(slots::slot_at(array, index));
}

uint64_t exchange_item(mub_arrays &array, int64_t index, uint64_t item) {
  return slots::exchange_value(slots::slot_at(array, index), item);
}

void sort(mub_arrays &array, bool ascending, mub_compare_item_fn compare) {
  if (compare == nullptr) return;
  slots::sort_values(array, ascending, [compare](uint64_t a, uint64_t b) { return compare(a, b, 0); });
}

void sort_x(mub_arrays &array, uint64_t context, bool ascending, mub_compare_context_fn compare) {
  if (compare == nullptr) return;
  slots::sort_values(array, ascending,
                     [context, compare](uint64_t a, uint64_t b) { return compare(context, a, b, 0); });
}

}  // namespace

extern "C" {

void mub_arrays_init(mub_arrays *array, int with_pool) { slots::init(*array, with_pool != 0); }

void mub_arrays_term(mub_arrays *array) { slots::term(*array); }

int mub_arrays_expand(mub_arrays *array, int64_t wanted) { return slots::expand(*array, wanted); }

void mub_arrays_shrink(mub_arrays *array, int64_t n) { slots::shrink(*array, n); }

void mub_arrays_swap(mub_arrays *a, mub_arrays *b) { slots::swap(*a, *b); }

mub_arrays *mub_arrays_clone(const mub_arrays *source, mub_pool *source_user_pool, mub_arrays *destination,
                             mub_pool *destination_user_pool, mub_clone_fn callback) {
  slots::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
  return destination;
}

int mub_arrays_verify(const mub_arrays *array, const char **what) {
  return report(slots::verify(*array), what);
}

int64_t mub_arrays_memory_bytes(const mub_arrays *array) { return slots::memory_bytes(*array); }

void mub_arrays_remove_all(mub_arrays *array) { slots::remove_all(*array); }

mub_arrays *mub_arrays_free_all(mub_arrays *array, mub_free_fn release) {
  slots::free_all(*array, release);
  return array;
}

void mub_arrays_free_all_entry(mub_arrays *array, mub_free_fn release) {
  slots::free_values(*array, release);
}

void mub_arrays_append(mub_arrays *array, uint64_t item) { slots::append(*array, NoKey{}, item); }

uint64_t mub_arrays_append_new(mub_arrays *array, mub_init_fn init) {
  return slots::append_new(*array, NoKey{}, init);
}

void mub_arrays_append_array(mub_arrays *destination, const mub_arrays *source) {
  slots::append_array(*destination, *source);
}

uint64_t *mub_arrays_get_entry(const mub_arrays *array, int64_t index) {
  return slots::slot_at(*array, index);
}

uint64_t mub_arrays_get_at(const mub_arrays *array, int64_t index) { return item_at(*array, index); }

uint64_t mub_arrays_set_at(mub_arrays *array, int64_t index, uint64_t item) {
  return exchange_item(*array, index, item);
}

uint64_t mub_arrays_get_first(const mub_arrays *array) {
  return slots::value_or_0(slots::first_slot(*array));
}

uint64_t mub_arrays_get_last(const mub_arrays *array) { return slots::value_or_0(slots::last_slot(*array)); }

void mub_arrays_insert_at(mub_arrays *array, int64_t index, uint64_t item) {
  slots::insert_at(*array, index, NoKey{}, item);
}

uint64_t mub_arrays_remove_at(mub_arrays *array, int64_t index) { return slots::remove_at(*array, index); }

void mub_arrays_free_at(mub_arrays *array, int64_t index, mub_free_fn release) {
  slots::free_at(*array, index, release);
}

int mub_arrays_insert(mub_arrays *array, uint64_t item, uint64_t context, mub_compare_item_fn compare) {
  return insert(*array, item, ItemSearchOrder{item, context, compare});
}

int mub_arrays_insert_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                        mub_compare_context_fn compare) {
  return insert(*array, item, ContextSearchOrder{context, item, extra, compare});
}

int mub_arrays_insert_new(mub_arrays *array, uint64_t key, uint64_t context, uint64_t *item, mub_init_fn init,
                          mub_compare_item_fn compare) {
  return insert_new(*array, *item, init, ItemSearchOrder{key, context, compare});
}

int mub_arrays_insert_new_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra, uint64_t *item,
                            mub_init_fn init, mub_compare_context_fn compare) {
  return insert_new(*array, *item, init, ContextSearchOrder{context, key, extra, compare});
}

uint64_t mub_arrays_update(mub_arrays *array, uint64_t item, uint64_t context, mub_compare_item_fn compare) {
  return exchange_item(*array, find_index(*array, ItemSearchOrder{item, context, compare}), item);
}

uint64_t mub_arrays_update_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                             mub_compare_context_fn compare) {
  return exchange_item(*array, find_index(*array, ContextSearchOrder{context, item, extra, compare}), item);
}

uint64_t mub_arrays_remove(mub_arrays *array, uint64_t key, uint64_t context, mub_compare_item_fn compare) {
  return slots::remove_at(*array, find_index(*array, ItemSearchOrder{key, context, compare}));
}

uint64_t mub_arrays_remove_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                             mub_compare_context_fn compare) {
  return slots::remove_at(*array, find_index(*array, ContextSearchOrder{context, key, extra, compare}));
}

void mub_arrays_free(mub_arrays *array, uint64_t key, uint64_t context, mub_free_fn release,
                     mub_compare_item_fn compare) {
  slots::free_at(*array, find_index(*array, ItemSearchOrder{key, context, compare}), release);
}

void mub_arrays_free_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra, mub_free_fn release,
                       mub_compare_context_fn compare) {
  slots::free_at(*array, find_index(*array, ContextSearchOrder{context, key, extra, compare}), release);
}

uint64_t mub_arrays_find(const mub_arrays *array, uint64_t key, uint64_t context,
                         mub_compare_item_fn compare) {
  return item_at(*array, find_index(*array, ItemSearchOrder{key, context, compare}));
}

uint64_t mub_arrays_find_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                           mub_compare_context_fn compare) {
  return item_at(*array, find_index(*array, ContextSearchOrder{context, key, extra, compare}));
}

int64_t mub_arrays_find_index(const mub_arrays *array, uint64_t key, uint64_t context,
                              mub_compare_item_fn compare) {
  return find_index(*array, ItemSearchOrder{key, context, compare});
}

int64_t mub_arrays_find_index_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                mub_compare_context_fn compare) {
  return find_index(*array, ContextSearchOrder{context, key, extra, compare});
}

uint64_t mub_arrays_bfind(const mub_arrays *array, uint64_t key, uint64_t context,
                          mub_compare_item_fn compare) {
  return item_at(*array, nearest_index(*array, ItemSearchOrder{key, context, compare}));
}

uint64_t mub_arrays_bfind_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                            mub_compare_context_fn compare) {
  return item_at(*array, nearest_index(*array, ContextSearchOrder{context, key, extra, compare}));
}

int64_t mub_arrays_bfind_index(const mub_arrays *array, uint64_t key, uint64_t context,
                               mub_compare_item_fn compare) {
  return nearest_index(*array, ItemSearchOrder{key, context, compare});
}

int64_t mub_arrays_bfind_index_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                 mub_compare_context_fn compare) {
  return nearest_index(*array, ContextSearchOrder{context, key, extra, compare});
}

void mub_arrays_qsort(mub_arrays *array, int ascending, mub_compare_item_fn compare) {
  sort(*array, ascending != 0, compare);
}

void mub_arrays_qsort_p(mub_arrays *array, mub_compare_item_fn compare) { sort(*array, true, compare); }

void mub_arrays_qsort_n(mub_arrays *array, mub_compare_item_fn compare) { sort(*array, false, compare); }

void mub_arrays_qsort_x(mub_arrays *array, uint64_t context, int ascending, mub_compare_context_fn compare) {
  sort_x(*array, context, ascending != 0, compare);
}

void mub_arrays_qsort_x_p(mub_arrays *array, uint64_t context, mub_compare_context_fn compare) {
  sort_x(*array, context, true, compare);
}

void mub_arrays_qsort_x_n(mub_arrays *array, uint64_t context, mub_compare_context_fn compare) {
  sort_x(*array, context, false, compare);
}
}
