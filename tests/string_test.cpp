#include "mub_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/random.h"
#include "support/strings.h"

namespace {

using namespace std::string_literals;
using mub_test::expect_content;
using mub_test::Fuse;
using mub_test::Random;
using mub_test::String;

int64_t replace_all(std::string &text, const std::string &from, const std::string &to) {
  int64_t hits = 0;
  for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size(), ++hits)
    text.replace(at, from.size(), to);
  return hits;
}

// One random change to both; source texts come from the string itself now and then.
void change(String &string, std::string &model, Random &random) {
  const auto size = static_cast<int64_t>(model.size());
  const int64_t at = random.below(size + 1);
  const int64_t taken = random.below(size - at + 1);
  std::string text = random.text(random.one_in(10) ? random.below(600) : random.below(12), 3);
  const char *source = text.data();
  if (size > 0 && random.one_in(3)) {
    const int64_t from = random.below(size);
    text = model.substr(static_cast<size_t>(from), static_cast<size_t>(random.below(size - from + 1)));
    source = string.data + from;
  }
  const auto count = static_cast<int64_t>(text.size());
  const auto model_at = static_cast<size_t>(at);
  const auto model_taken = static_cast<size_t>(taken);
  const int64_t kind = random.below(10);
  if (kind == 0) {
    mub_string_append(&string, source, count);
    model += text;
  } else if (kind == 1) {
    ASSERT_EQ(mub_string_insert(&string, at, source, count), count > 0);
    model.insert(model_at, text);
  } else if (kind == 2) {
    ASSERT_EQ(mub_string_update(&string, at, taken, source, count), 1);
    model.replace(model_at, model_taken, text);
  } else if (kind == 3) {
    mub_string_delete(&string, at, taken);
    model.erase(model_at, model_taken);
  } else if (kind == 4) {
    mub_string_append_char(&string, 'a' + 256);
    model += 'a';
  } else if (kind == 5) {
    ASSERT_EQ(mub_string_replace(&string, "ab", "cac"), replace_all(model, "ab", "cac"));
  } else if (kind == 6) {
    ASSERT_EQ(mub_string_replace_char(&string, 'c', 'b'), std::count(model.begin(), model.end(), 'c'));
    std::replace(model.begin(), model.end(), 'c', 'b');
  } else if (kind == 7 && random.one_in(4)) {
    mub_string_mid(&string, at, taken);
    model = model.substr(model_at, model_taken);
  } else if (kind == 8 && random.one_in(4)) {
    mub_string_right(&string, at);
    model.erase(0, model.size() - model_at);
  } else if (kind == 9 && random.one_in(4)) {
    ASSERT_EQ(mub_string_copy(&string, source, count), 1);
    model = text;
  }
}

TEST(String, AgreesWithAModel) {
  Random random(4);
  for (int round = 0; round < 60; ++round) {
    String string;
    std::string model;
    for (int step = 0; step < 200; ++step) {
      change(string, model, random);
      expect_content(string, model);
      if (HasFatalFailure()) return;
      const std::string needle = random.text(2 + random.below(3), 3);
      const size_t found = model.find(needle);
      const int64_t expected = found == model.npos ? -1 : static_cast<int64_t>(found);
      ASSERT_EQ(mub_string_find(&string, needle.c_str(), static_cast<int64_t>(needle.size())), expected);
      ASSERT_EQ(mub_string_find(&string, needle.c_str(), -1), expected);
    }
  }
}

// step = length / 2 within 8 and 8 Mi; capacity = (capacity + step, or what is wanted) / 8 * 8 + 7.
TEST(String, GrowsByHalfItsLength) {
  const struct {
    int64_t length;
    int64_t capacity;
    int64_t wanted;
    int64_t grown;
  } kCases[] = {{0, 0, 1, 15},         {15, 15, 16, 23},
                {0, 0, 7, 15},         {0, 0, 16, 23},
                {15, 15, 200, 207},    {23, 23, 24, 39},
                {3, 1007, 1008, 1015}, {1007, 1007, 1008, 1511},
                {15, 15, -1, 15},      {20000007, 20000007, 20000008, 28388615}};
  for (const auto &row : kCases) {
    String string;
    mub_string_expand(&string, row.capacity);
    mub_string_shrink(&string, row.length);
    ASSERT_EQ(string.capacity, row.capacity);
    ASSERT_EQ(mub_string_expand(&string, row.wanted), 1);
    EXPECT_EQ(string.capacity, row.grown) << row.length << " " << row.wanted;
    EXPECT_EQ(string.length, row.length);
  }
  String kept("0123456789abcde");
  mub_string_shrink(&kept, 2);
  mub_string_expand(&kept, 16);
  mub_string_shrink(&kept, 23);
  expect_content(kept, "01\0003456789abcde"s + std::string(8, '\0'));
}

