// mub_array: slot_table.h with byte-string keys.
#include "arrays/byte_keys.h"
#include "arrays/slot_clone.h"
#include "arrays/verify.h"
#include "bytes/text_pieces.h"

using namespace mub;

namespace {

uint64_t read_entry(const mub_array &array, const mub_array_entry *entry, const char **key, int64_t *length) {
  const ByteKey bytes = entry != nullptr ? key_of(array, *entry) : ByteKey{nullptr, 0};
  *key = reinterpret_cast<const char *>(bytes.bytes);
  *length = bytes.length;
  return slots::value_or_0(entry);
}

// The size of a stream's block after the stream has grown to `length` bytes.
int64_t block_bytes(const mub_stream &stream, int64_t length) {
  if (length <= stream.capacity) return readable_end(stream);
  return buffer::grown_capacity<mub_stream>(stream.length, stream.capacity, length) + 1;
}

// Replaces an entry's key. The key of a spare slot may lie past the stream's length; the old and the new key
// only have to lie in the stream's block.
bool replace_key(mub_array &array, mub_array_entry &entry, const ByteKey &key) {
  mub_stream &stream = array.keys;
  const int64_t old_end = key_end(entry);
  const int64_t longer_by = key.length - entry.key_length;
  if (key.length > keys::kMaxBytes || !keys::has_room(stream, longer_by)) return false;
  if (old_end > block_bytes(stream, stream.length)) return false;
  if (old_end + longer_by > block_bytes(stream, stream.length + longer_by)) return false;
  if (!buffer::update(stream, entry.key_offset, entry.key_length, key.bytes, key.length)) return false;
  const uint32_t offset = entry.key_offset;
  if (longer_by != 0) shift_keys(array, slots::used(array), old_end, static_cast<uint32_t>(longer_by));
  entry.key_offset = offset;
  entry.key_length = static_cast<uint32_t>(key.length);
  return true;
}

}  // namespace

