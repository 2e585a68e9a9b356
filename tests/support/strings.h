// Strings that a test owns, of either kind. Tests speak of their content in bytes; an adapter names the records and
// the functions of one kind, and says which units stand for these bytes.
#ifndef MUB_TESTS_SUPPORT_STRINGS_H
#define MUB_TESTS_SUPPORT_STRINGS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "mub_string.h"
#include "mub_wchar.h"
#include "support/calls.h"

namespace mub_test {

// The operations, in the order of each kind's functions.
namespace text {
enum Whole { kInit, kTerm, kIsEmpty, kExpand, kShrink, kZero, kSwap, kClone };
enum Put { kCopy = kClone + 1, kCopyChar, kAppend, kAppendChar, kAppendInteger, kGetAt, kSetAt, kCompare };
enum Edited { kFindPos = kCompare + 1, kTrim, kReplaceChar, kReplace, kInsert, kUpdate, kRemove };
enum Cut { kLeft = kRemove + 1, kMid, kRight, kLeftInto, kMidInto, kRightInto };
}  // namespace text

struct Narrow : Passing {
  using Record = mub_string;
  using Unit = char;
  static constexpr int kUnits = 0x100;  // different ones
  static Unit unit(char byte) { return byte; }
  static char byte(Unit unit) { return unit; }
  static constexpr int kNothing = -1;         // get_at outside the buffer
  static constexpr int kStored = 0xE9 - 256;  // get_at after storing 0x6101E9
  static constexpr auto kFunctions = std::make_tuple(
      mub_string_init, mub_string_term, mub_string_is_empty, mub_string_expand, mub_string_shrink,
      mub_string_zero, mub_string_swap, mub_string_clone, mub_string_copy, mub_string_copy_char,
      mub_string_append, mub_string_append_char, mub_string_append_integer, mub_string_get_at,
      mub_string_set_at, mub_string_compare, mub_string_find_pos, mub_string_trim, mub_string_replace_char,
      mub_string_replace, mub_string_insert, mub_string_update, mub_string_delete, mub_string_left,
      mub_string_mid, mub_string_right, mub_string_left_string, mub_string_mid_string,
      mub_string_right_string);
};

struct Wide : Passing {
  using Record = mub_wchar;
  using Unit = uint16_t;
  static constexpr int kUnits = 0x10000;
  // The unit of 'q' differs from that of 'p' in its high half alone, that of 'r' from 'q' in its low half alone.
  static Unit unit(char byte) {
    const Unit high = byte == 'q' || byte == 'r' ? 0x100 : 0;
    return static_cast<Unit>(high | (byte == 'q' ? 'p' : static_cast<unsigned char>(byte)));
  }
  static char byte(Unit unit) { return unit == Wide::unit('q') ? 'q' : static_cast<char>(unit); }
  static constexpr int kNothing = 0;
  static constexpr int kStored = 0x1E9;
  static constexpr auto kFunctions = std::make_tuple(
      mub_wchar_init, mub_wchar_term, mub_wchar_is_empty, mub_wchar_expand, mub_wchar_shrink, mub_wchar_zero,
      mub_wchar_swap, mub_wchar_clone, mub_wchar_copy, mub_wchar_copy_char, mub_wchar_append,
      mub_wchar_append_char, mub_wchar_append_integer, mub_wchar_get_at, mub_wchar_set_at, mub_wchar_compare,
      mub_wchar_find_pos, mub_wchar_trim, mub_wchar_replace_char, mub_wchar_replace, mub_wchar_insert,
      mub_wchar_update, mub_wchar_delete, mub_wchar_left, mub_wchar_mid, mub_wchar_right,
      mub_wchar_left_wchar, mub_wchar_mid_wchar, mub_wchar_right_wchar);
};

// The units that stand for a text, and a terminator, which takes two of 16 bits and begins at an even index.
template <class Kind>
class Units {
 public:
  explicit Units(const std::string &text) : size_(static_cast<int64_t>(text.size())) {
    for (const char byte : text) units_.push_back(Kind::unit(byte));
    units_.insert(units_.end(), 3, 0);
  }
  const typename Kind::Unit *data() const { return units_.data(); }
  int64_t size() const { return size_; }

 private:
  std::vector<typename Kind::Unit> units_;
  int64_t size_;
};

template <class Kind>
class Text : public Kind::Record {
 public:
  Text() { call_of<text::kInit, Kind>(this); }
  explicit Text(const std::string &text) : Text() {
    const Units<Kind> units(text);
    call_of<text::kCopy, Kind>(this, units.data(), units.size());
  }
  ~Text() { call_of<text::kTerm, Kind>(this); }
  Text(const Text &) = delete;
  Text &operator=(const Text &) = delete;

  std::string text() const {
    std::string text;
    for (int64_t i = 0; i < this->length; ++i) text += Kind::byte(this->data[i]);
    return text;
  }
};

using String = Text<Narrow>;

template <int kOperation, class Kind, class... Args>
auto call(Text<Kind> &string, const Args &...args) {
  return call_of<kOperation, Kind>(&string, args...);
}

// The content, and what must hold of every string.
template <class Kind>
void expect_content(const Text<Kind> &string, const std::string &text) {
  ASSERT_EQ(string.text(), text);
  if (string.data == nullptr) return;
  ASSERT_LE(string.length, string.capacity);
  ASSERT_EQ(string.capacity % 8, 7);
  ASSERT_EQ(string.data[string.length], 0);
  ASSERT_EQ(string.data[string.capacity], 0);
}

}  // namespace mub_test

#endif
