// Prints "NAME 1" for each call that allocated and "NAME 0" for each that did not. api_test.py compares this
// with mub-api.json.
#include <cstdint>
#include <cstdio>

#include "mub.h"
#include "support/fuse.h"

namespace {

template <class Operation>
void watch(const char *name, Operation operation) {
  const int64_t before = mub_test::allocations_so_far();
  operation();
  std::printf("%s %d\n", name, mub_test::allocations_so_far() > before ? 1 : 0);
}

void hashes() {
  mub_hash hash, copy;
  int64_t bucket;
  watch("mub_hash_init", [&] { mub_hash_init(&hash, 1, 0); });
  mub_hash_init(&copy, 1, 0);
  watch("mub_hash_insert", [&] { mub_hash_insert(&hash, "key", -1, 1); });
  watch("mub_hash_get", [&] { mub_hash_get(&hash, "key", -1); });
  watch("mub_hash_update", [&] { mub_hash_update(&hash, "key", -1, 2); });
  watch("mub_hash_find", [&] { mub_hash_find(&hash, "key", -1); });
  watch("mub_hash_entry_first", [&] { mub_hash_entry_first(&hash, &bucket); });
  watch("mub_hash_expand", [&] { mub_hash_expand(&hash); });
  watch("mub_hash_clone", [&] { mub_hash_clone(&hash, nullptr, &copy, nullptr, nullptr); });
  watch("mub_hash_swap", [&] { mub_hash_swap(&hash, &copy); });
  watch("mub_hash_remove", [&] { mub_hash_remove(&hash, "key", -1); });  // allocates a free page
  watch("mub_hash_term", [&] { mub_hash_term(&hash); });
  mub_hash_term(&copy);
}

void trees_and_lists() {
  mub_btreed tree;
  mub_lists list;
  mub_bitree pair;
  watch("mub_btreed_init", [&] { mub_btreed_init(&tree, 1, 1, 0); });
  watch("mub_btreed_insert", [&] { mub_btreed_insert(&tree, 1, 1); });
  watch("mub_btreed_node_next", [&] { mub_btreed_node_next(&tree, mub_btreed_node_first(&tree)); });
  watch("mub_btreed_update", [&] { mub_btreed_update(&tree, 1, 2); });
  mub_btreed_term(&tree);
  watch("mub_lists_init", [&] { mub_lists_init(&list, 1, 0); });
  watch("mub_lists_add_tail", [&] { mub_lists_add_tail(&list, 1); });
  watch("mub_lists_find_at", [&] { mub_lists_find_at(&list, 1); });
  watch("mub_lists_remove_head", [&] { mub_lists_remove_head(&list); });
  mub_lists_term(&list);
  mub_bitree_init(&pair, 1, 0);
  mub_bitree_entry *entry = nullptr;
  watch("mub_bitree_entry_new", [&] { entry = mub_bitree_entry_new(&pair); });
  watch("mub_bitree_entry_add", [&] { mub_bitree_entry_add(&pair, &pair.root, -1, entry); });
  mub_bitree_term(&pair);
}

void texts() {
  mub_string string, wide_source;
  mub_stringx view;
  mub_wchar wide;
  int64_t cursor = 0;
  watch("mub_string_init", [&] { mub_string_init(&string); });
  watch("mub_string_append", [&] { mub_string_append(&string, "one two", -1); });
  watch("mub_string_replace", [&] { mub_string_replace(&string, "o", "zero"); });
  watch("mub_string_format", [&] { mub_string_format(&string, "%d", 12); });
  watch("mub_string_trim", [&] { mub_string_trim(&string); });
  watch("mub_string_get_long", [&] { mub_string_get_long(&string, 0); });
  watch("mub_string_left", [&] { mub_string_left(&string, 1); });
  watch("mub_stringx_copy_string", [&] { mub_stringx_copy_string(&view, &string); });
  watch("mub_stringx_find", [&] { mub_stringx_find(&view, "1", 1); });
  mub_string_init(&wide_source);
  watch("mub_string_clone", [&] { mub_string_clone(&string, &wide_source); });
  mub_string_term(&wide_source);
  mub_wchar_init(&wide);
  watch("mub_wchar_copy_str", [&] { mub_wchar_copy_str(&wide, "wide", -1); });
  watch("mub_wchar_make_upper", [&] { mub_wchar_make_upper(&wide); });
  mub_wchar_term(&wide);
  watch("mub_string_term", [&] { mub_string_term(&string); });
  mub_stream stream;
  mub_stream_init(&stream);
  watch("mub_stream_expand", [&] { mub_stream_expand(&stream, 64); });
  mub_stream_shrink(&stream, 8);
  watch("mub_stream_set_dword", [&] { mub_stream_set_dword(&stream, &cursor, 7); });
  watch("mub_stream_crc32", [&] { mub_stream_crc32(stream.data, 8); });
  mub_stream_term(&stream);
}

void arrays_and_blocks() {
  mub_array array;
  mub_arrayt words;
  mub_pool pool;
  mub_bits bits;
  mub_array_init(&array, 0);
  watch("mub_array_append", [&] { mub_array_append(&array, "b", 1, 1); });
  watch("mub_array_find", [&] { mub_array_find(&array, "b", 1); });
  watch("mub_array_qsort", [&] { mub_array_qsort(&array, 1); });
  watch("mub_array_remove", [&] { mub_array_remove(&array, "b", 1); });
  mub_array_term(&array);
  mub_arrayt_init(&words);
  for (uint64_t i = 0; i < 4; ++i) mub_arrayt_append(&words, i);
  watch("mub_arrayt_append", [&] { mub_arrayt_append(&words, 4); });
  watch("mub_arrayt_qsort", [&] { mub_arrayt_qsort(&words, 0, 0); });
  watch("mub_arrayt_qsort_p", [&] { mub_arrayt_qsort_p(words.inline_items, 4); });
  mub_arrayt_term(&words);
  mub_pool_init(&pool);
  pool.block_size = 8;
  void *block = nullptr;
  watch("mub_pool_new", [&] { block = mub_pool_new(&pool); });
  watch("mub_pool_free", [&] { mub_pool_free(&pool, block); });
  watch("mub_pool_empty", [&] { mub_pool_empty(&pool); });
  mub_bits_init(&bits);
  watch("mub_bits_find", [&] { mub_bits_find(&bits, 3); });
  watch("mub_bits_insert", [&] { mub_bits_insert(&bits, 3, 1); });
  mub_bits_term(&bits);
}

}  // namespace

int main() {
  hashes();
  trees_and_lists();
  texts();
  arrays_and_blocks();
  return 0;
}