extern "C" {

mub_array *mub_array_init(mub_array *array, int with_pool) {
  slots::init(*array, with_pool != 0);
  return array;
}

mub_array *mub_array_term(mub_array *array) {
  slots::term(*array);
  return array;
}

int mub_array_expand(mub_array *array, int64_t wanted) { return slots::expand(*array, wanted); }

void mub_array_shrink(mub_array *array, int64_t n) { slots::shrink(*array, n); }

void mub_array_swap(mub_array *a, mub_array *b) { slots::swap(*a, *b); }

mub_array *mub_array_clone(const mub_array *source, mub_pool *source_user_pool, mub_array *destination,
                           mub_pool *destination_user_pool, mub_clone_fn callback) {
  slots::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
  return destination;
}

int mub_array_verify(const mub_array *array, const char **what) {
  const Fault fault = slots::verify(*array);
  return report(fault != nullptr ? fault : verify_keys(*array), what);
}

int64_t mub_array_memory_bytes(const mub_array *array) { return slots::memory_bytes(*array); }

mub_array *mub_array_remove_all(mub_array *array) {
  slots::remove_all(*array);
  return array;
}

mub_array *mub_array_free_all(mub_array *array, mub_free_fn release) {
  slots::free_all(*array, release);
  return array;
}

void mub_array_free_all_entry(mub_array *array, mub_free_fn release) { slots::free_values(*array, release); }

void mub_array_append(mub_array *array, const void *key, int64_t length, uint64_t value) {
  slots::append(*array, measured_key(key, length), value);
}

uint64_t mub_array_append_new(mub_array *array, const void *key, int64_t length, mub_init_fn init) {
  return slots::append_new(*array, measured_key(key, length), init);
}

void mub_array_append_array(mub_array *destination, const mub_array *source) {
  slots::append_array(*destination, *source);
}

mub_array_entry *mub_array_get_entry(const mub_array *array, int64_t index) {
  return slots::slot_at(*array, index);
}

uint64_t mub_array_get_at(const mub_array *array, int64_t index, const char **key, int64_t *length) {
  return read_entry(*array, slots::slot_at(*array, index), key, length);
}

uint64_t mub_array_get_first(const mub_array *array, const char **key, int64_t *length) {
  return read_entry(*array, slots::first_slot(*array), key, length);
}

uint64_t mub_array_get_last(const mub_array *array, const char **key, int64_t *length) {
  return read_entry(*array, slots::last_slot(*array), key, length);
}

uint64_t mub_array_set_at(mub_array *array, int64_t index, const void *key, int64_t length, uint64_t value) {
  mub_array_entry *entry = slots::slot_at(*array, index);
  if (entry == nullptr || !replace_key(*array, *entry, measured_key(key, length))) return 0;
  return slots::exchange_value(entry, value);
}

uint64_t mub_array_update_at(mub_array *array, int64_t index, uint64_t value) {
  return slots::exchange_value(slots::slot_at(*array, index), value);
}

void mub_array_insert_at(mub_array *array, int64_t index, const void *key, int64_t length, uint64_t value) {
  if (length >= 0) slots::insert_at(*array, index, raw_key(key, length), value);
}

uint64_t mub_array_remove_at(mub_array *array, int64_t index) { return slots::remove_at(*array, index); }

void mub_array_free_at(mub_array *array, int64_t index, mub_free_fn release) {
  slots::free_at(*array, index, release);
}

int mub_array_insert(mub_array *array, const void *key, int64_t length, uint64_t value) {
  const ByteKey wanted = measured_key(key, length);
  return slots::insert(*array, wanted, value, ByteSearchOrder{*array, wanted});
}

int mub_array_insert_new(mub_array *array, const void *key, int64_t length, uint64_t *value,
                         mub_init_fn init) {
  const ByteKey wanted = measured_key(key, length);
  return slots::insert_new(*array, wanted, *value, init, ByteSearchOrder{*array, wanted});
}

uint64_t mub_array_update(mub_array *array, const void *key, int64_t length, uint64_t value) {
  return slots::exchange_value(slots::find_slot(*array, byte_search_order(*array, key, length)), value);
}

uint64_t mub_array_remove(mub_array *array, const void *key, int64_t length) {
  return slots::remove_at(*array, slots::find_index(*array, byte_search_order(*array, key, length)));
}

void mub_array_free(mub_array *array, const void *key, int64_t length, mub_free_fn release) {
  slots::free_at(*array, slots::find_index(*array, byte_search_order(*array, key, length)), release);
}

mub_array_entry *mub_array_entry_insert(mub_array *array, const void *key, int64_t length) {
  if (length < 0 && array->count != 0)
    return slots::find_slot(*array, ByteSearchOrder{*array, raw_key(key, length)});
  const ByteKey wanted = measured_key(key, length);
  return slots::find_or_insert(*array, wanted, ByteSearchOrder{*array, wanted});
}

mub_array_entry *mub_array_entry_find(const mub_array *array, const void *key, int64_t length) {
  return slots::find_slot(*array, ByteSearchOrder{*array, raw_key(key, length)});
}

uint64_t mub_array_find(const mub_array *array, const void *key, int64_t length) {
  return slots::value_or_0(slots::find_slot(*array, byte_search_order(*array, key, length)));
}

int64_t mub_array_find_index(const mub_array *array, const void *key, int64_t length) {
  return slots::find_index(*array, byte_search_order(*array, key, length));
}

uint64_t mub_array_afind(const mub_array *array, const void *key, int64_t length) {
  return slots::value_or_0(slots::slot_at(*array, scan_for(*array, measured_key(key, length))));
}

int64_t mub_array_afind_index(const mub_array *array, const void *key, int64_t length) {
  return scan_for(*array, measured_key(key, length));
}

uint64_t mub_array_bfind(const mub_array *array, const void *key, int64_t length) {
  return slots::value_or_0(slots::nearest_slot(*array, byte_search_order(*array, key, length)));
}

int64_t mub_array_bfind_index(const mub_array *array, const void *key, int64_t length) {
  return slots::nearest_index(*array, byte_search_order(*array, key, length));
}

void mub_array_qsort(mub_array *array, int ascending) {
  slots::sort(*array, ascending != 0, ByteSortOrder(*array));
}

void mub_array_qsort_p(mub_array *array) { slots::sort(*array, true, ByteSortOrder(*array)); }

void mub_array_qsort_n(mub_array *array) { slots::sort(*array, false, ByteSortOrder(*array)); }

void mub_array_qsort_x(mub_array *array, int ascending, mub_compare_fn compare) {
  if (compare != nullptr) slots::sort_values(*array, ascending != 0, compare);
}

void mub_array_qsort_x_p(mub_array *array, mub_compare_fn compare) {
  if (compare != nullptr) slots::sort_values(*array, true, compare);
}

void mub_array_qsort_x_n(mub_array *array, mub_compare_fn compare) {
  if (compare != nullptr) slots::sort_values(*array, false, compare);
}

void mub_array_to_string(const mub_array *array, int separator, mub_string *string) {
  const int64_t count = slots::used(*array);
  const int64_t room = array->keys.length + std::max<int64_t>(count - 1, 0);
  pieces::join(*string, room, separator, [array, count](auto visit) {
    for (int64_t i = 0; i < count; ++i) {
      const ByteKey key = key_of(*array, array->entries[i]);
      visit(pieces::BytesText{key.bytes, key.length});
    }
  });
}

void mub_array_from_string(mub_array *array, int separator, const char *text, int64_t length) {
  if (length < 1) return;
  // The text may be part of the array's own key stream, whose block the first growth releases.
  const PinnedBytes pinned = buffer::pinned(array->keys, text, length);
  if (pinned.failed()) return;
  const int64_t count = array->count;
  const int64_t key_bytes = array->keys.length;
  const auto append = [array](const char *key, int64_t key_length) {
    return slots::append(*array, raw_key(key, key_length), 0) != nullptr;
  };
  if (pieces::for_each(static_cast<const char *>(pinned.bytes()), length, separator, append)) return;
  array->count = count;
  buffer::shrink(array->keys, key_bytes);
}
}
