// A string that a test owns.
#ifndef MUB_TESTS_SUPPORT_STRINGS_H
#define MUB_TESTS_SUPPORT_STRINGS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "mub_string.h"

namespace mub_test {

class String : public mub_string {
 public:
  String() { mub_string_init(this); }
  explicit String(const std::string &text) : String() {
    mub_string_copy(this, text.data(), static_cast<int64_t>(text.size()));
  }
  ~String() { mub_string_term(this); }
  String(const String &) = delete;
  String &operator=(const String &) = delete;

  std::string text() const { return data == nullptr ? "" : std::string(data, static_cast<size_t>(length)); }
};

// The content, and what must hold of every string.
inline void expect_content(const String &string, const std::string &text) {
  ASSERT_EQ(string.text(), text);
  if (string.data == nullptr) return;
  ASSERT_LE(string.length, string.capacity);
  ASSERT_EQ(string.capacity % 8, 7);
  ASSERT_EQ(string.data[string.length], 0);
  ASSERT_EQ(string.data[string.capacity], 0);
}

}  // namespace mub_test

#endif
