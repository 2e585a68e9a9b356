// Cloning an array: slots and keys are copied, values that are blocks of an owned pool translated to their twins.
#ifndef MUB_ARRAYS_SLOT_CLONE_H
#define MUB_ARRAYS_SLOT_CLONE_H

#include "arrays/slot_table.h"
#include "core/pool_twin.h"

namespace mub::slots {

// Where only one side owns a pool, the copies of owned values are 0, for lack of twins.
template <class Record>
void clone_slots(const Record &source, Record &copy, PoolTwin &twin, const UserPools &users) {
  for (int64_t i = 0; i < used(source); ++i) {
    SlotOf<Record> &slot = table(copy)[i] = table(source)[i];
    if (!pool_of(source).is_owned()) continue;
    value_of(slot) = twin.translate(value_of(slot));
    users.mend(value_of(table(source)[i]), value_of(slot));
  }
}

// False when memory runs out; what is in the copy then is for the caller to remove.
template <class Record>
bool clone_content(const Record &source, Record &copy, UserPools &users) {
  const bool twins = pool_of(source).is_owned() && pool_of(copy).is_owned();
  PoolTwin twin;
  if (!users.clone_beside(twins && users.fill(copy.pool))) return false;
  if (twins && !twin.clone(*source.pool, *copy.pool)) return false;
  if (!expand(copy, source.capacity) || !PolicyOf<Record>::clone_keys(source, copy)) return false;
  clone_slots(source, copy, twin, users);
  return true;
}

template <class Record>
void clone(const Record &source, Record &copy, UserPools &&users) {
  if (&source == &copy) return;
  if (!pool_of(source).is_owned()) users.share(source.pool, copy.pool, copy.own_pool);
  if (!clone_content(source, copy, users)) remove_all(copy);
  copy.count = source.count;
}

}  // namespace mub::slots

#endif
