// mub_arrayt: 64-bit words, the first four of them in the record.
#include <algorithm>

#include "arrays/inline_slots.h"
#include "arrays/verify.h"
#include "bytes/pinned_bytes.h"
#include "bytes/text_pieces.h"

using namespace mub;

extern "C" {

void mub_arrayt_init(mub_arrayt *array) {
  array->tail = nullptr;
  array->count = 0;
  array->capacity = words::kInlineWords;
  array->descending = 0;
}

void mub_arrayt_term(mub_arrayt *array) { words::release_tail(*array, words::kInlineWords); }

mub_arrayt *mub_arrayt_remove_all(mub_arrayt *array) {
  std::fill_n(array->inline_items, words::kInlineWords, 0);
  words::release_tail(*array, 0);
  return array;
}

int64_t mub_arrayt_length(const mub_arrayt *array) { return array->count * words::kWordBytes; }

int mub_arrayt_expand(mub_arrayt *array, int64_t wanted) { return words::expand(*array, wanted); }

void mub_arrayt_shrink(mub_arrayt *array, int64_t n) { words::shrink(*array, n); }

void mub_arrayt_swap(mub_arrayt *a, mub_arrayt *b) { words::swap(*a, *b); }

void mub_arrayt_clone(const mub_arrayt *source, mub_arrayt *destination) {
  words::clone(*source, *destination);
}

int mub_arrayt_verify(const mub_arrayt *array, const char **what) {
  return report(words::verify(*array), what);
}

int64_t mub_arrayt_memory_bytes(const mub_arrayt *array) { return words::memory_bytes(*array); }

void mub_arrayt_append(mub_arrayt *array, uint64_t item) { words::append(*array, item); }

void mub_arrayt_append_array(mub_arrayt *destination, const mub_arrayt *source) {
  words::append_array(*destination, *source);
}

uint64_t mub_arrayt_get_at(const mub_arrayt *array, int64_t index) { return words::word_or_0(*array, index); }

void mub_arrayt_set_at(mub_arrayt *array, int64_t index, uint64_t item) {
  if (words::holds(*array, index)) words::word(*array, index) = item;
}

uint64_t mub_arrayt_get_first(const mub_arrayt *array) { return words::word_or_0(*array, 0); }

uint64_t mub_arrayt_get_last(const mub_arrayt *array) { return words::word_or_0(*array, array->count - 1); }

int mub_arrayt_insert(mub_arrayt *array, uint64_t item) {
  const Spot spot = words::find(*array, item);
  if (!spot.found) words::insert_at(*array, spot.index, item);
  return !spot.found;
}

int mub_arrayt_remove(mub_arrayt *array, uint32_t key) {
  const Spot spot = words::find(*array, key);
  if (spot.found) words::remove_at(*array, spot.index);
  return spot.found;
}

int mub_arrayt_find(const mub_arrayt *array, uint32_t key) { return words::find(*array, key).found; }

void mub_arrayt_insert_at(mub_arrayt *array, int64_t index, uint64_t item) {
  words::insert_at(*array, index, item);
}

uint64_t mub_arrayt_remove_at(mub_arrayt *array, int64_t index) { return words::remove_at(*array, index); }

void mub_arrayt_qsort(mub_arrayt *array, int ascending, int unique) {
  words::sort(*array, ascending != 0, unique != 0);
}

void mub_arrayt_qsort_p(uint64_t *items, int64_t count) { words::sort(items, count, true); }

void mub_arrayt_qsort_n(uint64_t *items, int64_t count) { words::sort(items, count, false); }

void mub_arrayt_to_string(const mub_arrayt *array, int separator, mub_string *string) {
  const int64_t count = words::used(*array);
  pieces::join(*string, count * 8 + std::max<int64_t>(count - 1, 0), separator, [array, count](auto visit) {
    for (int64_t i = 0; i < count; ++i)
      visit(number::IntegerText(static_cast<int64_t>(words::word(*array, i))));
  });
}

void mub_arrayt_from_string(mub_arrayt *array, int separator, const char *text, int64_t length) {
  if (length < 1) return;
  // The text may lie in the array's own words, in the record or in the tail.
  const auto size = static_cast<uint64_t>(length);
  const PinnedBytes outside(text, size, array, sizeof *array);
  const PinnedBytes pinned(outside.bytes(), size, array->tail, words::tail_bytes(*array));
  if (outside.failed() || pinned.failed()) return;
  const int64_t count = array->count;
  const auto append = [array](int64_t number) {
    return words::append(*array, static_cast<uint64_t>(number));
  };
  const auto *own_text = static_cast<const char *>(pinned.bytes());
  if (!pieces::for_each_integer(own_text, length, separator, append)) array->count = count;
}
}
