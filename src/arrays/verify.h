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

// The table, also of buckets and of the children of a node. An array has a count above its capacity after a
// clone that ran out of memory; no other table has.
template <class Array>
Fault verify_table(const Array &array) {
  if (array.capacity < 0 || array.capacity % 4 != 0) return "A capacity is negative, or no multiple of 4.";
  if ((table(array) == nullptr) != (array.capacity == 0)) return "A table is missing, or has no capacity.";
  const bool is_in_range = array.count >= 0 && array.count <= array.capacity;
  return is_in_range ? nullptr : "A count is negative, or exceeds the capacity.";
}

template <class Array>
Fault verify(const Array &array) {
  const Fault fault = verify_table(array);
  return fault != nullptr ? fault : verify_pool(value_pool_of(array));
}

}  // namespace slots

// Invariant 3: the keys are in the stream, and do not overlap. They lie in any order, with gaps, so a part of
// the stream at a time is compared with all keys.
inline Fault verify_keys(const mub_array &array) {
  constexpr int64_t kPartBytes = 1 << 16;
  if (const Fault fault = KeyCheck<mub_array>(array).begin()) return fault;
  const mub_array_entry *first_entry = array.entries;
  const mub_array_entry *end = first_entry + array.count;
  const auto is_outside = [&](const mub_array_entry &entry) { return key_end(entry) > array.keys.length; };
  if (std::any_of(first_entry, end, is_outside)) return kKeyOutside;
  for (int64_t first = 0; first < array.keys.length; first += kPartBytes) {
    NumberSet<kPartBytes> taken;
    for (const auto *entry = first_entry; entry != end; ++entry) {
      const int64_t last = std::min(key_end(*entry), first + kPartBytes);
      for (int64_t at = std::max<int64_t>(entry->key_offset, first); at < last; ++at) {
        if (!taken.add(at - first)) return "Two keys overlap.";
      }
    }
  }
  return nullptr;
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
