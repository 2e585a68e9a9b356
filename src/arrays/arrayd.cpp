// mub_arrayd: slot_table.h with 32-bit integer keys.
#include "arrays/integer_keys.h"
#include "arrays/slot_clone.h"
#include "arrays/verify.h"

using namespace mub;

extern "C" {

mub_arrayd *mub_arrayd_init(mub_arrayd *array, int with_pool) {
  slots::init(*array, with_pool != 0);
  return array;
}

mub_arrayd *mub_arrayd_term(mub_arrayd *array) {
  slots::term(*array);
  return array;
}

int mub_arrayd_expand(mub_arrayd *array, int64_t wanted) { return slots::expand(*array, wanted); }

void mub_arrayd_shrink(mub_arrayd *array, int64_t n) { slots::set_count(*array, n); }

void mub_arrayd_swap(mub_arrayd *a, mub_arrayd *b) { slots::swap(*a, *b); }

mub_arrayd *mub_arrayd_clone(const mub_arrayd *source, mub_pool *source_user_pool, mub_arrayd *destination,
                             mub_pool *destination_user_pool, mub_clone_fn callback) {
  slots::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
  return destination;
}

int mub_arrayd_verify(const mub_arrayd *array, const char **what) {
  return report(slots::verify(*array), what);
}

int64_t mub_arrayd_memory_bytes(const mub_arrayd *array) { return slots::memory_bytes(*array); }

mub_arrayd *mub_arrayd_remove_all(mub_arrayd *array) {
  slots::remove_all(*array);
  return array;
}

mub_arrayd *mub_arrayd_free_all(mub_arrayd *array, mub_free_fn release) {
  slots::free_all(*array, release);
  return array;
}

void mub_arrayd_free_all_entry(mub_arrayd *array, mub_free_fn release) {
  slots::free_values(*array, release);
}

void mub_arrayd_append(mub_arrayd *array, uint32_t key, uint64_t value) { slots::append(*array, key, value); }

uint64_t mub_arrayd_append_new(mub_arrayd *array, uint32_t key, mub_init_fn init) {
  return slots::append_new(*array, key, init);
}

void mub_arrayd_append_array(mub_arrayd *destination, const mub_arrayd *source) {
  slots::append_array(*destination, *source);
}

mub_arrayd_entry *mub_arrayd_get_entry(const mub_arrayd *array, int64_t index) {
  return slots::slot_at(*array, index);
}

uint64_t mub_arrayd_get_at(const mub_arrayd *array, int64_t index, uint32_t *key) {
  return integers::read_entry(slots::slot_at(*array, index), *key);
}

uint64_t mub_arrayd_get_first(const mub_arrayd *array, uint32_t *key) {
  return integers::read_entry(slots::first_slot(*array), *key);
}

uint64_t mub_arrayd_get_last(const mub_arrayd *array, uint32_t *key) {
  return integers::read_entry(slots::last_slot(*array), *key);
}

uint64_t mub_arrayd_set_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value) {
  return integers::set_at(*array, index, key, value);
}

uint64_t mub_arrayd_update_at(mub_arrayd *array, int64_t index, uint64_t value) {
  return slots::exchange_value(slots::slot_at(*array, index), value);
}

void mub_arrayd_insert_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value) {
  slots::insert_at(*array, index, key, value);
}

uint64_t mub_arrayd_remove_at(mub_arrayd *array, int64_t index, uint32_t *key) {
  return integers::remove_at(*array, index, *key);
}

void mub_arrayd_free_at(mub_arrayd *array, int64_t index, mub_free_fn release) {
  slots::free_at(*array, index, release);
}

int mub_arrayd_insert(mub_arrayd *array, uint32_t key, uint64_t value) {
  return slots::insert(*array, key, value, IntegerSearchOrder{key});
}

int mub_arrayd_insert_new(mub_arrayd *array, uint32_t key, uint64_t *value, mub_init_fn init) {
  return slots::insert_new(*array, key, *value, init, IntegerSearchOrder{key});
}

uint64_t mub_arrayd_update(mub_arrayd *array, uint32_t key, uint64_t value) {
  return slots::exchange_value(slots::find_slot(*array, IntegerSearchOrder{key}), value);
}

uint64_t mub_arrayd_remove(mub_arrayd *array, uint32_t key) {
  return slots::remove_at(*array, slots::find_index(*array, IntegerSearchOrder{key}));
}

void mub_arrayd_free(mub_arrayd *array, uint32_t key, mub_free_fn release) {
  slots::free_at(*array, slots::find_index(*array, IntegerSearchOrder{key}), release);
}

mub_arrayd_entry *mub_arrayd_entry_insert(mub_arrayd *array, uint32_t key) {
  return slots::find_or_insert(*array, key, IntegerSearchOrder{key});
}

mub_arrayd_entry *mub_arrayd_entry_find(const mub_arrayd *array, uint32_t key) {
  return slots::find_slot(*array, IntegerSearchOrder{key});
}

uint64_t mub_arrayd_find(const mub_arrayd *array, uint32_t key) {
  return slots::value_or_0(slots::find_slot(*array, IntegerSearchOrder{key}));
}

int64_t mub_arrayd_find_index(const mub_arrayd *array, uint32_t key) {
  return slots::find_index(*array, IntegerSearchOrder{key});
}

uint64_t mub_arrayd_afind(const mub_arrayd *array, uint32_t key) {
  return slots::value_or_0(slots::slot_at(*array, integers::scan_for(*array, key)));
}

int64_t mub_arrayd_afind_index(const mub_arrayd *array, uint32_t key) {
  return integers::scan_for(*array, key);
}

uint64_t mub_arrayd_bfind(const mub_arrayd *array, uint32_t key) {
  return slots::value_or_0(slots::nearest_slot(*array, IntegerSearchOrder{key}));
}

int64_t mub_arrayd_bfind_index(const mub_arrayd *array, uint32_t key) {
  return slots::nearest_index(*array, IntegerSearchOrder{key});
}

void mub_arrayd_qsort(mub_arrayd *array, int ascending) { integers::sort(*array, ascending != 0); }

void mub_arrayd_qsort_p(mub_arrayd *array) { integers::sort(*array, true); }

void mub_arrayd_qsort_n(mub_arrayd *array) { integers::sort(*array, false); }

void mub_arrayd_qsort_x(mub_arrayd *array, int ascending, mub_compare_fn compare) {
  if (compare != nullptr) slots::sort_values(*array, ascending != 0, compare);
}

void mub_arrayd_qsort_x_p(mub_arrayd *array, mub_compare_fn compare) {
  if (compare != nullptr) slots::sort_values(*array, true, compare);
}

void mub_arrayd_qsort_x_n(mub_arrayd *array, mub_compare_fn compare) {
  if (compare != nullptr) slots::sort_values(*array, false, compare);
}
}