constexpr int64_t kNoResult = -1;

TEST(String, IsUnchangedWhenMemoryRunsOut) {
  const std::string before(303, 'q');  // fills its buffer
  const std::string more(300, 'm');
  const String source(more);
  const std::vector<std::function<int64_t(String &)>> kOperations = {
      [](String &s) { return mub_string_append(&s, s.data, s.length), kNoResult; },
      [&](String &s) { return mub_string_append(&s, more.c_str(), -1), kNoResult; },
      [&](String &s) { return mub_string_copy(&s, (more + more).data(), 600); },
      [](String &s) { return mub_string_insert(&s, 3, s.data + 1, 301); },
      [&](String &s) { return mub_string_update(&s, 3, 2, more.data(), 300); },
      [](String &s) { return mub_string_replace(&s, "qqq", "longer text"); },
      [&](String &s) { return mub_string_term(&s), mub_string_clone(&source, &s); },
      [&](String &s) { return mub_string_term(&s), mub_string_mid_string(&source, 1, 20, &s); },
      [](String &s) { return mub_string_append_char(&s, 'x'), kNoResult; },
      [](String &s) { return mub_string_append_integer(&s, INT64_MIN), kNoResult; },
      [](String &s) { return mub_string_copy_double(&s, -DBL_MAX), kNoResult; }};
  for (size_t i = 0; i < kOperations.size(); ++i) {
    SCOPED_TRACE(::testing::Message() << "operation " << i);
    String goal(before);
    kOperations[i](goal);
    mub_test::for_every_allocation([&](const Fuse &fuse) {
      String string(before);
      int64_t result = 0;
      const bool failed = fuse.blows_in([&] { result = kOperations[i](string); });
      const std::string unchanged = string.capacity == 0 ? "" : before;
      expect_content(string, failed ? unchanged : goal.text());
      if (result != kNoResult) {
        EXPECT_EQ(result == 0, failed);
      }
    });
  }
}

TEST(String, RefusesSizesThatNoHeapHas) {
  String string("kept");
  const int64_t capacity = string.capacity;
  for (const int64_t huge : {INT64_MAX, INT64_MAX - 7, INT64_MAX - 64, INT64_MAX / 2}) {
    EXPECT_EQ(mub_string_expand(&string, huge), 0);
    EXPECT_EQ(mub_string_copy(&string, "x", huge), 0);
    EXPECT_EQ(mub_string_insert(&string, 1, "x", huge), 0);
    EXPECT_EQ(mub_string_update(&string, 1, 1, "x", huge), 0);
    mub_string_append(&string, "x", huge);
  }
  expect_content(string, "kept");
  EXPECT_EQ(string.capacity, capacity);
}

TEST(String, PositionsAreBoundByTheCapacity) {
  String string("abc");  // capacity 15
  EXPECT_EQ(mub_string_get_at(&string, 3), 0);
  EXPECT_EQ(mub_string_get_at(&string, 14), 0);
  EXPECT_EQ(mub_string_get_at(&string, 15), -1);
  EXPECT_EQ(mub_string_get_at(&string, -1), -1);
  mub_string_set_at(&string, 14, 0x1E9);
  mub_string_set_at(&string, 15, 'x');
  mub_string_set_at(&string, -1, 'x');
  EXPECT_EQ(mub_string_get_at(&string, 14), static_cast<signed char>(0xE9));
  mub_string_zero(&string, 2, 14);
  mub_string_zero(&string, -1, 2);
  mub_string_zero(&string, 1, INT64_MAX);
  mub_string_zero(&string, 1, -1);
  EXPECT_EQ(string.text(), "abc");
  mub_string_zero(&string, 1, 14);
  mub_string_shrink(&string, INT64_MAX);
  expect_content(string, "a" + std::string(14, '\0'));
  mub_string_shrink(&string, -1);
  EXPECT_EQ(string.length, 15);
}

