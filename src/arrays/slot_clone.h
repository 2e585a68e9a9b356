// Cloning an array: slots and keys are copied, values that are blocks of an owned pool translated.
#ifndef MUB_ARRAYS_SLOT_CLONE_H
#define MUB_ARRAYS_SLOT_CLONE_H

#include "arrays/slot_table.h"
#include "containers/pool_copy.h"

namespace mub::slots {

// Where only the source owns a pool, the copies of its values are 0.
template <class Record>
void clone_slots(const Record &source, Record &copy, BlockCopies &values, const CloneCallback &callback) {
  for (int64_t i = 0; i < used(source); ++i) {
    SlotOf<Record> &slot = table(copy)[i] = table(source)[i];
    if (!pool_of(source).is_owned()) continue;
    value_of(slot) = values.translate(value_of(slot));
    callback.notify(value_of(table(source)[i]), value_of(slot));
  }
}

// False when memory runs out; what is in the copy then is for the caller to remove.
template <class Record>
bool clone_content(const Record &source, Record &copy, CloneCallback &callback) {
  if (pool_of(copy).is_owned()) callback.protect(copy.pool);  // before clone_pool(), which comes first here
  BlockCopies values;
  if (!callback.clone_pool() || !values.clone(pool_of(source), pool_of(copy), callback)) return false;
  if (!expand(copy, source.capacity) || !PolicyOf<Record>::clone_keys(source, copy)) return false;
  clone_slots(source, copy, values, callback);
  return true;
}

template <class Record>
void clone(const Record &source, Record &copy, CloneCallback callback) {
  if (&source == &copy) return;
  if (!pool_of(source).is_owned()) share_pool(source.pool, pool_of(copy), callback);
  if (!clone_content(source, copy, callback)) remove_all(copy);
  copy.count = source.count;
}

}  // namespace mub::slots

#endif
