// Cloning an array: slots and keys are copied as they are, and values that are blocks of an owned pool are
// translated to the addresses of the copies. Invariants and policy are those of slot_table.h; if memory runs
// out, the copy is the exception to invariant 2. Threads: the source is only read.
#ifndef MUB_ARRAYS_SLOT_CLONE_H
#define MUB_ARRAYS_SLOT_CLONE_H

#include "arrays/slot_table.h"
#include "containers/pool_clone.h"

namespace mub::slots {

// If the source owns its pool and the copy does not, all values of the copy are 0.
template <class Array>
void clone_slots(const Array &source, Array &copy, BlockCopier &values, const UserPoolClone &user_pool) {
  for (int64_t i = 0; i < used(source); ++i) {
    SlotOf<Array> &slot = table(copy)[i] = table(source)[i];
    if (!value_pool_of(source).is_owned()) continue;
    value_of(slot) = values.translate(value_of(slot));
    user_pool.notify(value_of(table(source)[i]), value_of(slot));
  }
}

// False if memory runs out; the caller then empties the copy.
template <class Array>
bool clone_content(const Array &source, Array &copy, UserPoolClone &user_pool) {
  if (value_pool_of(copy).is_owned()) user_pool.protect(copy.pool);  // must precede clone_pool()
  BlockCopier values;
  if (!user_pool.clone_pool() || !values.clone(value_pool_of(source), value_pool_of(copy), user_pool))
    return false;
  if (!expand(copy, source.capacity) || !Policy<Array>::clone_keys(source, copy)) return false;
  clone_slots(source, copy, values, user_pool);
  return true;
}

template <class Array>
void clone(const Array &source, Array &copy, UserPoolClone user_pool) {
  if (&source == &copy) return;
  if (!value_pool_of(source).is_owned()) share_pool(source.pool, value_pool_of(copy), user_pool);
  if (!clone_content(source, copy, user_pool)) remove_all(copy);
  copy.count = source.count;
}

}  // namespace mub::slots

#endif
