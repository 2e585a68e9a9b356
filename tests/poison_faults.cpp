// Memory errors that checkers report because the library poisons memory that nobody may use. poison_test.py
// runs `poison_faults NAME` for each: the line that ends in the comment NAME has the error.
#include <cstring>
#include <string_view>

#include "mub.hpp"
#include "mub_inline.h"

namespace {

constexpr int64_t kSize = 24;  // of a block

volatile char byte_read;
const volatile char &at(const void *bytes, int64_t offset) {
  return static_cast<const volatile char *>(bytes)[offset];
}

// A clone of a pool with one free block, one live block and others that were never taken.
mub::pool cloned_pool() {
  mub::pool pool(kSize);
  void *block = pool.allocate();
  std::memset(pool.allocate(), 1, kSize);
  pool.deallocate(block);
  return pool.clone();
}

// The key stream of a container is used like any other.
void use_keys() {
  mub::hash table;
  table.insert("key", 1);
  mub_stream_expand(&table.c()->keys, 1000);
  for (int i = 0; i < 1000; ++i) mub_hash_insert(table.c(), &i, sizeof i, 1);
  mub::stream bytes;
  mub_stream_swap(bytes.c(), &table.c()->keys);
  while (bytes.size() < bytes.capacity()) bytes.push_back(0);
}

void use_pools() {
  mub::pool pool(kSize), copy(kSize);
  for (int i = 0; i < 40; ++i) std::memset(pool.allocate(), 1, kSize);
  void *block = pool.allocate();
  std::memset(block, 1, kSize);
  pool.deallocate(block);
  std::memset(pool.allocate(), 1, kSize);
  pool.deallocate(block);
  std::memset(mub_pool_from_empty(pool.c()), 1, kSize);
#ifndef MUB_VALGRIND         // which cannot tell that this is no block
  char outside[kSize * 16];  // as large as a chunk
  pool.deallocate(outside);
  std::memset(outside, 1, sizeof outside);
#endif
  pool.deallocate(block);
  mub_pool_clone(pool.c(), nullptr, copy.c());  // without a map, it cannot know which blocks are free
  std::memset(copy.c()->chunks[0], 1, kSize * 16);
}

constexpr struct {
  std::string_view name;
  void (*commit)();
} kFaults[] = {
    {"write_after_value",
     [] {
       mub::hash table(mub::value_blocks{kSize});
       auto *bytes = mub::to_pointer<volatile char>(table.set("key").value);
       for (int i = 0; i < kSize; ++i) bytes[i] = 1;
       bytes[kSize] = 1;  // write_after_value
     }},
    {"use_of_removed_entry",
     [] {
       mub::hashx table;
       volatile auto *entry = table.emplace(7).entry;
       entry->value = 1;
       table.remove(7);
       entry->value = 2;  // use_of_removed_entry
     }},
    {"use_of_removed_link",
     [] {
       mub::list list;
       auto *entry = list.push_back("key", 1);
       list.pop_front();
       byte_read = at(&entry->value, 0);  // use_of_removed_link
     }},
    {"second_free",
     [] {
       mub::pool pool(kSize);
       void *block = pool.allocate();
       pool.deallocate(block);
       pool.deallocate(block);  // second_free
     }},
    {"free_of_untaken_block",
     [] {
       mub::pool pool(kSize);
       pool.deallocate(static_cast<char *>(pool.allocate()) + kSize);  // free_of_untaken_block
     }},
    {"use_of_free_block_of_clone",
     [] {
       const mub::pool copy = cloned_pool();
       byte_read = at(copy.c()->chunks[0], kSize);
       byte_read = at(copy.c()->chunks[0], 0);  // use_of_free_block_of_clone
     }},
    {"use_of_untaken_block_of_clone",
     [] {
       const mub::pool copy = cloned_pool();
       byte_read = at(copy.c()->chunks[0], 2 * kSize);  // use_of_untaken_block_of_clone
     }},
    {"read_after_keys_of_hash_table",
     [] {
       mub::hash table;
       table.insert("one", 1);
       byte_read = at(table.c()->keys.data, 2);
       byte_read = at(table.c()->keys.data, 3);  // read_after_keys_of_hash_table
     }},
    {"read_of_removed_key",
     [] {
       mub::btree tree;
       tree.insert("one", 1);
       tree.insert("two", 2);
       tree.remove("one");
       byte_read = at(tree.c()->keys.data, 2);
       byte_read = at(tree.c()->keys.data, 3);  // read_of_removed_key
     }},
    {"read_after_keys_of_clone",
     [] {
       mub::list list;
       list.push_back("a longer key", 1);
       const mub::list copy = list.clone();
       byte_read = at(copy.c()->keys.data, copy.c()->keys.length - 1);
       byte_read = at(copy.c()->keys.data, copy.c()->keys.capacity);  // read_after_keys_of_clone
     }},
    {"none",
     [] {
       use_keys();
       use_pools();
     }},
};

}  // namespace

int main(int argc, char **argv) {
  for (const auto &fault : kFaults) {
    if (argc < 2 || argv[1] != fault.name) continue;
    fault.commit();
    return 0;
  }
  return 2;
}
