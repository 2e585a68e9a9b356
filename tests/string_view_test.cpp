// What a view of a string does with its span; what it has in common with other texts is tested with them.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

#include "mub_string.h"
#include "support/random.h"
#include "support/strings.h"

namespace {

using mub_test::Random;
using mub_test::String;

std::string content(const mub_stringx &view) {
  return {view.text + view.start, static_cast<size_t>(view.length)};
}

// A part cut in place, into another view and into a mub_char.
struct Cut {
  Cut(const mub_stringx &view, int kind, int64_t offset, int64_t count)
      : in_place(view), part{view.text, -7, -7}, chars{nullptr, -7} {
    if (kind == 0) {
      mub_stringx_left(&in_place, count);
      mub_stringx_left_string(&view, count, &part);
      mub_stringx_left_char(&view, count, &chars);
    } else if (kind == 1) {
      mub_stringx_mid(&in_place, offset, count);
      mub_stringx_mid_string(&view, offset, count, &part);
      mub_stringx_mid_char(&view, offset, count, &chars);
    } else {
      mub_stringx_right(&in_place, count);
      mub_stringx_right_string(&view, count, &part);
      mub_stringx_right_char(&view, count, &chars);
    }
  }
  mub_stringx in_place, part;
  mub_char chars;
};

TEST(StringView, PartsAgreeWithSubstrings) {
  Random random(21);
  const String string(random.text(40, 26));
  for (int round = 0; round < 2000; ++round) {
    mub_stringx view;
    mub_stringx_copy_string(&view, &string);
    const int64_t start = random.below(30);
    mub_stringx_mid(&view, start, 1 + random.below(12));
    const std::string whole = content(view);
    ASSERT_EQ(whole, string.text().substr(static_cast<size_t>(start), whole.size()));
    const int64_t offset = random.below(view.length), count = 1 + random.below(14);
    const auto kept = static_cast<size_t>(count);
    const std::string parts[] = {whole.substr(0, kept), whole.substr(static_cast<size_t>(offset), kept),
                                 whole.substr(whole.size() - std::min(whole.size(), kept))};
    for (int kind = 0; kind < 3; ++kind) {
      const Cut cut(view, kind, offset, count);
      ASSERT_EQ(content(cut.in_place), parts[kind]);
      ASSERT_EQ(content(cut.part), parts[kind]);
      ASSERT_EQ(std::string(cut.chars.data, static_cast<size_t>(cut.chars.length)), parts[kind]);
      ASSERT_EQ(mub_stringx_get_at(&cut.part, 0), parts[kind][0]);
      ASSERT_EQ(mub_stringx_get_at(&cut.part, cut.part.length), -1);
    }
  }
}

// Without bytes to keep, starts go where they are sent, and nothing is read there.
TEST(StringView, EmptyPartsKeepTheirStarts) {
  const char *text = "0123456789";
  constexpr int64_t kFar = INT64_MAX;
  const struct {
    int64_t start, length;
    int kind;
    int64_t offset, count;
    int64_t start_in_place, length_in_place, part_start;
  } kCases[] = {{2, 5, 0, 0, -3, 2, -3, 2},
                {2, 5, 0, 0, 0, 2, 0, 2},
                {2, 5, 1, 2, 0, 4, 0, 4},
                {2, 5, 1, 7, 1, 9, 0, 9},
                {2, 5, 1, -1, 2, 2, 5, 1},
                {2, 5, 1, kFar, 1, INT64_MIN + 1, 0, INT64_MIN + 1},
                {2, 5, 2, 0, 0, 7, 0, 2},
                {2, 5, 2, 0, -2, 9, 0, 2},
                {2, 5, 2, 0, INT64_MIN, INT64_MIN + 7, 0, 2},
                {2, 0, 1, 1, 1, 2, 0, 3},
                {kFar, -4, 0, 0, 1, kFar, -4, kFar},
                {2, -4, 1, 1, 1, 3, 0, 3},
                {2, -4, 2, 0, 1, 2, -4, 2},
                {2, -4, 2, 0, -6, 4, 0, 2}};
  for (const auto &row : kCases) {
    SCOPED_TRACE(::testing::Message() << row.kind << ": " << row.offset << ", " << row.count);
    const Cut cut({text, row.start, row.length}, row.kind, row.offset, row.count);
    EXPECT_EQ(cut.in_place.start, row.start_in_place);
    EXPECT_EQ(cut.in_place.length, row.length_in_place);
    EXPECT_EQ(cut.part.start, row.part_start);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(cut.chars.data),
              reinterpret_cast<uintptr_t>(text) + static_cast<uintptr_t>(row.part_start));
    EXPECT_EQ(std::make_tuple(cut.part.length, cut.chars.length), std::make_tuple(0, 0));
  }
}

TEST(StringView, PartsAreStoredInViewsOfTheSameText) {
  const mub_stringx view = {"0123456789", 2, 5};
  mub_stringx other = {"other", 1, 3};
  mub_stringx_left_string(&view, 2, &other);
  mub_stringx_mid_string(&view, 1, 2, &other);
  mub_stringx_right_string(&view, 2, &other);
  EXPECT_EQ(content(other), "the");
  mub_stringx_mid_string(&view, 5, 2, &other);
  EXPECT_EQ(std::make_tuple(other.start, other.length), std::make_tuple(7, 0)) << "whatever the text";
}

TEST(StringView, WithoutBytesIsNotRead) {
  const char *text = "12 ";
  mub_stringx views[] = {{text, INT64_MAX, -1}, {text, 5, 0}, {nullptr, 1, 3}, {nullptr, 1, INT64_MIN}};
  for (mub_stringx &view : views) {
    EXPECT_EQ(mub_stringx_is_long(&view) + mub_stringx_is_float(&view) + mub_stringx_get_long(&view), 0);
    EXPECT_EQ(mub_stringx_get_float(&view), 0.0);
    EXPECT_EQ(mub_stringx_find_char(&view, '1') + mub_stringx_reverse_find(&view, '1'), -2);
    EXPECT_EQ(mub_stringx_find(&view, "1", 1) + mub_stringx_find_pos(&view, "1", 1, 0), -2);
    EXPECT_EQ(mub_stringx_get_at(&view, 0), -1);
    EXPECT_EQ(mub_stringx_compare(&view, "12", 2), view.length == -1 ? -3 : -1) << "the lengths alone";
    const int64_t start = view.start, length = view.length;
    EXPECT_EQ(mub_stringx_trim(&view), view.text != nullptr);
    EXPECT_EQ(view.start, start);
    EXPECT_EQ(view.length, view.text != nullptr ? 0 : length);
    const Cut cut(view, 1, 1, 1);
    EXPECT_EQ(cut.chars.data == nullptr, view.text == nullptr);
  }
  char characters[] = "12 ";
  const mub_char unmeasured = {characters, -1}, none = {nullptr, -1};
  mub_stringx_copy_char(&views[0], &unmeasured);
  mub_stringx_copy_char(&views[1], &none);
  EXPECT_EQ(std::make_tuple(views[0].length, views[1].length, unmeasured.length), std::make_tuple(3, 0, -1));
}

}  // namespace
