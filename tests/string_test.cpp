#include "mub_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/fuse.h"
#include "support/random.h"
#include "support/strings.h"

namespace {

using namespace std::string_literals;
using mub_test::expect_content;
using mub_test::Random;
using mub_test::String;

// Replaces from left to right, up to the first NUL.
int64_t replace_all(std::string &text, const std::string &from, const std::string &to) {
  int64_t hits = 0;
  for (size_t at = 0; (at = text.find(from, at)) < text.find('\0'); at += to.size(), ++hits)
    text.replace(at, from.size(), to);
  return hits;
}

// `count` bytes from `start`, or as many as there are; none where either lies outside.
std::string part(const std::string &text, int64_t start, int64_t count) {
  if (start < 0 || count < 1 || start >= static_cast<int64_t>(text.size())) return "";
  return text.substr(static_cast<size_t>(start), static_cast<size_t>(count));
}

struct Result {
  int64_t actual = 0, expected = 0;
};

// What a change works with: numbers in and out of bounds, and a text that now and then is the string's own.
struct Draw {
  Draw(Random &random, const String &string) {
    constexpr int64_t kFar[] = {-1, INT64_MIN, INT64_MAX};
    at = random.one_in(16) ? kFar[random.below(3)] : random.below(string.length + 2);
    count = random.one_in(16) ? kFar[random.below(3)] : random.below(string.length + 2);
    text = random.text(random.one_in(10) ? random.below(600) : random.below(12), 4);
    std::replace(text.begin(), text.end(), 'd', random.one_in(10) ? '\0' : 'c');
    if (at < 0 || at > string.length || string.data == nullptr || !random.one_in(3)) return;
    text = part(string.text(), at, random.below(string.length + 1));
    own = string.data + at;
  }
  const char *source() const { return own != nullptr ? own : text.data(); }
  int64_t size() const { return static_cast<int64_t>(text.size()); }

