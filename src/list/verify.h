// Checks the invariants of lists; linked_list.h has them.
#ifndef MUB_LIST_VERIFY_H
#define MUB_LIST_VERIFY_H

#include <cstdint>

#include "base/fault.h"
#include "containers/verify.h"
#include "list/linked_list.h"

namespace mub::linked_list {

template <class List>
Fault verify_links(const List &list) {
  KeyCheck<List> keys(list);
  if (const Fault fault = keys.begin()) return fault;
  int64_t met = 0;
  const EntryOf<List> *before = nullptr;
  for (const EntryOf<List> *entry = list.head; entry != nullptr; before = entry, entry = entry->next) {
    if (met >= list.count) return kWrongCount;
    if (entry->prev != before) return "prev of an entry is not the entry before it.";
    const int64_t values = Policy<List>::values_in(*entry);
    if (values < 1 || values > Policy<List>::kMaxValues) return "The count of a block is out of range.";
    if ((met += values) > list.count) return kWrongCount;
    if (const Fault fault = keys.add(*entry)) return fault;
  }
  if (list.tail != before) return "The last entry is not the tail.";
  return met == list.count ? keys.end() : kWrongCount;
}

template <class List>
Fault verify(const List &list) {
  if (const Fault fault = verify_pools(list)) return fault;
  const int64_t least_entries = list.count > 0 ? (list.count - 1) / Policy<List>::kMaxValues + 1 : 0;
  if (const Fault fault = verify_blocks<EntryOf<List>>(entry_pool_of(list), least_entries)) return fault;
  return verify_links(list);
}

}  // namespace mub::linked_list

#endif
