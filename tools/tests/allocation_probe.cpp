// Prints "NAME 1" for each call that allocated and "NAME 0" for each that did not. api_test.py compares this
// with mub-api.json.
#include <cstdint>
#include <cstdio>
#include <mub.hpp>

#include "support/fuse.h"

template <class Operation>
static void watch(const char *name, Operation operation) {
  const int64_t before = mub_test::allocations_so_far();
  operation();
  std::printf("%s %d\n", name, mub_test::allocations_so_far() > before ? 1 : 0);
}

static void watch_containers() {
  mub::hash hash, copy;
  int64_t bucket;
  watch("mub_hash_insert", [&] { mub_hash_insert(hash.c(), "key", -1, 1); });
  watch("mub_hash_get", [&] { mub_hash_get(hash.c(), "key", -1); });
  watch("mub_hash_entry_first", [&] { mub_hash_entry_first(hash.c(), &bucket); });
  watch("mub_hash_expand", [&] { mub_hash_expand(hash.c()); });
  watch("mub_hash_clone", [&] { mub_hash_clone(hash.c(), nullptr, copy.c(), nullptr, nullptr); });
  watch("mub_hash_swap", [&] { mub_hash_swap(hash.c(), copy.c()); });
  watch("mub_hash_remove", [&] { mub_hash_remove(hash.c(), "key", -1); });  // allocates a free page

  mub::btreed tree;
  watch("mub_btreed_insert", [&] { mub_btreed_insert(tree.c(), 1, 1); });
  watch("mub_btreed_node_next", [&] { mub_btreed_node_next(tree.c(), mub_btreed_node_first(tree.c())); });

  mub::bitree pair;
  mub_bitree_entry *entry = nullptr;
  watch("mub_bitree_entry_new", [&] { entry = mub_bitree_entry_new(pair.c()); });
  watch("mub_bitree_entry_add", [&] { mub_bitree_entry_add(pair.c(), &pair.c()->root, -1, entry); });

  mub::lists list;
  watch("mub_lists_add_tail", [&] { mub_lists_add_tail(list.c(), 1); });
  watch("mub_lists_find_at", [&] { mub_lists_find_at(list.c(), 1); });
  watch("mub_lists_remove_head", [&] { mub_lists_remove_head(list.c()); });

  mub::array array;
  watch("mub_array_append", [&] { mub_array_append(array.c(), "b", 1, 1); });
  watch("mub_array_qsort", [&] { mub_array_qsort(array.c(), 1); });
  mub::bits bits;
  watch("mub_bits_find", [&] { mub_bits_find(bits.c(), 3); });
  watch("mub_bits_insert", [&] { mub_bits_insert(bits.c(), 3, 1); });
}

static void watch_texts() {
  mub::string string;
  watch("mub_string_append", [&] { mub_string_append(string.c(), "one two", -1); });
  watch("mub_string_replace", [&] { mub_string_replace(string.c(), "o", "zero"); });
  watch("mub_string_format", [&] { mub_string_format(string.c(), "%d", 12); });
  watch("mub_string_trim", [&] { mub_string_trim(string.c()); });
  watch("mub_string_get_long", [&] { mub_string_get_long(string.c(), 0); });
  mub_stringx view;
  watch("mub_stringx_copy_string", [&] { mub_stringx_copy_string(&view, string.c()); });
  watch("mub_stringx_find", [&] { mub_stringx_find(&view, "1", 1); });
  mub::wchar wide;
  watch("mub_wchar_copy_str", [&] { mub_wchar_copy_str(wide.c(), "wide", -1); });
  watch("mub_wchar_make_upper", [&] { mub_wchar_make_upper(wide.c()); });
  mub::stream stream;
  watch("mub_stream_expand", [&] { mub_stream_expand(stream.c(), 64); });
  watch("mub_stream_crc32", [&] { mub_stream_crc32(stream.c()->data, 8); });
}

int main() {
  watch_containers();
  watch_texts();
}
