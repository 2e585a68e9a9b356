// Strings that a test owns, of either kind. Tests speak of their content in bytes; an adapter names the records and
// the functions of one kind, and says which units stand for these bytes.
#ifndef MUB_TESTS_SUPPORT_STRINGS_H
#define MUB_TESTS_SUPPORT_STRINGS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "mub_string.h"
#include "mub_wchar.h"

namespace mub_test {

struct Narrow {
  using Record = mub_string;
  using Unit = char;
  static constexpr int kUnits = 0x100;  // different ones
  static Unit unit(char byte) { return byte; }
  static char byte(Unit unit) { return unit; }
  static constexpr int kNothing = -1;         // get_at outside the buffer
  static constexpr int kStored = 0xE9 - 256;  // get_at after storing 0x6101E9

  static constexpr auto init = mub_string_init;
  static constexpr auto term = mub_string_term;
  static constexpr auto is_empty = mub_string_is_empty;
  static constexpr auto expand = mub_string_expand;
  static constexpr auto shrink = mub_string_shrink;
  static constexpr auto zero = mub_string_zero;
  static constexpr auto swap = mub_string_swap;
  static constexpr auto clone = mub_string_clone;
  static constexpr auto copy = mub_string_copy;
  static constexpr auto copy_char = mub_string_copy_char;
  static constexpr auto append = mub_string_append;
  static constexpr auto append_char = mub_string_append_char;
  static constexpr auto append_integer = mub_string_append_integer;
  static constexpr auto get_at = mub_string_get_at;
  static constexpr auto set_at = mub_string_set_at;
  static constexpr auto compare = mub_string_compare;
  static constexpr auto find_pos = mub_string_find_pos;
  static constexpr auto trim = mub_string_trim;
  static constexpr auto replace_char = mub_string_replace_char;
  static constexpr auto replace = mub_string_replace;
  static constexpr auto insert = mub_string_insert;
  static constexpr auto update = mub_string_update;
  static constexpr auto remove = mub_string_delete;
  static constexpr auto left = mub_string_left;
  static constexpr auto mid = mub_string_mid;
  static constexpr auto right = mub_string_right;
  static constexpr auto left_into = mub_string_left_string;
  static constexpr auto mid_into = mub_string_mid_string;
  static constexpr auto right_into = mub_string_right_string;
};

struct Wide {
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

  static constexpr auto init = mub_wchar_init;
  static constexpr auto term = mub_wchar_term;
  static constexpr auto is_empty = mub_wchar_is_empty;
  static constexpr auto expand = mub_wchar_expand;
  static constexpr auto shrink = mub_wchar_shrink;
  static constexpr auto zero = mub_wchar_zero;
  static constexpr auto swap = mub_wchar_swap;
  static constexpr auto clone = mub_wchar_clone;
  static constexpr auto copy = mub_wchar_copy;
  static constexpr auto copy_char = mub_wchar_copy_char;
  static constexpr auto append = mub_wchar_append;
  static constexpr auto append_char = mub_wchar_append_char;
  static constexpr auto append_integer = mub_wchar_append_integer;
  static constexpr auto get_at = mub_wchar_get_at;
  static constexpr auto set_at = mub_wchar_set_at;
  static constexpr auto compare = mub_wchar_compare;
  static constexpr auto find_pos = mub_wchar_find_pos;
  static constexpr auto trim = mub_wchar_trim;
  static constexpr auto replace_char = mub_wchar_replace_char;
  static constexpr auto replace = mub_wchar_replace;
  static constexpr auto insert = mub_wchar_insert;
  static constexpr auto update = mub_wchar_update;
  static constexpr auto remove = mub_wchar_delete;
  static constexpr auto left = mub_wchar_left;
  static constexpr auto mid = mub_wchar_mid;
  static constexpr auto right = mub_wchar_right;
  static constexpr auto left_into = mub_wchar_left_wchar;
  static constexpr auto mid_into = mub_wchar_mid_wchar;
  static constexpr auto right_into = mub_wchar_right_wchar;
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
  Text() { Kind::init(this); }
  explicit Text(const std::string &text) : Text() {
    const Units<Kind> units(text);
    Kind::copy(this, units.data(), units.size());
  }
  ~Text() { Kind::term(this); }
  Text(const Text &) = delete;
  Text &operator=(const Text &) = delete;

  std::string text() const {
    std::string text;
    for (int64_t i = 0; i < this->length; ++i) text += Kind::byte(this->data[i]);
    return text;
  }
};

using String = Text<Narrow>;

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
