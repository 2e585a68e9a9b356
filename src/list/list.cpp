// mub_list: linked_list.h with byte-string keys.
#include <algorithm>
#include <utility>

#include "bytes/bytes.h"
#include "bytes/text_pieces.h"
#include "containers/key_store.h"
#include "list/linked_list.h"
#include "list/verify.h"

namespace mub {

template <>
struct Policy<mub_list> : ListEntries<mub_list, PackedKeys<mub_list>> {
  static void retract_key(mub_list &list, Entry &entry) {
    buffer::shrink(list.keys, entry.key_offset);
    reset_key(entry);
  }

  static void erase_key(mub_list &list, Entry &entry) {
    PackedKeys::cut_key(list, entry, [&](keys::Range cut) { lower_offsets(list, cut); });
  }

  static void lower_offsets(mub_list &list, keys::Range cut) {
    const bool pool_has_only_items = has_exactly_live<Entry>(entry_pool_of(list), list.count);
    keys::lower_offsets<Entry>(list.entry_pool, pool_has_only_items, cut,
                               [&](auto lower) { linked_list::for_each(list, lower); });
  }
};

namespace {

uint64_t read_entry(const mub_list &list, const mub_list_entry *entry, const char **key, int64_t *length) {
  const ByteKey bytes = entry != nullptr ? Policy<mub_list>::key_of(list, *entry) : ByteKey{nullptr, 0};
  *key = reinterpret_cast<const char *>(bytes.bytes);
  *length = bytes.length;
  return linked_list::value_or_0(entry);
}

}  // namespace
}  // namespace mub

using namespace mub;
using linked_list::End;

extern "C" {

mub_list *mub_list_init(mub_list *list, int with_entry_pool, int with_value_pool) {
  linked_list::init(*list, with_entry_pool, with_value_pool);
  return list;
}

mub_list *mub_list_term(mub_list *list) {
  linked_list::term(*list);
  return list;
}

void mub_list_swap(mub_list *a, mub_list *b) { std::swap(*a, *b); }

mub_list *mub_list_clone(const mub_list *source, mub_pool *source_user_pool, mub_list *destination,
                         mub_pool *destination_user_pool, mub_clone_fn callback) {
  linked_list::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
  return destination;
}

int mub_list_verify(const mub_list *list, const char **what) {
  return report(linked_list::verify(*list), what);
}

int64_t mub_list_memory_bytes(const mub_list *list) { return linked_list::memory_bytes(*list); }

mub_list_entry *mub_list_entry_new(mub_list *list) { return linked_list::take_entry(*list); }

mub_list_entry *mub_list_add_head(mub_list *list, const void *key, int64_t length, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_at(*list, End::kHead), measured_key(key, length), value);
}

mub_list_entry *mub_list_add_tail(mub_list *list, const void *key, int64_t length, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_at(*list, End::kTail), measured_key(key, length), value);
}

uint64_t mub_list_add_head_new(mub_list *list, const void *key, int64_t length, mub_init_fn init) {
  return linked_list::add_new(*list, End::kHead, measured_key(key, length), init);
}

uint64_t mub_list_add_tail_new(mub_list *list, const void *key, int64_t length, mub_init_fn init) {
  return linked_list::add_new(*list, End::kTail, measured_key(key, length), init);
}

void mub_list_add_head_list(mub_list *list, const mub_list *source) {
  linked_list::add_list(*list, *source, End::kHead);
}

void mub_list_add_tail_list(mub_list *list, const mub_list *source) {
  linked_list::add_list(*list, *source, End::kTail);
}

mub_list_entry *mub_list_insert_before(mub_list *list, mub_list_entry *position, const void *key,
                                       int64_t length, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_before(*list, position), measured_key(key, length), value);
}

mub_list_entry *mub_list_insert_after(mub_list *list, mub_list_entry *position, const void *key,
                                      int64_t length, uint64_t value) {
  return linked_list::add(*list, linked_list::gap_after(*list, position), measured_key(key, length), value);
}

mub_list_entry *mub_list_get_head_position(const mub_list *list) { return list->head; }

mub_list_entry *mub_list_get_tail_position(const mub_list *list) { return list->tail; }

uint64_t mub_list_get_head(const mub_list *list, const char **key, int64_t *length) {
  return read_entry(*list, list->head, key, length);
}

uint64_t mub_list_get_tail(const mub_list *list, const char **key, int64_t *length) {
  return read_entry(*list, list->tail, key, length);
}

uint64_t mub_list_get_next(const mub_list *list, mub_list_entry **position, const char **key,
                           int64_t *length) {
  return read_entry(*list, linked_list::step(*position, End::kHead), key, length);
}

uint64_t mub_list_get_prev(const mub_list *list, mub_list_entry **position, const char **key,
                           int64_t *length) {
  return read_entry(*list, linked_list::step(*position, End::kTail), key, length);
}

uint64_t mub_list_get_at(const mub_list *list, const mub_list_entry *position, const char **key,
                         int64_t *length) {
  return read_entry(*list, position, key, length);
}

mub_list_entry *mub_list_find(const mub_list *list, const void *key, int64_t length) {
  const ByteKey wanted = measured_key(key, length);
  return linked_list::find(*list, [&](const mub_list_entry &entry) {
    const ByteKey stored = Policy<mub_list>::key_of(*list, entry);
    return bytes::equal(stored.bytes, stored.length, wanted.bytes, wanted.length);
  });
}

uint64_t mub_list_remove_head(mub_list *list) { return linked_list::remove(*list, list->head); }

uint64_t mub_list_remove_tail(mub_list *list) { return linked_list::remove(*list, list->tail); }

uint64_t mub_list_remove_at(mub_list *list, mub_list_entry *position) {
  return linked_list::remove_at(*list, position);
}

mub_list *mub_list_remove_all(mub_list *list) {
  linked_list::remove_all(*list);
  return list;
}

void mub_list_free_all(mub_list *list, mub_free_fn release) { linked_list::free_all(*list, release); }

void mub_list_remove_all_entry(mub_list *list) { linked_list::return_to_external_pool(*list); }

void mub_list_free_all_entry(mub_list *list, mub_free_fn release) {
  linked_list::free_all_entry(*list, release);
}

void mub_list_adjust_t(mub_list *list, uint32_t offset, int64_t length) {
  Policy<mub_list>::lower_offsets(*list, {offset, static_cast<uint32_t>(length)});
}

void mub_list_from_string(mub_list *list, int separator, const char *text, int64_t length) {
  const int64_t text_length = measured(text, length);
  // The text may be part of the list's own key stream, whose block the first growth releases.
  const PinnedBytes pinned = buffer::pinned(list->keys, text, text_length);
  if (pinned.failed()) return;
  const int64_t old_count = list->count;
  const auto add = [list](const char *key, int64_t key_length) {
    return linked_list::add(*list, linked_list::gap_at(*list, End::kTail), raw_key(key, key_length), 0) !=
           nullptr;
  };
  const auto *own_text = static_cast<const char *>(pinned.bytes());
  if (!pieces::for_each(own_text, text_length, separator, add))
    linked_list::retract(*list, End::kTail, old_count);
}

void mub_list_to_string(const mub_list *list, int separator, mub_string *string) {
  const int64_t room = list->keys.length + std::max<int64_t>(list->count - 1, 0);
  pieces::join(*string, room, separator, [list](auto visit) {
    linked_list::for_each(*list, [&](const mub_list_entry &entry) {
      const ByteKey key = Policy<mub_list>::key_of(*list, entry);
      visit(pieces::BytesText{key.bytes, key.length});
    });
  });
}
}
