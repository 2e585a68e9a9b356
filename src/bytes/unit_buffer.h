// The engine of every growable run of units: byte streams, strings and wide strings.
//
//   record    data ──► [ content ........ | spare ......... | 0 ]
//                        0                  length            capacity
//
// Invariants:
//   1. 0 <= length <= capacity. While data is null, both are 0.
//   2. The block holds capacity + 1 units. The last one is always 0, so that a stream's block can become a
//      string's, terminator included.
//   3. In a terminated record, data[length] is 0, unless the caller overwrote it with _set_at() or swapped in
//      the block of a stream.
//   4. Spare units are 0 in a fresh block and keep old content after a truncation; growth copies them.
//
// Threads: functions that take a const record write nothing to it or to its block.
//
// To use the engine, a record type specialises BufferTraits with
//   Unit           the type of a unit
//   kTerminated    whether a unit of 0 follows the content
//
// The caller has already replaced the negative length of a text by its measured length. Any other negative
// count does nothing, except that right(), mid() and the functions that end in _into treat it as 0.
#ifndef MUB_BYTES_UNIT_BUFFER_H
#define MUB_BYTES_UNIT_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/alloc.h"
#include "base/fault.h"
#include "base/growth.h"
#include "base/poison.h"
#include "bytes/bytes.h"
#include "bytes/pinned_bytes.h"
#include "mub_stream.h"
#include "mub_string.h"

