// mub_arrayd: conversion of the keys to and from decimal text.
#include <algorithm>

#include "arrays/integer_keys.h"
#include "bytes/pinned_bytes.h"
#include "bytes/text_pieces.h"

using namespace mub;

extern "C" {

void mub_arrayd_to_string(const mub_arrayd *array, int separator, mub_string *string) {
  const int64_t count = slots::used(*array);
  pieces::join(*string, std::max<int64_t>(count * 5 - 1, 0), separator, [array, count](auto visit) {
    for (int64_t i = 0; i < count; ++i) visit(number::IntegerText(int64_t{array->entries[i].key}));
  });
}

void mub_arrayd_from_string(mub_arrayd *array, int separator, const char *text, int64_t length) {
  if (length < 1) return;
  // The text may lie in the array's own table, which the first growth releases.
  const auto table_bytes = static_cast<uint64_t>(array->capacity) * sizeof *array->entries;
  const PinnedBytes pinned(text, static_cast<uint64_t>(length), array->entries, table_bytes);
  if (pinned.failed()) return;
  const int64_t count = array->count;
  const auto append = [array](int64_t number) {
    return slots::append(*array, static_cast<uint32_t>(number), 0) != nullptr;
  };
  const auto *own_text = static_cast<const char *>(pinned.bytes());
  if (!pieces::for_each_integer(own_text, length, separator, append)) array->count = count;
}
}