  int64_t at, count;
  std::string text;
  const char *own = nullptr;
};

// Append, insert, update and delete: all replace a range by a text, empty as either may be.
Result edit(String &string, std::string &model, const Draw &draw, int64_t kind) {
  const int64_t at = kind == 0 ? string.length : draw.at, count = kind < 2 ? 0 : draw.count;
  const bool is_valid = at >= 0 && at <= string.length && count >= 0;
  if (is_valid) model.replace(static_cast<size_t>(at), static_cast<size_t>(count), kind < 3 ? draw.text : "");
  const int64_t size = draw.size();
  if (kind == 0 && size == 1) mub_string_append_char(&string, draw.text[0] - 256);
  if (kind == 0 && size != 1) mub_string_append(&string, draw.source(), size);
  if (kind == 1) return {mub_string_insert(&string, at, draw.source(), size), is_valid && size > 0};
  if (kind == 2) return {mub_string_update(&string, at, count, draw.source(), size), is_valid};
  if (kind == 3 && at <= string.length) mub_string_delete(&string, at, count);
  return {};
}

Result substitute(String &string, std::string &model, const Draw &draw, int64_t kind) {
  if (kind == 0) return {mub_string_replace(&string, "ab", "cac"), replace_all(model, "ab", "cac")};
  if (kind == 1) {
    const char from = draw.text[0];
    const int64_t count = std::count(model.begin(), model.end(), from);
    std::replace(model.begin(), model.end(), from, 'b');
    return {mub_string_replace_char(&string, from + 256, 'b' - 256), count};
  }
  if (kind == 2) mub_string_append_integer(&string, draw.count);
  model = kind == 2 ? model + std::to_string(draw.count) : draw.text;
  return kind == 2 ? Result() : Result{mub_string_copy(&string, draw.source(), draw.size()), 1};
}

// Cuts in place; or into another string, whose content the string then takes.
Result cut(String &string, String &out, std::string &model, const Draw &draw, int64_t kind) {
  int filled = 0;
  if (kind == 0) mub_string_left(&string, draw.count);
  if (kind == 1) mub_string_mid(&string, draw.at, draw.count);
  if (kind == 2) mub_string_right(&string, draw.count);
  if (kind == 3) filled = mub_string_left_string(&string, draw.count, &out);
  if (kind == 4) filled = mub_string_mid_string(&string, draw.at, draw.count, &out);
  if (kind == 5) filled = mub_string_right_string(&string, draw.count, &out);
  if (kind == 6) filled = mub_string_clone(&string, &out) == 1 && out.capacity >= string.capacity;
  const bool keeps_all = (kind == 0 && draw.count < 0) || (kind == 1 && draw.at < 0) || kind == 6;
  const auto size = static_cast<int64_t>(model.size());
  const int64_t starts[] = {0, draw.at, size - std::clamp<int64_t>(draw.count, 0, size)};
  if (!keeps_all) model = part(model, starts[kind % 3], draw.count);
  if (filled == 1) mub_string_swap(&string, &out);
  return {filled, kind >= 3};
}

// A change is refused whole when one of its allocations fails.
TEST(String, AgreesWithAModel) {
  Random random(4);
  String string;
  std::string model;
  for (int step = 0; step < 40000 && !HasFatalFailure(); ++step) {
    if (random.one_in(200)) mub_string_term(&string);
    if (string.data == nullptr) model.clear();
    const std::string before = model;
    const Draw draw(random, string);
    const int64_t family = random.below(10), kind = random.below(family == 0 ? 7 : 4);
    String out("old");
    Result result;
    const mub_test::Fuse fuse(random.below(8), static_cast<mub_test::Blow>(random.below(2)));
    const bool failed = fuse.blows_in([&] {
      result = family == 0  ? cut(string, out, model, draw, kind)
               : family < 4 ? substitute(string, model, draw, kind)
                            : edit(string, model, draw, kind);
    });
    if (failed) model = before;
    ASSERT_EQ(result.actual, failed ? 0 : result.expected);
    expect_content(string, model);
  }
}

// step = length / 2 within 8 and 8 Mi; capacity = (capacity + step, or what is wanted) / 8 * 8 + 7.
TEST(String, GrowsByHalfItsLength) {
  const int64_t kCases[][4] = {
      {0, 0, 1, 15},         {0, 0, 16, 23},           {15, 15, -1, 15},
      {15, 15, 16, 23},      {15, 15, 200, 207},       {23, 23, 24, 39},
      {3, 1007, 1008, 1015}, {1007, 1007, 1008, 1511}, {20000007, 20000007, 20000008, 28388615}};
  for (const auto &[length, capacity, wanted, grown] : kCases) {
    String string;
    mub_string_expand(&string, capacity);
    mub_string_shrink(&string, length);
    EXPECT_EQ(mub_string_expand(&string, wanted), 1);
    EXPECT_EQ(string.capacity, grown) << length << " " << wanted;
  }
}

TEST(String, RefusesSizesThatNoHeapHas) {
  String string("kept");
  for (const int64_t huge : {INT64_MAX, INT64_MAX - 7, INT64_MAX - 64, INT64_MAX / 2}) {
    mub_string_append(&string, "x", huge);
    EXPECT_EQ(mub_string_expand(&string, huge) + mub_string_copy(&string, "x", huge), 0);
    EXPECT_EQ(mub_string_insert(&string, 1, "x", huge) + mub_string_update(&string, 1, 1, "x", huge), 0);
  }
  expect_content(string, "kept");
}

TEST(String, SpareBytesAreWithinReach) {
  String string("0123456789abcde");
  mub_string_shrink(&string, 2);
  mub_string_expand(&string, 16);  // takes the spare bytes along
  for (const int64_t index : {-1, 22, 23}) mub_string_set_at(&string, index, 0x1E9);
  const int64_t kBytes[][2] = {{-1, -1}, {0, '0'}, {2, 0}, {3, '3'}, {21, 0}, {22, 0xE9 - 256}, {23, -1}};
  for (const auto &[index, byte] : kBytes) EXPECT_EQ(mub_string_get_at(&string, index), byte) << index;
  const int64_t kRanges[][2] = {{3, 2}, {2, 22}, {-1, 2}, {1, INT64_MAX}, {1, -1}, {24, 0}, {INT64_MAX, 1}};
  for (const auto &[position, count] : kRanges) mub_string_zero(&string, position, count);
  mub_string_shrink(&string, INT64_MAX);
  expect_content(string, "01\0\0\00056789abcde\0\0\0\0\0\0\0\xE9"s);
  mub_string_zero(&string, 1, 22);
  mub_string_shrink(&string, -1);
  expect_content(string, "0" + std::string(22, '\0'));
  mub_string_left(&string, 3);
  mub_string_delete(&string, 9, 0);
  EXPECT_EQ(string.length, 9) << "a position behind the content lengthens it";
}

TEST(String, EndsWithItsLengthThoughTheTerminatorIsOverwritten) {
  String string("abc");
  mub_string_set_at(&string, 3, 'd');
  EXPECT_EQ(mub_string_find(&string, "cd", -1), -1);
  EXPECT_EQ(mub_string_replace(&string, "cd", "x"), 0);
  mub_string_set_at(&string, 3, 'd');
  mub_string_append(&string, "", 0);
  expect_content(string, "abc");
}

TEST(String, TakesNullAndItsOwnTextForWhatTheyMean) {
  String string("a-b-");
  for (const int64_t count : {-1, 1}) {
    mub_string_append(&string, nullptr, count);
    EXPECT_EQ(mub_string_insert(&string, 1, nullptr, count), 0);
    EXPECT_EQ(mub_string_update(&string, 1, 2, nullptr, count), 0);
  }
  EXPECT_EQ(mub_string_replace(&string, nullptr, "x") + mub_string_replace(&string, "", "x"), 0);
  EXPECT_EQ(mub_string_replace(&string, "-", string.data), 2);
  expect_content(string, "aa-b-ba-b-");
  EXPECT_EQ(mub_string_replace(&string, "-b", nullptr), 3);
  expect_content(string, "aaa-");
  EXPECT_EQ(mub_string_update(&string, 3, 1, nullptr, 0), 1);
  EXPECT_EQ(mub_string_update(&string, 0, 2, "x", -1), 1);
  EXPECT_EQ(mub_string_clone(&string, &string), 1);
  mub_string_swap(&string, &string);
  expect_content(string, "xa");
  EXPECT_EQ(mub_string_copy(&string, nullptr, 3), 1);
  expect_content(string, "");
}

TEST(String, WithoutABufferIsEmpty) {
  String string;
  mub_string_shrink(&string, 5);
  mub_string_zero(&string, 0, 1);
  mub_string_set_at(&string, 0, 'x');
  EXPECT_EQ(mub_string_trim(&string) + mub_string_compare(&string, "", -1), 0);
  EXPECT_EQ(mub_string_copy(&string, nullptr, -1) + mub_string_update(&string, 0, 4, nullptr, 0), 2);
  EXPECT_EQ(mub_string_find(&string, "", -1), -1);
  EXPECT_TRUE(mub_string_is_empty(&string) && string.data == nullptr && string.length == 0);
  mub_string_copy_char(&string, 'z' + 256);
  expect_content(string, "z");
  mub_string_copy_char(&string, 256);
  expect_content(string, "");
}

}  // namespace
