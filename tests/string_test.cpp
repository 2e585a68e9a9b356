#include "mub_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>

#include "mub_wchar.h"
#include "support/fuse.h"
#include "support/random.h"
#include "support/strings.h"

namespace {

using namespace std::string_literals;
using namespace mub_test::text;
using mub_test::call;
using mub_test::expect_content;
using mub_test::Narrow;
using mub_test::Random;
using mub_test::String;
using mub_test::Text;
using mub_test::Units;
using mub_test::Wide;

// A wide text to be replaced has no count: it is looked for in steps of this many units, each of which counts for one.
template <class Kind>
constexpr size_t kStep = std::is_same_v<Kind, Wide> ? sizeof(wchar_t) / sizeof(uint16_t) : 1;

// Replaces from left to right, up to the first character of 0.
template <class Kind>
int64_t replace_all(std::string &text, const std::string &from, const std::string &to) {
  constexpr size_t step = kStep<Kind>;
  const size_t replaced = from.size() / step, put = (to.size() + step - 1) / step;
  int64_t hits = 0;
  for (size_t at = 0; at < text.size();) {
    if (text.compare(at, from.size(), from) == 0) {
      text.replace(at, replaced, to, 0, put);
      at += put;
      ++hits;
    } else if (text.compare(at, step, std::string(step, '\0')) == 0) {
      break;
    } else {
      at += step;
    }
  }
  return hits;
}

// `count` units from `start`, or as many as there are; none where either lies outside.
std::string part(const std::string &text, int64_t start, int64_t count) {
  if (start < 0 || count < 1 || start >= static_cast<int64_t>(text.size())) return "";
  return text.substr(static_cast<size_t>(start), static_cast<size_t>(count));
}

struct Result {
  int64_t actual = 0, expected = 0;
};

// What a change works with: numbers in and out of bounds, and a text that now and then is the string's own.
template <class Kind>
struct Draw {
  Draw(Random &random, const Text<Kind> &string) : units("") {
    constexpr int64_t kFar[] = {-1, INT64_MIN, INT64_MAX};
    at = random.one_in(16) ? kFar[random.below(3)] : random.below(string.length + 2);
    count = random.one_in(16) ? kFar[random.below(3)] : random.below(string.length + 2);
    text = random.text(random.one_in(10) ? random.below(600) : random.below(12), 4);
    const char fourth = random.one_in(10) ? '\0' : 'r';
    for (char &letter : text) letter = letter == 'd' ? fourth : static_cast<char>(letter + 'p' - 'a');
    if (at >= 0 && at <= string.length && string.data != nullptr && random.one_in(3)) {
      text = part(string.text(), at, random.below(string.length + 1));
      own = string.data + at;
    }
    units = Units<Kind>(text);
  }
  const typename Kind::Unit *source() const { return own != nullptr ? own : units.data(); }
  int64_t size() const { return units.size(); }

