// Memory errors that checkers report because the library poisons memory that nobody may use. poison_test.py
// runs `poison_faults NAME` for each: the line that ends in the comment NAME has the error.
#include <cstring>
#include <map>
#include <string_view>

#include "mub_inline.h"

#include "mub.hpp"

namespace {

constexpr int kBlockSize = 24;

volatile uint8_t byte_read;

volatile uint8_t *bytes_of(mub_stream &keys) { return static_cast<uint8_t *>(keys.data); }

// One block is free, the next one live, and the others were never taken.
mub::pool cloned_pool() {
  mub::pool pool(kBlockSize);
  void *block = pool.allocate();
  std::memset(pool.allocate(), 1, kBlockSize);
  pool.deallocate(block);
  return pool.clone();
}

volatile uint8_t *first_block(mub::pool &pool) { return static_cast<uint8_t *>(pool.c()->chunks[0]); }

// The key stream of a container is used like any other.
void use_keys() {
  mub::hash table;
  table.insert("key", 1);
  mub_stream_expand(&table.c()->keys, 1000);
  for (int i = 0; i < 1000; i++) mub_hash_insert(table.c(), &i, sizeof i, 1);
  mub::stream bytes;
  mub_stream_swap(bytes.c(), &table.c()->keys);
  while (bytes.size() < bytes.c()->capacity) mub_stream_append(bytes.c(), "", 1);
}

void use_blocks() {
  mub::pool pool(kBlockSize);
  for (int i = 0; i < 40; i++) std::memset(pool.allocate(), 1, kBlockSize);
  void *block = pool.allocate();
  std::memset(block, 1, kBlockSize);
  pool.deallocate(block);
  std::memset(pool.allocate(), 1, kBlockSize);
  pool.deallocate(block);
  std::memset(mub_pool_from_empty(pool.c()), 1, kBlockSize);
#ifndef MUB_VALGRIND              // which cannot tell that this is no block
  char outside[kBlockSize * 16];  // as large as a chunk
  pool.deallocate(outside);
  std::memset(outside, 1, sizeof outside);
#endif
  pool.deallocate(block);
  mub::pool copy;  // without a map, it cannot know which blocks are free
  mub_pool_clone(pool.c(), nullptr, copy.c());
  std::memset(copy.c()->chunks[0], 1, kBlockSize * 16);
}

}  // namespace

int main(int argc, char **argv) {
  std::map<std::string_view, void (*)()> faults;
  faults["write_after_value"] = [] {
    mub::hash table(mub::value_blocks{kBlockSize});
    auto *value = mub::to_pointer<volatile char>(table.set("key").value);
    for (int i = 0; i < kBlockSize; i++) value[i] = 1;
    value[kBlockSize] = 1;  // write_after_value
  };
  faults["use_of_removed_entry"] = [] {
    mub::hashx table;
    volatile mub_hashx_entry *entry = table.emplace(7).entry;
    table.remove(7);
    entry->value = 2;  // use_of_removed_entry
  };
  faults["second_free"] = [] {
    mub::pool pool(kBlockSize);
    void *block = pool.allocate();
    pool.deallocate(block);
    pool.deallocate(block);  // second_free
  };
  faults["free_of_untaken_block"] = [] {
    mub::pool pool(kBlockSize);
    auto *block = static_cast<char *>(pool.allocate());
    pool.deallocate(block + kBlockSize);  // free_of_untaken_block
  };
  faults["read_after_keys_of_hash_table"] = [] {
    mub::hash table;
    table.insert("one", 1);
    byte_read = bytes_of(table.c()->keys)[2];
    byte_read = bytes_of(table.c()->keys)[3];  // read_after_keys_of_hash_table
  };
  faults["read_of_removed_key"] = [] {
    mub::btree tree;
    tree.insert("one", 1);
    tree.insert("two", 2);
    tree.remove("one");
    byte_read = bytes_of(tree.c()->keys)[2];
    byte_read = bytes_of(tree.c()->keys)[tree.c()->keys.length];  // read_of_removed_key
  };
  faults["read_after_keys_of_clone"] = [] {
    mub::list list;
    list.push_back("a longer key", 1);
    mub::list copy = list.clone();
    byte_read = bytes_of(copy.c()->keys)[copy.c()->keys.length - 1];
    byte_read = bytes_of(copy.c()->keys)[copy.c()->keys.capacity];  // read_after_keys_of_clone
  };
  faults["use_of_free_block_of_clone"] = [] {
    mub::pool copy = cloned_pool();
    byte_read = first_block(copy)[kBlockSize];
    byte_read = first_block(copy)[0];  // use_of_free_block_of_clone
  };
  faults["use_of_untaken_block_of_clone"] = [] {
    mub::pool copy = cloned_pool();
    byte_read = first_block(copy)[2 * kBlockSize];  // use_of_untaken_block_of_clone
  };
  faults["none"] = [] {
    use_keys();
    use_blocks();
  };
  const auto found = argc > 1 ? faults.find(argv[1]) : faults.end();
  if (found == faults.end()) return 2;
  found->second();
}