TEST(String, RefusesWhatLiesOutsideTheContent) {
  String string("abcdef");
  for (const int64_t position : {INT64_MIN, INT64_C(-1), INT64_C(7), INT64_MAX}) {
    EXPECT_EQ(mub_string_insert(&string, position, "x", 1), 0);
    EXPECT_EQ(mub_string_update(&string, position, 0, "x", 1), 0);
    EXPECT_EQ(mub_string_find_pos(&string, "a", 1, position), -1);
    EXPECT_EQ(mub_string_find_pos(&string, "a", -1, position), -1);
    EXPECT_EQ(mub_string_find_char_pos(&string, 'a', position), -1);
  }
  EXPECT_EQ(mub_string_insert(&string, 1, nullptr, 1), 0);
  EXPECT_EQ(mub_string_insert(&string, 1, nullptr, -1), 0);
  EXPECT_EQ(mub_string_insert(&string, 1, "", -1), 0);
  EXPECT_EQ(mub_string_update(&string, 1, 2, nullptr, 1), 0);
  EXPECT_EQ(mub_string_update(&string, 1, 2, nullptr, -1), 0);
  EXPECT_EQ(mub_string_update(&string, 1, -1, "x", 1), 0);
  mub_string_delete(&string, -1, 2);
  mub_string_delete(&string, 1, -2);
  mub_string_append(&string, nullptr, 3);
  expect_content(string, "abcdef");
  EXPECT_EQ(mub_string_update(&string, 4, INT64_MAX, "xyz", -1), 1) << "the old count ends with the content";
  expect_content(string, "abcdxyz");
  EXPECT_EQ(mub_string_update(&string, 1, 3, nullptr, 0), 1);
  expect_content(string, "axyz");
  mub_string_delete(&string, 2, INT64_MAX);
  expect_content(string, "ax");
  mub_string_delete(&string, 9, 1);
  EXPECT_EQ(string.length, 9) << "a position behind the content lengthens it";
}

TEST(String, CutsInPlaceAndIntoAnother) {
  const struct {
    int64_t start, count;
    const char *left, *left_copy, *mid, *mid_copy, *right;
  } kCases[] = {{0, 2, "ab", "ab", "ab", "ab", "ef"},
                {4, 9, "abcdef", "abcdef", "ef", "ef", "abcdef"},
                {6, 1, "a", "a", "", "", "f"},
                {2, 0, "", "", "", "", ""},
                {1, -1, "abcdef", "", "", "", ""},
                {-1, 3, "abc", "abc", "abcdef", "", "def"},
                {5, INT64_MAX, "abcdef", "abcdef", "f", "f", "abcdef"},
                {INT64_MAX, INT64_MIN, "abcdef", "", "", "", ""}};
  for (const auto &row : kCases) {
    SCOPED_TRACE(::testing::Message() << row.start << " " << row.count);
    const String source("abcdef");
    String left("abcdef"), mid("abcdef"), right("abcdef"), out("old");
    mub_string_left(&left, row.count);
    mub_string_mid(&mid, row.start, row.count);
    mub_string_right(&right, row.count);
    expect_content(left, row.left);
    expect_content(mid, row.mid);
    expect_content(right, row.right);
    EXPECT_EQ(mub_string_left_string(&source, row.count, &out), 1);
    expect_content(out, row.left_copy);
    EXPECT_EQ(mub_string_mid_string(&source, row.start, row.count, &out), 1);
    expect_content(out, row.mid_copy);
    EXPECT_EQ(mub_string_right_string(&source, row.count, &out), 1);
    expect_content(out, row.right);
  }
}

TEST(String, Trims) {
  const struct {
    std::string text, trimmed;
    int changed;
  } kCases[] = {{" \t\r\nab \0"s, "ab", 1}, {"\0ab"s, "", 1},    {" \0a"s, "", 1}, {"  ", "", 1},
                {"a\0\0"s, "a", 1},         {"\v\f", "\v\f", 0}, {"", "", 0},      {" \xE9", "\xE9", 1}};
  for (const auto &row : kCases) {
    String string(row.text);
    EXPECT_EQ(mub_string_trim(&string), row.changed) << row.text;
    expect_content(string, row.trimmed);
  }
}

TEST(String, ComparesWithTexts) {
  const struct {
    const char *content, *text;
    int64_t count;
    int order;
  } kCases[] = {{"", nullptr, 4, 0},    {"", "", -1, 0},      {"", "a", 0, 0},      {"", "a", -1, -1},
                {"", "a", 1, -1},       {"a", nullptr, 4, 1}, {"abc", "abc", 0, 1}, {"abc", "", -1, 3},
                {"abc", "abd", -1, -1}, {"abc", "abcd", 3, 0}};
  for (const auto &row : kCases) {
    const String string(row.content);
    EXPECT_EQ(mub_string_compare(&string, row.text, row.count), row.order) << row.content << row.count;
    EXPECT_EQ(mub_string_icompare(&string, row.text, row.count), row.order) << row.content << row.count;
  }
  const String mixed("aB");
  EXPECT_EQ(mub_string_icompare(&mixed, "Ab", -1), 0);
}

