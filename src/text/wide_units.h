// Units of 16 bits, for the engine of strings.
//
// A wide text without a count consists of the platform's wide characters, which have 16 or 32 bits. In the
// latter case a character spans two units, and a text is measured and searched two units at a time:
//
//   units   [ u0 u1 | u2 u3 | … | 0 0 ]        ends before the first character of 0, at an even index
//
// Texts are aligned for units only, so characters are loaded without assuming their alignment.
// bytes/unit_buffer.h has the invariants.
//
// Threads: there is no state; only the program's locale is read.
#ifndef MUB_TEXT_WIDE_UNITS_H
#define MUB_TEXT_WIDE_UNITS_H

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "bytes/bytes.h"
#include "bytes/letter_case.h"
#include "bytes/text_search.h"
#include "bytes/text_span.h"
#include "bytes/unit_buffer.h"
#include "mub_wchar.h"
#include "text/word_search.h"

namespace mub {

template <>
struct BufferTraits<mub_wchar> {
  using Unit = uint16_t;
  static constexpr bool kTerminated = true;
};

namespace wide {

constexpr int64_t kCharUnits = sizeof(wchar_t) / sizeof(uint16_t);

// The number of characters before the first 0, at most `max_count`.
inline int64_t char_count(const uint16_t *text, int64_t max_count = INT64_MAX) {
  int64_t count = 0;
  while (count < max_count && bytes::load<wchar_t>(text + count * kCharUnits) != 0) ++count;
  return count;
}

// The first index at which `length` >= 1 words occur among `count`, or -1. A match of bytes that begins
// inside a word does not count. If such matches keep coming, each found by a search of its own, the rest is
// searched in linear time.
template <class Word>
int64_t find_words(const uint16_t *data, int64_t count, const uint16_t *words, int64_t length) {
  constexpr int64_t size = sizeof(Word);
  constexpr int64_t kPatience = 64;
  const uint8_t *text = bytes::as_bytes(data);
  int64_t false_work = 0;
  for (int64_t i = 0; length <= count - i;) {
    const int64_t found = bytes::find(text + i * size, (count - i) * size, words, length * size);
    if (found < 0) return -1;
    i += found / size;
    if (found % size == 0) return i;
    ++i;
    false_work += 1 + length;
    if (false_work > kPatience * length + i) {
      const int64_t rest = find_in_linear_time<Word>({text + i * size, count - i}, {words, length});
      return rest < 0 ? -1 : i + rest;
    }
  }
  return -1;
}

}  // namespace wide

template <>
struct UnitOps<uint16_t> {
  // For a negative length, the number of wide characters, which callers use as the number of units
  // (mub_wchar.h).
  static int64_t measured(const uint16_t *text, int64_t length) {
    if (length >= 0) return length;
    return text == nullptr ? 0 : wide::char_count(text);
  }
  static int lower(uint16_t unit) { return unit > 0xFF ? unit : std::tolower(unit); }
  static int upper(uint16_t unit) { return unit > 0xFF ? unit : std::toupper(unit); }

  static int64_t chr(const uint16_t *data, int64_t count, uint16_t unit) {
    return wide::find_words<uint16_t>(data, count, &unit, 1);
  }
  static int64_t rchr(const uint16_t *data, int64_t count, uint16_t unit) {
    int64_t i = std::max<int64_t>(count, 0) - 1;
    while (i >= 0 && data[i] != unit) --i;
    return i;
  }
  static int64_t find(const uint16_t *data, int64_t count, const uint16_t *text, int64_t length) {
    return wide::find_words<uint16_t>(data, count, text, std::max<int64_t>(length, 1));
  }
  // Searches for a text of wide characters, up to the first character of 0. A terminator of one unit may be
  // half a character, so the search covers all `room` units of the block; but a match must begin in the span.
  static int64_t find_terminated(const uint16_t *data, int64_t count, int64_t room, const uint16_t *text) {
    const int64_t length = wide::char_count(text);
    if (length == 0) return 0;
    const int64_t found = wide::find_words<wchar_t>(data, room / wide::kCharUnits, text, length);
    const int64_t index = found * wide::kCharUnits;
    return found < 0 || index >= count || wide::char_count(data, found) < found ? -1 : index;
  }

  static int compare(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length) {
    constexpr int64_t size = sizeof(uint16_t);
    const int64_t common = std::max<int64_t>(std::min(a_length, b_length), 0);
    const int64_t i = bytes::first_difference(bytes::as_bytes(a), bytes::as_bytes(b), common * size) / size;
    return i < common ? a[i] - b[i] : bytes::length_difference(a_length, b_length);
  }
  static int icompare(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length) {
    const int64_t common = std::min(a_length, b_length);
    const Lowering lower_byte;
    const auto folded = [lower_byte](uint16_t unit) {
      return unit > 0xFF ? int{unit} : int{lower_byte(static_cast<uint8_t>(unit))};
    };
    for (int64_t i = 0; i < common; ++i) {
      const int difference = folded(a[i]) - folded(b[i]);
      if (difference != 0) return difference;
    }
    return bytes::length_difference(a_length, b_length);
  }
};

}  // namespace mub

#endif
