// What the tests of pools and of the containers on them share.
#ifndef MUB_TESTS_SUPPORT_POOLS_H
#define MUB_TESTS_SUPPORT_POOLS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "mub_pool.h"

namespace mub_test {

// A pool that is emptied at the end of its scope.
struct Pool : mub_pool {
  explicit Pool(int64_t size_bytes) {
    mub_pool_init(this);
    block_size = size_bytes;
  }
  ~Pool() { mub_pool_term(this); }
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;
};

// What the callbacks saw; a callback has no context of its own.
inline std::vector<uint64_t> seen;
inline void note(uint64_t value) { seen.push_back(value); }

// Values are blocks that hold a key; 0 stands for the key 0.
inline uint64_t &key_at(uint64_t value) { return *reinterpret_cast<uint64_t *>(value); }
inline uint64_t key_of(uint64_t value) { return value == 0 ? 0 : key_at(value); }
inline void note_key_once(uint64_t value) { note(std::exchange(key_at(value), 0)); }
// The map is that of the user's pools, if both were given.
inline void note_clone(const mub_pool_chunk *map, uint64_t source, mub_pool *users, uint64_t copy,
                       mub_pool *copied) {
  ASSERT_EQ(map == nullptr, users == nullptr || copied == nullptr);
  if (map != nullptr) {
    EXPECT_EQ(mub_pool_set_addr(users, static_cast<int>(map->index), 0), reinterpret_cast<void *>(map->base));
  }
  seen.insert(seen.end(), {key_of(source), key_of(copy)});
}

template <class Record>
uint64_t new_value(Record &record, uint64_t key) {
  const auto value = reinterpret_cast<uintptr_t>(mub_pool_new(record.value_pool));
  key_at(value) = key;
  return value;
}
template <class Record>
void return_value(Record &record, uint64_t value) {
  mub_pool_free(record.value_pool, reinterpret_cast<void *>(value));
}

// A container with its pools, or with the test's, which share its scope.
template <class A>
struct Pooled : A::Record {
  explicit Pooled(bool own_entries = true, bool own_values = true) {
    A::init(this, own_entries, own_values);
    if (!own_entries) this->entry_pool = &entries;
    if (!own_values) this->value_pool = &values;
    this->value_pool->block_size = sizeof(uint64_t);
  }
  ~Pooled() { A::term(this); }

  Pool entries{sizeof(typename A::Entry)}, values{sizeof(uint64_t)};
};

}  // namespace mub_test

#endif