namespace mub {

template <class Record>
struct BufferTraits;

template <>
struct BufferTraits<mub_stream> {
  using Unit = uint8_t;
  static constexpr bool kTerminated = false;
};

template <>
struct BufferTraits<mub_string> {
  using Unit = char;
  static constexpr bool kTerminated = true;
};

namespace buffer {

template <class Record>
using UnitOf = typename BufferTraits<Record>::Unit;

template <class Record>
constexpr int64_t kUnitBytes = static_cast<int64_t>(sizeof(UnitOf<Record>));

// memmove that also accepts negative counts, and null pointers if there is nothing to move.
template <class Unit>
void move_units(Unit *to, const void *from, int64_t count) {
  if (count > 0) std::memmove(to, from, static_cast<size_t>(count) * sizeof(Unit));
}

template <class Record>
bool is_empty(const Record &record) {
  return record.data == nullptr || record.length == 0;
}

template <class Record>
void init(Record &record) {
  record.data = nullptr;
  record.length = 0;
  record.capacity = 0;
}

template <class Record>
void term(Record &record) {
  release(record.data);
  init(record);
}

// The size of the block, the unit after the capacity included.
template <class Record>
uint64_t block_bytes(const Record &record) {
  return record.data == nullptr ? 0 : (static_cast<uint64_t>(record.capacity) + 1) * kUnitBytes<Record>;
}

// ---- poisoned spare units
//
// In builds for memory checkers (base/poison.h), containers close their key streams: the units from the
// length to the end of the block are poisoned. All other records are open. Poisoning takes time proportional
// to the number of units, so what is poisoned already is left alone. The last unit tells whether a record is
// closed; swapping and growing open it.

// Opens a record, which may even be uninitialised.
template <class Record>
MUB_POISON_HOOK void open(const Record &record) {
  if constexpr (kPoisons) {
    if (record.data == nullptr || offset_in_heap_block(record.data, block_bytes(record)) != 0) return;
    if (is_poisoned(record.data + record.capacity))
      unpoison(record.data, static_cast<size_t>(block_bytes(record)));
  }
}

// Opens the next `count` units of an initialised record. If these do not fit, growth opens it.
template <class Record>
MUB_POISON_HOOK void open(const Record &record, int64_t count) {
  if constexpr (kPoisons) {
    if (count < 1 || count > record.capacity - record.length) return;
    unpoison(record.data + record.length, static_cast<size_t>(count * kUnitBytes<Record>));
  }
}

// Closes a record. If it was closed before, no unit at or after `end` has been opened since.
template <class Record>
MUB_POISON_HOOK void close(const Record &record, int64_t end) {
  if constexpr (kPoisons) {
    if (record.data == nullptr) return;
    if (!is_poisoned(record.data + record.capacity)) end = record.capacity + 1;
    if (end <= record.length) return;
    poison(record.data + record.length, static_cast<size_t>((end - record.length) * kUnitBytes<Record>));
  }
}

template <class Record, class OtherRecord>
void swap(Record &a, OtherRecord &b) {
  open(a);
  open(b);
  const Record old_a = a;
  a = {reinterpret_cast<UnitOf<Record> *>(b.data), b.length, b.capacity};
  b = {reinterpret_cast<UnitOf<OtherRecord> *>(old_a.data), old_a.length, old_a.capacity};
}

template <class Record>
bool holds(const Record &record, int64_t index) {
  return index >= 0 && index < record.capacity;
}

// A capacity is rounded up to a multiple of 8; in a terminated record, capacity + 1 is that multiple.
template <class Record>
int64_t rounded_capacity(int64_t target) {
  if constexpr (BufferTraits<Record>::kTerminated) return (target / 8) * 8 + 7;
  return ((target - 1) / 8) * 8 + 8;
}

// The capacity after growing from `capacity` to at least `wanted` units.
template <class Record>
int64_t grown_capacity(int64_t length, int64_t capacity, int64_t wanted) {
  return rounded_capacity<Record>(grown_units(length, capacity, wanted));
}

// Moves the content to a new block of capacity + 1 units.
template <class Record>
bool regrow(Record &record, int64_t capacity) {
  open(record);  // the spare units are copied, too
  void *data = regrown(record.data, record.capacity, capacity + 1, kUnitBytes<Record>);
  if (data == nullptr) return false;
  record.data = static_cast<UnitOf<Record> *>(data);
  record.capacity = capacity;
  return true;
}

template <class Record>
bool grow(Record &record, int64_t wanted) {
  return wanted <= kMaxUnits &&
         regrow(record, grown_capacity<Record>(record.length, record.capacity, wanted));
}

// Makes room for `wanted` units. Returns false and leaves the record unchanged if memory runs out.
template <class Record>
bool expand(Record &record, int64_t wanted) {
  return record.capacity >= wanted || grow(record, wanted);
}

// Sets a length that is known to be at most the capacity, and the terminator.
template <class Record>
void set_length(Record &record, int64_t length) {
  record.length = length;
  if constexpr (BufferTraits<Record>::kTerminated) record.data[length] = 0;
}

// Sets the length, but at most to the capacity.
template <class Record>
void shrink(Record &record, int64_t length) {
  if (record.data == nullptr || length < 0) return;
  set_length(record, std::min(length, record.capacity));
}

template <class Record>
void zero(Record &record, int64_t offset, int64_t count) {
  if (record.data == nullptr || offset < 0 || count < 1 || count > record.capacity - offset) return;
  std::memset(record.data + offset, 0, static_cast<size_t>(count) * sizeof(UnitOf<Record>));
}

template <class Record>
int64_t memory_bytes(const Record &record) {
  return static_cast<int64_t>(block_bytes(record));
}

// `count` is not negative. Doubled, for wide units, it still fits in 64 unsigned bits.
template <class Record>
PinnedBytes pinned(const Record &record, const void *units, int64_t count) {
  return {units, static_cast<uint64_t>(count) * kUnitBytes<Record>, record.data, block_bytes(record)};
}

// Replaces the content with `count` units; null units empty the record.
template <class Record>
bool copy(Record &record, const void *units, int64_t count) {
  if (units == nullptr) {
    shrink(record, 0);
    return true;
  }
  if (count <= record.capacity) {
    bytes::move(record.data, units, count * kUnitBytes<Record>);
  } else {
    const PinnedBytes source = pinned(record, units, count);
    if (source.failed() || !grow(record, count)) return false;
    move_units(record.data, source.bytes(), count);
  }
  shrink(record, count);
  return true;
}

template <class Record>
__attribute__((noinline)) bool append_growing(Record &record, const void *units, int64_t count) {
  int64_t length;
  if (__builtin_add_overflow(record.length, count, &length)) return false;
  const PinnedBytes source = pinned(record, units, count);
  if (source.failed() || !grow(record, length)) return false;
  move_units(record.data + record.length, source.bytes(), count);
  shrink(record, length);
  return true;
}

template <class Record>
bool append(Record &record, const void *units, int64_t count) {
  if (count > record.capacity - record.length) return append_growing(record, units, count);
  if (count <= 0) {
    // Even an empty append restores a terminator that the caller has overwritten.
    shrink(record, record.length);
    return true;
  }
  const int64_t length = record.length + count;
  bytes::move(record.data + record.length, units, count * kUnitBytes<Record>);
  record.length = length;
  if constexpr (BufferTraits<Record>::kTerminated) record.data[length] = 0;
  return true;
}

// Replaces `old_count` units at `position` with `count` units. The old range may extend past the content as
// long as the resulting length is not negative. New units past both the old and the resulting length are
// dropped; those between the two remain as spare units.
template <class Record>
bool update(Record &record, int64_t position, int64_t old_count, const void *units, int64_t count) {
  if (position < 0 || old_count < 0 || count < 0 || position > record.length) return false;
  if (units == nullptr && count > 0) return false;
  int64_t length;
  if (__builtin_add_overflow(record.length, count - old_count, &length) || length < 0) return false;
  const PinnedBytes source = pinned(record, units, count);
  if (source.failed() || !expand(record, length)) return false;
  // The longer of the two lengths counts, because a shrinking update writes before it moves.
  const int64_t written = std::min(count, std::max(record.length, length) - position);
  const int64_t tail = record.length - position - old_count;
  if (count > old_count && tail > 0) {
    move_units(record.data + position + count, record.data + position + old_count, tail);
  }
  move_units(record.data + position, source.bytes(), written);
  if (count < old_count && tail > 0) {
    move_units(record.data + position + count, record.data + position + old_count, tail);
  }
  shrink(record, length);
  return true;
}

// Inserts `count` units before `position`. An empty insertion is refused.
template <class Record>
bool insert(Record &record, int64_t position, const void *units, int64_t count) {
  return count >= 1 && update(record, position, 0, units, count);
}

// Replaces the content of `out` with `count` units from `start`, a range that the caller has checked.
template <class Record, class OutRecord>
bool extract(const Record &record, int64_t start, int64_t count, OutRecord &out) {
  static_assert(sizeof(UnitOf<Record>) == sizeof(UnitOf<OutRecord>));
  if (!expand(out, count)) return false;
  // `record.data` is read only after the growth, because `out` may be the record itself.
  move_units(out.data, record.data + start, count);
  shrink(out, count);
  return true;
}

template <class OutRecord>
bool extract_nothing(OutRecord &out) {
  shrink(out, 0);
  return true;
}

template <class Record, class OutRecord>
bool left_into(const Record &record, int64_t count, OutRecord &out) {
  if (is_empty(record) || count < 1) return extract_nothing(out);
  return extract(record, 0, std::min(count, record.length), out);
}

template <class Record, class OutRecord>
bool right_into(const Record &record, int64_t count, OutRecord &out) {
  if (is_empty(record) || count < 1) return extract_nothing(out);
  const int64_t kept = std::min(count, record.length);
  return extract(record, record.length - kept, kept, out);
}

template <class Record, class OutRecord>
bool mid_into(const Record &record, int64_t start, int64_t count, OutRecord &out) {
  if (is_empty(record) || start < 0 || count < 1 || start >= record.length) return extract_nothing(out);
  return extract(record, start, std::min(count, record.length - start), out);
}

// The in-place forms differ from the copying ones: `left` ignores a negative count and `mid` a negative
// start, and all of them leave an empty record alone, even if its terminator was overwritten.
template <class Record>
void left(Record &record, int64_t count) {
  if (record.length > count) shrink(record, count);
}

template <class Record>
void right(Record &record, int64_t count) {
  if (!is_empty(record) && record.length > count) right_into(record, count, record);
}

template <class Record>
void mid(Record &record, int64_t start, int64_t count) {
  if (!is_empty(record) && start >= 0) mid_into(record, start, count, record);
}

template <class Record, class OutRecord>
bool clone(const Record &record, OutRecord &out) {
  if (static_cast<const void *>(&record) == static_cast<const void *>(&out)) return true;
  if (!expand(out, record.capacity)) return false;
  move_units(out.data, record.data, record.length);
  shrink(out, record.length);
  return true;
}

// Checks the invariants. The size of the block cannot be checked.
template <class Record>
Fault verify(const Record &record) {
  if (record.length < 0 || record.length > record.capacity)
    return "The length is negative or exceeds the capacity.";
  if (record.data == nullptr) return record.capacity == 0 ? nullptr : "There is a capacity, but no block.";
  UnitOf<Record> last;
  copy_poisoned(&last, record.data + record.capacity, sizeof last);
  if (last != 0) return "The unit after the capacity is not 0.";
  if constexpr (BufferTraits<Record>::kTerminated) {
    if (record.data[record.length] != 0) return "The unit after the content is not 0.";
  }
  return nullptr;
}

}  // namespace buffer
}  // namespace mub

#endif
