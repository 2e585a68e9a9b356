// mub_lists: linked_list.h with one value per entry and no keys.
#include <utility>

#include "list/linked_list.h"
#include "list/verify.h"

template <>
struct mub::Policy<mub_lists> : ListEntries<mub_lists, NoKeys<mub_lists>> {};

using namespace mub;
using linked_list::End;

extern "C" {

mub_lists *mub_lists_init(mub_lists *list, int with_entry_pool, int with_value_pool) {
  linked_list::init(*list, with_entry_pool, with_value_pool);
  return list;
}

mub_lists *mub_lists_term(mub_lists *list) {
  linked_list::term(*list);
  return list;
}

void mub_lists_swap(mub_lists *a, mub_lists *b) { std::swap(*a, *b); }

mub_lists *mub_lists_clone(const mub_lists *source, mub_pool *source_user_pool, mub_lists *destination,
                           mub_pool *destination_user_pool, mub_clone_fn callback) {
  linked_list::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
  return destination;
}

int mub_lists_verify(const mub_lists *list, const char **what) {
  return report(linked_list::verify(*list), what);
}

int64_t mub_lists_memory_bytes(const mub_lists *list) { return linked_list::memory_bytes(*list); }

mub_lists_entry *mub_lists_entry_new(mub_lists *list) { return linked_list::take_entry(*list); }

mub_lists_entry *mub_lists_add_head(mub_lists *list, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_at(*list, End::kHead), {}, value);
}

mub_lists_entry *mub_lists_add_tail(mub_lists *list, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_at(*list, End::kTail), {}, value);
}

uint64_t mub_lists_add_head_new(mub_lists *list, mub_init_fn init) {
  return linked_list::add_new(*list, End::kHead, {}, init);
}

uint64_t mub_lists_add_tail_new(mub_lists *list, mub_init_fn init) {
  return linked_list::add_new(*list, End::kTail, {}, init);
}

void mub_lists_add_head_list(mub_lists *list, const mub_lists *source) {
  linked_list::add_list(*list, *source, End::kHead);
}

void mub_lists_add_tail_list(mub_lists *list, const mub_lists *source) {
  linked_list::add_list(*list, *source, End::kTail);
}

mub_lists_entry *mub_lists_insert_before(mub_lists *list, mub_lists_entry *position, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_before(*list, position), {}, value);
}

mub_lists_entry *mub_lists_insert_after(mub_lists *list, mub_lists_entry *position, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_after(*list, position), {}, value);
}

mub_lists_entry *mub_lists_get_head_position(const mub_lists *list) { return list->head; }

mub_lists_entry *mub_lists_get_tail_position(const mub_lists *list) { return list->tail; }

uint64_t mub_lists_get_head(const mub_lists *list) { return linked_list::value_or_0(list->head); }

uint64_t mub_lists_get_tail(const mub_lists *list) { return linked_list::value_or_0(list->tail); }

uint64_t mub_lists_get_next(const mub_lists *, mub_lists_entry **position) {
  return linked_list::value_or_0(linked_list::step(*position, End::kHead));
}

uint64_t mub_lists_get_prev(const mub_lists *, mub_lists_entry **position) {
  return linked_list::value_or_0(linked_list::step(*position, End::kTail));
}

uint64_t mub_lists_get_at(const mub_lists *, const mub_lists_entry *position) {
  return linked_list::value_or_0(position);
}

mub_lists_entry *mub_lists_find_at(const mub_lists *list, uint64_t value) {
  return linked_list::find(*list, [=](const mub_lists_entry &entry) { return entry.value == value; });
}

mub_lists_entry *mub_lists_find(const mub_lists *list, uint64_t key, mub_compare_fn compare) {
  if (compare == nullptr) return nullptr;
  return linked_list::find(*list,
                           [=](const mub_lists_entry &entry) { return compare(entry.value, key) == 0; });
}

mub_lists_entry *mub_lists_find_x(const mub_lists *list, uint64_t key, uint64_t context,
                                  mub_compare_item_fn compare) {
  if (compare == nullptr) return nullptr;
  return linked_list::find(
      *list, [=](const mub_lists_entry &entry) { return compare(key, entry.value, context) == 0; });
}

uint64_t mub_lists_remove_head(mub_lists *list) { return linked_list::remove(*list, list->head); }

uint64_t mub_lists_remove_tail(mub_lists *list) { return linked_list::remove(*list, list->tail); }

uint64_t mub_lists_remove_at(mub_lists *list, mub_lists_entry *position) {
  return linked_list::remove_at(*list, position);
}

mub_lists *mub_lists_remove_all(mub_lists *list) {
  linked_list::remove_all_with_values(*list);
  return list;
}

void mub_lists_free_all(mub_lists *list, mub_free_fn release) { linked_list::free_all(*list, release); }

void mub_lists_remove_all_entry(mub_lists *list) { linked_list::return_entries(*list); }

void mub_lists_free_all_entry(mub_lists *list, mub_free_fn release) {
  linked_list::free_all_entry(*list, release);
}
}
