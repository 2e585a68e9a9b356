// What all kinds of text have in common, owned or viewed, of bytes or of 16-bit units: trimming white space,
// folding case, and searching. A span is a pointer and a count of units; it is empty if the pointer is null
// or the count below 1.
#ifndef MUB_BYTES_TEXT_SPAN_H
#define MUB_BYTES_TEXT_SPAN_H

#include <cctype>
#include <cstdint>
#include <cstring>

#include "bytes/bytes.h"
#include "bytes/text_search.h"

namespace mub {

// How units are measured, compared and searched: a policy, specialised for each type of unit.
template <class Unit>
struct UnitOps;

template <>
struct UnitOps<char> {
  static int64_t measured(const char *text, int64_t length) { return mub::measured(text, length); }
  static int lower(char unit) { return std::tolower(static_cast<unsigned char>(unit)); }
  static int upper(char unit) { return std::toupper(static_cast<unsigned char>(unit)); }

  static int64_t chr(const char *data, int64_t count, char unit) { return bytes::chr(data, count, unit); }
  static int64_t rchr(const char *data, int64_t count, char unit) { return bytes::rchr(data, count, unit); }
  static int64_t find(const char *data, int64_t count, const char *text, int64_t length) {
    return bytes::find(data, count, text, length);
  }
  // Searches for a NUL-terminated text, up to the span's first NUL. What follows the span in its block does
  // not matter.
  static int64_t find_terminated(const char *data, int64_t count, int64_t /*room*/, const char *text) {
    const auto length = static_cast<int64_t>(std::strlen(text));
    if (length == 0) return 0;
    const int64_t found = bytes::find(data, count, text, length);
    return found > 0 && bytes::chr(data, found, 0) >= 0 ? -1 : found;
  }

  static int compare(const char *a, int64_t a_length, const char *b, int64_t b_length) {
    return bytes::compare(a, a_length, b, b_length);
  }
  static int icompare(const char *a, int64_t a_length, const char *b, int64_t b_length) {
    return bytes::icompare(a, a_length, b, b_length);
  }
};

namespace span {

template <class Unit>
bool is_space(Unit unit) {
  return unit == '\t' || unit == '\n' || unit == '\r' || unit == ' ';
}

// The part of a text that trimming leaves.
struct Trimmed {
  int64_t start;
  int64_t length;
  bool starts_with_nul;  // The first unit that is not white space is 0; start and length are 0 then.
};

// NULs at the end are dropped like white space.
template <class Unit>
Trimmed trimmed(const Unit *units, int64_t length) {
  int64_t first = 0;
  while (first < length && is_space(units[first])) ++first;
  if (first < length && units[first] == 0) return {0, 0, true};
  int64_t end = length;
  while (end > first && (units[end - 1] == 0 || is_space(units[end - 1]))) --end;
  if (end <= first) return {0, 0, false};
  return {first, end - first, false};
}

// Replaces every unit with fold_unit(unit), which returns an int.
template <class Unit, class Fold>
void fold(Unit *units, int64_t length, Fold fold_unit) {
  if (units == nullptr) return;
  for (int64_t i = 0; i < length; ++i) units[i] = static_cast<Unit>(fold_unit(units[i]));
}

// Converts an index that was found from `start` on to one from the beginning; -1 stays -1.
inline int64_t shifted(int64_t found, int64_t start) { return found < 0 ? -1 : start + found; }

// A unit of 0 is never found.
template <class Unit>
int64_t find_unit(const Unit *data, int64_t length, int unit, int64_t start = 0) {
  const auto wanted = static_cast<Unit>(unit);
  if (data == nullptr || wanted == 0 || start < 0 || start >= length) return -1;
  return shifted(UnitOps<Unit>::chr(data + start, length - start, wanted), start);
}

template <class Unit>
int64_t find_last_unit(const Unit *data, int64_t length, int unit) {
  const auto wanted = static_cast<Unit>(unit);
  if (data == nullptr || wanted == 0) return -1;
  return UnitOps<Unit>::rchr(data, length, wanted);
}

// Searches for `count` units of `text`, which is measured if `count` is negative.
template <class Unit>
int64_t find(const Unit *data, int64_t length, const Unit *text, int64_t count, int64_t start = 0) {
  if (data == nullptr || text == nullptr || start < 0 || start >= length) return -1;
  const int64_t wanted = UnitOps<Unit>::measured(text, count);
  return shifted(UnitOps<Unit>::find(data + start, length - start, text, wanted), start);
}

}  // namespace span
}  // namespace mub

#endif