  int64_t at, count;
  std::string text;
  Units<Kind> units;
  const typename Kind::Unit *own = nullptr;
};

// Append, insert, update and delete: all replace a range by a text, empty as either may be.
template <class Kind>
Result edit(Text<Kind> &string, std::string &model, const Draw<Kind> &draw, int64_t kind) {
  const int64_t at = kind == 0 ? string.length : draw.at, count = kind < 2 ? 0 : draw.count;
  const bool is_valid = at >= 0 && at <= string.length && count >= 0;
  if (is_valid) model.replace(static_cast<size_t>(at), static_cast<size_t>(count), kind < 3 ? draw.text : "");
  const int64_t size = draw.size();
  if (kind == 0 && size == 1) call<kAppendChar>(string, draw.source()[0] - Kind::kUnits);
  if (kind == 0 && size != 1) call<kAppend>(string, draw.source(), size);
  if (kind == 1) return {call<kInsert>(string, at, draw.source(), size), is_valid && size > 0};
  if (kind == 2) return {call<kUpdate>(string, at, count, draw.source(), size), is_valid};
  if (kind == 3 && at <= string.length) call<kRemove>(string, at, count);
  return {};
}

template <class Kind>
Result substitute(Text<Kind> &string, std::string &model, const Draw<Kind> &draw, int64_t kind) {
  if (kind == 0) {
    const Units<Kind> from("pq"), to("rpr");
    return {call<kReplace>(string, from.data(), to.data()), replace_all<Kind>(model, "pq", "rpr")};
  }
  if (kind == 1) {
    const char from = draw.text[0];
    const int64_t count = std::count(model.begin(), model.end(), from);
    std::replace(model.begin(), model.end(), from, 'q');
    return {call<kReplaceChar>(string, Kind::unit(from) + Kind::kUnits, Kind::unit('q') - Kind::kUnits),
            count};
  }
  if (kind == 2) call<kAppendInteger>(string, draw.count);
  model = kind == 2 ? model + std::to_string(draw.count) : draw.text;
  if (kind == 3) call<kCopy>(string, draw.source(), draw.size());
  return {};
}

// Cuts in place; or into another string, whose content the string then takes.
template <class Kind>
Result cut(Text<Kind> &string, Text<Kind> &out, std::string &model, const Draw<Kind> &draw, int64_t kind) {
  int filled = 0;
  if (kind == 0) call<kLeft>(string, draw.count);
  if (kind == 1) call<kMid>(string, draw.at, draw.count);
  if (kind == 2) call<kRight>(string, draw.count);
  if (kind == 3) filled = call<kLeftInto>(string, draw.count, &out);
  if (kind == 4) filled = call<kMidInto>(string, draw.at, draw.count, &out);
  if (kind == 5) filled = call<kRightInto>(string, draw.count, &out);
  if (kind == 6) filled = call<kClone>(string, &out) == 1 && out.capacity >= string.capacity;
  const bool keeps_all = (kind == 0 && draw.count < 0) || (kind == 1 && draw.at < 0) || kind == 6;
  const auto size = static_cast<int64_t>(model.size());
  const int64_t starts[] = {0, draw.at, size - std::clamp<int64_t>(draw.count, 0, size)};
  if (!keeps_all) model = part(model, starts[kind % 3], draw.count);
  if (filled == 1) call<kSwap>(string, &out);
  return {filled, kind >= 3};
}

template <class Kind>
class Strings : public ::testing::Test {};
using Kinds = ::testing::Types<Narrow, Wide>;
TYPED_TEST_SUITE(Strings, Kinds);

// A change is refused whole when one of its allocations fails.
TYPED_TEST(Strings, AgreeWithAModel) {
  using Kind = TypeParam;
  Random random(4);
  Text<Kind> string;
  std::string model;
  for (int step = 0; step < 30000 && !this->HasFatalFailure(); ++step) {
    if (random.one_in(200)) call<kTerm>(string);
    if (string.data == nullptr) model.clear();
    const std::string before = model;
    const Draw<Kind> draw(random, string);
    const int64_t family = random.below(10), kind = random.below(family == 0 ? 7 : 4);
    Text<Kind> out("old");
    Result result;
    const bool failed = mub_test::random_fuse(random, 8).blows_in([&] {
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
TYPED_TEST(Strings, GrowByHalfTheirLength) {
  using Kind = TypeParam;
  const int64_t kCases[][4] = {
      {0, 0, 1, 15},         {0, 0, 16, 23},           {15, 15, -1, 15},
      {15, 15, 16, 23},      {15, 15, 200, 207},       {23, 23, 24, 39},
      {3, 1007, 1008, 1015}, {1007, 1007, 1008, 1511}, {20000007, 20000007, 20000008, 28388615}};
  for (const auto &[length, capacity, wanted, grown] : kCases) {
    Text<Kind> string;
    call<kExpand>(string, capacity);
    call<kShrink>(string, length);
    EXPECT_EQ(call<kExpand>(string, wanted), 1);
    EXPECT_EQ(string.capacity, grown) << length << " " << wanted;
  }
}

TYPED_TEST(Strings, RefuseSizesThatNoHeapHas) {
  using Kind = TypeParam;
  Text<Kind> string("kept");
  const Units<Kind> x("x");
  for (const int64_t huge : {INT64_MAX, INT64_MAX - 7, INT64_MAX - 64, INT64_MAX / 2}) {
    call<kAppend>(string, x.data(), huge);
    call<kCopy>(string, x.data(), huge);
    EXPECT_EQ(call<kExpand>(string, huge) + call<kInsert>(string, 1, x.data(), huge), 0);
    EXPECT_EQ(call<kUpdate>(string, 1, 1, x.data(), huge), 0);
  }
  expect_content(string, "kept");
}

TYPED_TEST(Strings, HaveSpareUnitsWithinReach) {
  using Kind = TypeParam;
  Text<Kind> string("0123456789abcde");
  call<kShrink>(string, 2);
  call<kExpand>(string, 16);  // takes the spare units along
  for (const int64_t index : {-1, 22, 23}) call<kSetAt>(string, index, 0x6101E9);
  const int64_t kUnits[][2] = {{-1, Kind::kNothing}, {0, '0'}, {2, 0}, {3, '3'}, {22, Kind::kStored},
                               {23, Kind::kNothing}};
  for (const auto &[index, unit] : kUnits) EXPECT_EQ(call<kGetAt>(string, index), unit) << index;
  const int64_t kRanges[][2] = {{3, 2}, {2, 22}, {-1, 2}, {1, INT64_MAX}, {1, -1}, {24, 0}, {INT64_MAX, 1}};
  for (const auto &[position, count] : kRanges) call<kZero>(string, position, count);
  call<kShrink>(string, INT64_MAX);
  expect_content(string, "01\0\0\00056789abcde\0\0\0\0\0\0\0\xE9"s);
  call<kZero>(string, 1, 22);
  call<kShrink>(string, -1);
  expect_content(string, "0" + std::string(22, '\0'));
  call<kLeft>(string, 3);
  call<kRemove>(string, 9, 0);
  EXPECT_EQ(string.length, 9) << "a position behind the content lengthens it";
}

TYPED_TEST(Strings, EndWithTheirLengthThoughTheTerminatorIsOverwritten) {
  using Kind = TypeParam;
  Text<Kind> string("abcd");
  const Units<Kind> behind("de"), x("x");
  call<kSetAt>(string, 4, Kind::unit('e'));
  EXPECT_EQ(call<kFindPos>(string, behind.data(), 2, 0), -1);
  EXPECT_EQ(call<kReplace>(string, behind.data(), x.data()), 0);
  call<kSetAt>(string, 4, 'e');
  call<kAppend>(string, x.data(), 0);
  expect_content(string, "abcd");
}

TYPED_TEST(Strings, TakeNullAndTheirOwnTextForWhatTheyMean) {
  using Kind = TypeParam;
  Text<Kind> string("0123456789abcde");
  call<kAppend>(string, string.data + string.capacity, 1);
  expect_content(string, "0123456789abcde\0"s);
  for (const int64_t count : {-1, 1}) {
    call<kAppend>(string, nullptr, count);
    EXPECT_EQ(call<kInsert>(string, 1, nullptr, count), 0);
    EXPECT_EQ(call<kUpdate>(string, 1, 2, nullptr, count), 0);
  }
  EXPECT_EQ(call<kUpdate>(string, 1, 15, nullptr, 0), 1);
  EXPECT_EQ(call<kClone>(string, &string), 1);
  call<kSwap>(string, &string);
  expect_content(string, "0");
  const Units<Kind> zero_nul("0"s + '\0');
  EXPECT_EQ(call<kReplace>(string, nullptr, zero_nul.data()), 0);
  EXPECT_EQ(call<kReplace>(string, zero_nul.data() + 1, zero_nul.data()), 0) << "an empty text";
  expect_content(string, "0");
  EXPECT_EQ(call<kReplace>(string, zero_nul.data(), nullptr), 1);
  expect_content(string, "");
  call<kAppendChar>(string, 'x');
  call<kCopy>(string, nullptr, 3);
  expect_content(string, "");
}

TYPED_TEST(Strings, WithoutABufferAreEmpty) {
  using Kind = TypeParam;
  Text<Kind> string;
  const Units<Kind> nothing("");
  call<kShrink>(string, 5);
  call<kZero>(string, 0, 1);
  call<kSetAt>(string, 0, 'x');
  call<kCopy>(string, nullptr, -1);
  EXPECT_EQ(call<kTrim>(string) + call<kCompare>(string, nothing.data(), -1), 0);
  EXPECT_EQ(call<kUpdate>(string, 0, 4, nullptr, 0), 1);
  EXPECT_EQ(call<kFindPos>(string, nothing.data(), -1, 0), -1);
  EXPECT_EQ(call<kReplace>(string, Units<Kind>("x").data(), nothing.data()), 0);
  EXPECT_TRUE(call<kIsEmpty>(string) && string.data == nullptr && string.length == 0);
  call<kCopyChar>(string, 'z' + Kind::kUnits);
  expect_content(string, "z");
  call<kCopyChar>(string, Kind::kUnits);
  expect_content(string, "");
}

TEST(String, TellsWhetherACopyWasMade) {
  String string("a-b-");
  EXPECT_EQ(mub_string_copy(&string, "x", INT64_MAX), 0);
  EXPECT_EQ(mub_string_replace(&string, "-", string.data), 2) << "its own text";
  expect_content(string, "aa-b-ba-b-");
  EXPECT_EQ(mub_string_update(&string, 1, 9, "x", -1), 1);
  EXPECT_EQ(mub_string_insert(&string, 1, "yz", -1), 1);
  expect_content(string, "ayzx");
  EXPECT_EQ(mub_string_copy(&string, nullptr, 3), 1);
  expect_content(string, "");
}

}  // namespace
