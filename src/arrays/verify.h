// Checks the invariants of arrays: slot_table.h, byte_keys.h and inline_slots.h have them.
#ifndef MUB_ARRAYS_VERIFY_H
#define MUB_ARRAYS_VERIFY_H

#include <algorithm>
#include <cstdint>

#include "arrays/byte_keys.h"
#include "arrays/inline_slots.h"
#include "arrays/slot_table.h"
#include "base/fault.h"
#include "base/number_set.h"
#include "containers/verify.h"

namespace mub {
namespace slots {

// The table, also of buckets and of the children of a node.
template <class Array>
Fault verify_table(const Array &array) {
  if (array.capacity < 0 || array.capacity % 4 != 0) return "A capacity is negative, or no multiple of 4.";
  if ((table(array) == nullptr) != (array.capacity == 0)) return "A table is missing, or has no capacity.";
  const bool is_in_range = array.count >= 0 && array.count <= array.capacity;
  return is_in_range ? nullptr : "A count is negative, or exceeds the capacity.";
}

template <class Array>
Fault verify(const Array &array) {
  // After a clone that ran out of memory, an array has no table, but a count.
  const bool is_failed_clone = array.capacity == 0 && table(array) == nullptr && array.count > 0;
  const Fault fault = is_failed_clone ? nullptr : verify_table(array);
  return fault != nullptr ? fault : verify_pool(value_pool_of(array));
}

}  // namespace slots

// Whether no byte belongs to two keys. These lie in any order, with gaps, so a part of the stream at a time
// is compared with all keys.
inline bool is_disjoint(const mub_array_entry *entries, const mub_array_entry *end, int64_t stream_length) {
  constexpr int64_t kPartBytes = 1 << 16;
  for (int64_t first = 0; first < stream_length; first += kPartBytes) {
    NumberSet<kPartBytes> taken;
    for (const auto *entry = entries; entry != end; ++entry) {
      const int64_t last = std::min(key_end(*entry), first + kPartBytes);
      for (int64_t at = std::max<int64_t>(entry->key_offset, first); at < last; ++at) {
        if (!taken.add(at - first)) return false;
      }
    }
  }
  return true;
}

// Invariant 3: the keys are in the stream, and do not overlap. Usually they also fill it, which takes less
// time to check.
inline Fault verify_keys(const mub_array &array) {
  KeyCheck<mub_array> keys(array);
  if (const Fault fault = keys.begin()) return fault;
  const mub_array_entry *end = array.entries + slots::used(array);
  int64_t key_bytes = 0;
  for (const auto *entry = array.entries; entry != end; ++entry) {
    if (const Fault fault = keys.add(*entry)) return fault;
    key_bytes += entry->key_length;
  }
  if (keys.end() == nullptr) return nullptr;
  const bool is_valid = key_bytes <= array.keys.length && is_disjoint(array.entries, end, array.keys.length);
  return is_valid ? nullptr : "Two keys overlap.";
}

namespace words {

inline Fault verify(const mub_arrayt &array) {
  if (array.capacity < 0 || array.capacity % 4 != 0) return "The capacity is negative, or no multiple of 4.";
  if ((array.tail == nullptr) != (array.capacity <= kInlineWords))
    return "The tail is missing, or has no capacity.";
  const bool is_in_range = array.count >= 0 && array.count <= array.capacity;
  return is_in_range ? nullptr : "The count is negative, or exceeds the capacity.";
}

}  // namespace words
}  // namespace mub

#endif
