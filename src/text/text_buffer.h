// The engine of strings: what text requires beyond bytes/unit_buffer.h, which has the picture and the
// invariants.
//
// Threads: functions that take a const record write nothing.
//
// Strings of bytes and of 16-bit units differ in their UnitOps only. bytes/text_span.h has that of bytes,
// wide_units.h that of 16-bit units; what a policy provides:
//   measured(text, length)                        the length of a text, which is measured if negative
//   lower(unit), upper(unit)                      a unit in lower or upper case
//   chr(data, count, unit), rchr                  the first and the last index of a unit, or -1
//   find(data, count, text, length)               the first index of a text, or -1
//   find_terminated(data, count, room, text)      the same for a text up to its terminator
//   compare(a, a_length, b, b_length), icompare   the order of two spans, with and without case
//
// A negative count means that the text is to be measured, unless documented otherwise.
#ifndef MUB_TEXT_TEXT_BUFFER_H
#define MUB_TEXT_TEXT_BUFFER_H

#include <algorithm>
#include <cstdint>

#include "bytes/text_span.h"
#include "bytes/unit_buffer.h"

namespace mub {
namespace text {

using buffer::UnitOf;

template <class Record>
using OpsOf = UnitOps<UnitOf<Record>>;

// A unit of 0 empties the record. (append_unit does append it.)
template <class Record>
void copy_unit(Record &record, int unit) {
  const auto stored = static_cast<UnitOf<Record>>(unit);
  if (stored == 0) {
    buffer::shrink(record, 0);
  } else if (buffer::expand(record, 1)) {
    record.data[0] = stored;
    buffer::shrink(record, 1);
  }
}

template <class Record>
void append_unit(Record &record, int unit) {
  const int64_t length = record.length;
  if (!buffer::expand(record, length + 1)) return;
  record.data[length] = static_cast<UnitOf<Record>>(unit);
  buffer::shrink(record, length + 1);
}

template <class Record>
void set_at(Record &record, int64_t index, int unit) {
  if (buffer::holds(record, index)) record.data[index] = static_cast<UnitOf<Record>>(unit);
}

// Keeps `length` units from `start`, both within the content.
template <class Record>
void keep_only(Record &record, int64_t start, int64_t length) {
  if (start > 0) buffer::move_units(record.data, record.data + start, length);
  buffer::shrink(record, length);
}

template <class Record>
bool trim(Record &record) {
  if (buffer::is_empty(record)) return false;
  const span::Trimmed kept = span::trimmed(record.data, record.length);
  if (kept.length == record.length) return false;
  keep_only(record, kept.start, kept.length);
  return true;
}

// Compares a span with a text; an empty one sorts first.
template <class Unit, class Comparator>
int compare(const Unit *data, int64_t length, const Unit *text, int64_t count, Comparator comparator) {
  const bool has_text = text != nullptr && count != 0;
  const int64_t text_length = has_text ? UnitOps<Unit>::measured(text, count) : 0;
  if (data == nullptr || length == 0) return text_length > 0 ? -1 : 0;
  return has_text ? comparator(data, length, text, text_length) : 1;
}

// Searches for a counted text as mub_mem_str() does, for any other as strstr() does, up to the first NUL.
template <class Record>
int64_t find(const Record &record, const UnitOf<Record> *text, int64_t count, int64_t start = 0) {
  if (count >= 0) return span::find(record.data, record.length, text, count, start);
  if (record.data == nullptr || text == nullptr || start < 0 || start >= record.length) return -1;
  const int64_t room = record.capacity + 1 - start;
  const int64_t found =
      OpsOf<Record>::find_terminated(record.data + start, record.length - start, room, text);
  return span::shifted(found, start);
}

template <class Record>
int64_t replace_unit(Record &record, int from, int to) {
  const auto old_unit = static_cast<UnitOf<Record>>(from);
  const auto new_unit = static_cast<UnitOf<Record>>(to);
  int64_t replaced = 0;
  for (int64_t i = 0; i < record.length; ++i) {
    const bool hit = record.data[i] == old_unit;
    record.data[i] = hit ? new_unit : record.data[i];
    replaced += hit;
  }
  return replaced;
}

// The text that replaces a marker. Null units end the substitution.
template <class Unit>
struct Piece {
  const Unit *units;
  int64_t length;
};

// Appends to `built` the content of `record` with each marker replaced by next(), and counts the replacements
// in `hits`. Returns false if memory runs out.
template <class Record, class Next>
bool build_substituted(const Record &record, const UnitOf<Record> *marker, int64_t marker_length, Next next,
                       Record &built, int64_t &hits) {
  if (!buffer::expand(built, record.length)) return false;
  int64_t position = 0;
  for (int64_t hit = find(record, marker, -1); hit >= 0; hit = find(record, marker, -1, position)) {
    // A wide marker may end past the content: a search for wide characters covers the whole block.
    if (hit > record.length - marker_length) break;
    const Piece<UnitOf<Record>> piece = next();
    if (piece.units == nullptr) break;
    if (!buffer::append(built, record.data + position, hit - position)) return false;
    if (!buffer::append(built, piece.units, piece.length)) return false;
    position = hit + marker_length;
    ++hits;
  }
  return buffer::append(built, record.data + position, record.length - position);
}

// Replaces each occurrence of the terminated text `marker` with the piece that next() returns, until there
// are no more of either. If memory runs out, nothing is replaced. Returns the number of replacements.
template <class Record, class Next>
int64_t substitute(Record &record, const UnitOf<Record> *marker, Next next) {
  const int64_t marker_length = OpsOf<Record>::measured(marker, -1);
  if (marker_length == 0) return 0;
  Record built;
  buffer::init(built);
  int64_t hits = 0;
  const bool is_whole = build_substituted(record, marker, marker_length, next, built, hits);
  if (is_whole) buffer::swap(record, built);
  buffer::term(built);
  return is_whole ? hits : 0;
}

template <class Record>
int64_t replace(Record &record, const UnitOf<Record> *from, const UnitOf<Record> *to) {
  static constexpr UnitOf<Record> kNothing[1] = {};
  const Piece<UnitOf<Record>> piece = {to != nullptr ? to : kNothing, OpsOf<Record>::measured(to, -1)};
  return substitute(record, from, [piece] { return piece; });
}

// The caller has measured `count`. No more units are replaced than there are.
template <class Record>
bool update(Record &record, int64_t position, int64_t old_count, const UnitOf<Record> *units, int64_t count) {
  if (position < 0 || position > record.length) return false;
  return buffer::update(record, position, std::min(old_count, record.length - position), units, count);
}

// If `position` is past the content, it becomes the length (at most the capacity).
template <class Record>
void remove(Record &record, int64_t position, int64_t count) {
  if (position < 0 || count < 0) return;
  if (record.length - position <= count) return buffer::shrink(record, position);
  buffer::move_units(record.data + position, record.data + position + count,
                     record.length - position - count);
  buffer::shrink(record, record.length - count);
}

}  // namespace text
}  // namespace mub

#endif