TEST(String, SearchesCountedAndTerminatedTexts) {
  const String string("abcabc\0abd"s);
  EXPECT_EQ(mub_string_find(&string, "abd", 3), 7);
  EXPECT_EQ(mub_string_find(&string, "abd", -1), -1) << "ends at the NUL";
  EXPECT_EQ(mub_string_find_pos(&string, "abd", -1, 7), 7);
  EXPECT_EQ(mub_string_find(&string, "bca", -1), 1);
  EXPECT_EQ(mub_string_find_pos(&string, "abc", 3, 1), 3);
  EXPECT_EQ(mub_string_find_pos(&string, "c", -1, 3), 5);
  EXPECT_EQ(mub_string_find(&string, "", -1), 0);
  EXPECT_EQ(mub_string_find_pos(&string, "", -1, 4), 4);
  EXPECT_EQ(mub_string_find(&string, "", 0), 6) << "the first byte of the text, here its NUL";
  EXPECT_EQ(mub_string_find(&string, "cx", 0), 2);
  EXPECT_EQ(mub_string_find(&string, nullptr, -1), -1);
  EXPECT_EQ(mub_string_find_char(&string, 'c' - 256), 2);
  EXPECT_EQ(mub_string_find_char(&string, 256), -1);
  EXPECT_EQ(mub_string_reverse_find(&string, 256), -1);
  EXPECT_EQ(mub_string_reverse_find(&string, 'b'), 8);
  EXPECT_EQ(mub_string_find_char_pos(&string, 'a', 1), 3);
  String open("abc");
  mub_string_set_at(&open, 3, 'd');  // the terminator
  EXPECT_EQ(mub_string_find(&open, "cd", -1), -1) << "not wholly in the content";
  EXPECT_EQ(mub_string_replace(&open, "cd", "x"), 0);
}

TEST(String, ReplacesLeftToRightUpToTheFirstNul) {
  const struct {
    std::string content;
    const char *from, *to;
    std::string replaced;
    int64_t count;
  } kCases[] = {{"aaa", "aa", "b", "ba", 1},       {"aaaa", "a", "aa", "aaaaaaaa", 4},
                {"abab", "ab", nullptr, "", 2},    {"abab", "", "x", "abab", 0},
                {"abab", nullptr, "x", "abab", 0}, {"ab\0ab"s, "ab", "c", "c\0ab"s, 1},
                {"ab", "ba", "x", "ab", 0},        {"", "a", "x", "", 0},
                {"xab", "ab", "", "x", 1}};
  for (const auto &row : kCases) {
    String string(row.content);
    EXPECT_EQ(mub_string_replace(&string, row.from, row.to), row.count) << row.content;
    expect_content(string, row.replaced);
  }
  String own("a-b-");
  EXPECT_EQ(mub_string_replace(&own, "-", own.data), 2);
  expect_content(own, "aa-b-ba-b-");
  String zeros("\0a\0"s);
  EXPECT_EQ(mub_string_replace_char(&zeros, 256, '0'), 2);
  expect_content(zeros, "0a0");
}

TEST(String, CopiesSwapsAndClones) {
  String source("old");
  mub_string_copy_char(&source, 'x' + 256);
  mub_string_append_char(&source, 0);
  expect_content(source, "x\0"s);
  mub_string_copy_char(&source, 256);
  expect_content(source, "");
  mub_string_copy(&source, "aZ\xE9\0b", 5);
  mub_string_make_upper(&source);
  expect_content(source, "AZ\xE9\0B"s);
  mub_string_expand(&source, 100);
  String target("much longer than the source, and then some more");
  EXPECT_EQ(mub_string_clone(&source, &target), 1);
  EXPECT_EQ(mub_string_clone(&target, &target), 1);
  mub_string_swap(&target, &target);
  expect_content(target, source.text());
  EXPECT_GE(target.capacity, source.capacity);
  String empty;
  mub_string_swap(&target, &empty);
  EXPECT_EQ(target.data, nullptr);
  EXPECT_EQ(mub_string_clone(&target, &empty), 1);
  expect_content(empty, "");
}

TEST(String, WithoutABufferIsEmpty) {
  String string;
  mub_string_shrink(&string, 5);
  mub_string_make_upper(&string);
  mub_string_zero(&string, 0, 1);
  mub_string_set_at(&string, 0, 'x');
  mub_string_left(&string, 1);
  mub_string_mid(&string, 0, 1);
  mub_string_right(&string, 1);
  mub_string_delete(&string, 0, 1);
  EXPECT_EQ(mub_string_replace_char(&string, 0, 1), 0);
  EXPECT_EQ(mub_string_replace(&string, "a", "b"), 0);
  EXPECT_EQ(mub_string_find(&string, "", -1), -1);
  EXPECT_EQ(mub_string_trim(&string), 0);
  EXPECT_EQ(mub_string_copy(&string, nullptr, -1), 1);
  EXPECT_EQ(mub_string_update(&string, 0, 4, nullptr, 0), 1);
  EXPECT_EQ(string.data, nullptr);
  EXPECT_EQ(string.length, 0);
}

}  // namespace
