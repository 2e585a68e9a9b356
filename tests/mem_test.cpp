#include "mub_mem.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "core/bytes.h"
#include "core/text_search.h"
#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using mub_test::Guarded;
using mub_test::Random;
using Bytes = std::vector<uint8_t>;

Bytes counting_bytes(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + 1);
  return bytes;
}

// Word by word from low to high, then byte by byte; at a distance of 7 or less as if through a copy.
Bytes copied_forward(Bytes bytes, size_t to, size_t from, size_t count) {
  const auto at = [&bytes](size_t i) { return bytes.begin() + static_cast<std::ptrdiff_t>(i); };
  const size_t distance = to > from ? to - from : from - to;
  const Bytes source(at(from), at(from + count));
  if (distance <= 7) {
    std::copy(source.begin(), source.end(), at(to));
    return bytes;
  }
  size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const Bytes word(at(from + i), at(from + i + 8));
    std::copy(word.begin(), word.end(), at(to + i));
  }
  for (; i < count; ++i) bytes[to + i] = bytes[from + i];
  return bytes;
}

Bytes moved_forward(const Bytes &bytes, size_t to, size_t from, size_t count) {
  Bytes moved = copied_forward(bytes, to, from, count);
  if ((to > from ? to - from : from - to) <= 7) return moved;
  for (size_t i = from; i < from + count; ++i) {
    if (i < to || i >= to + count) moved[i] = 0;
  }
  return moved;
}

TEST(Mem, CopiesAndMovesForwardAtEveryDistance) {
  constexpr size_t kFrom = 150;
  const Bytes before = counting_bytes(450);
  for (size_t to = 0; to <= 300; ++to) {
    for (const size_t count : {0u, 1u, 7u, 8u, 9u, 16u, 23u, 40u, 64u, 100u, 149u}) {
      SCOPED_TRACE(::testing::Message() << count << " bytes from " << kFrom << " to " << to);
      Bytes bytes = before;
      mub_mem_copy(bytes.data() + to, bytes.data() + kFrom, static_cast<int64_t>(count));
      ASSERT_EQ(bytes, copied_forward(before, to, kFrom, count));
      bytes = before;
      mub_mem_move(bytes.data() + to, bytes.data() + kFrom, static_cast<int64_t>(count));
      ASSERT_EQ(bytes, moved_forward(before, to, kFrom, count));
    }
  }
}

TEST(Mem, CopyAboveTheSourceRepeatsIt) {
  std::string text = "0123456789abcdef" + std::string(40, '.');
  mub_mem_copy(&text[16], &text[0], 40);
  EXPECT_EQ(text, "0123456789abcdef0123456789abcdef0123456789abcdef01234567");
}

// 4 GiB apart, the ranges count as near each other: the low halves of the addresses decide.
TEST(Mem, DistanceIsThatOfTheLowAddressHalves) {
  constexpr size_t kSpan = (size_t{1} << 32) + 4096;
  void *map =
      mmap(nullptr, kSpan, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no room for 4 GiB of addresses";
  char *low = static_cast<char *>(map);
  char *high = low + (size_t{1} << 32);
  std::memcpy(low, "near and far", 12);
  mub_mem_move(high + 7, low, 12);
  EXPECT_EQ(std::string(low, 12), "near and far");
  EXPECT_EQ(std::string(high + 7, 12), "near and far");
  mub_mem_move(high + 8, low, 12);
  EXPECT_EQ(std::string(low, 12), std::string(12, '\0'));
  munmap(map, kSpan);
}

TEST(Mem, CountsBelowOneDoNothing) {
  std::string text = "untouched bytes, all of them";
  const std::string before = text;
  for (const int64_t count : {INT64_C(0), INT64_C(-1), INT64_MIN}) {
    mub_mem_zero(&text[0], count);
    mub_mem_copy(&text[0], &text[12], count);
    mub_mem_move(&text[0], &text[12], count);
    EXPECT_EQ(mub_mem_chr(text.data(), count, 'u'), -1);
    EXPECT_EQ(mub_mem_rchr(text.data(), count, 'u'), -1);
    EXPECT_EQ(mub_mem_str(text.data(), count, "u", 1), -1);
    EXPECT_EQ(mub_mem_str(text.data(), count, "", count), -1);
    EXPECT_EQ(mub_mem_cmp("a", count, "b", count), 0);
    EXPECT_EQ(mub_mem_icmp("a", count, "b", count), 0);
  }
  EXPECT_EQ(text, before);
}

TEST(Mem, FindsTheFirstAndTheLastByteByItsLowEightBits) {
  const Guarded data(std::string_view("\0xaxa\xFF", 6));
  EXPECT_EQ(mub_mem_chr(data.data(), 6, 'a'), 2);
  EXPECT_EQ(mub_mem_rchr(data.data(), 6, 'a'), 4);
  EXPECT_EQ(mub_mem_chr(data.data(), 6, 'a' + 256), 2);
  EXPECT_EQ(mub_mem_chr(data.data(), 6, -1), 5);
  EXPECT_EQ(mub_mem_rchr(data.data(), 6, 0), 0);
  EXPECT_EQ(mub_mem_rchr(data.data(), 2, 'a'), -1);
}

int64_t position_in(std::string_view data, std::string_view pattern) {
  const size_t found = data.find(pattern);
  return found == data.npos ? -1 : static_cast<int64_t>(found);
}

const uint8_t *bytes_of(const char *text) { return reinterpret_cast<const uint8_t *>(text); }

// Every way to search that this machine has, each asked within its limits.
void expect_found_at(int64_t expected, const Guarded &data, const Guarded &pattern) {
  ASSERT_EQ(mub_mem_str(data.data(), data.size(), pattern.data(), pattern.size()), expected);
  const int64_t starts = data.size() - pattern.size() + 1;
  if (pattern.size() < 2 || starts < 1) return;
  const auto found = [&](mub::bytes::PatternFinder *finder) {
    return finder(data.bytes(), data.size(), bytes_of(pattern.data()), pattern.size());
  };
  ASSERT_EQ(found(mub::bytes::find_portable), expected);
#if defined(__x86_64__)
  if (starts >= mub::bytes::kSse2Starts) {
    ASSERT_EQ(found(mub::bytes::find_sse2), expected);
  }
  if (starts >= mub::bytes::kAvx2Starts && __builtin_cpu_supports("avx2")) {
    ASSERT_EQ(found(mub::bytes::find_avx2), expected);
  }
#endif
}

TEST(MemStr, AgreesWithAModel) {
  Random random(1);
  for (int round = 0; round < 4000; ++round) {
    const int alphabet = random.one_in(2) ? 2 : 5;
    const std::string data = random.text(random.below(random.one_in(4) ? 400 : 70), alphabet);
    std::string pattern = random.text(1 + random.below(random.one_in(4) ? 60 : 6), alphabet);
    if (!data.empty() && random.one_in(2)) {
      pattern =
          data.substr(static_cast<size_t>(random.below(static_cast<int64_t>(data.size()))), pattern.size());
    }
    SCOPED_TRACE(data + " / " + pattern);
    expect_found_at(position_in(data, pattern), Guarded(data), Guarded(pattern));
    if (HasFatalFailure()) return;
  }
}

TEST(MemStr, FindsAPatternAtEveryPositionAndNotBehindTheData) {
  for (const size_t length : {2u, 3u, 4u, 5u, 8u, 17u, 40u}) {
    const std::string pattern = "<" + std::string(length - 2, '-') + ">";
    const Guarded wanted(pattern);
    for (size_t size = 0; size <= 140; ++size) {
      for (size_t at = 0; at <= size; ++at) {
        std::string text(size, '-');
        text.replace(at, std::min(length, size - at), pattern, 0, std::min(length, size - at));
        const int64_t expected = at + length <= size ? static_cast<int64_t>(at) : -1;
        expect_found_at(expected, Guarded(text), wanted);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(MemStr, FindsAPatternBehindManyFalseMatches) {
  for (const size_t length : {6u, 9u, 40u, 300u}) {
    std::string pattern(length, 'a');
    pattern[length / 2 + 1] = 'b';
    std::string text(20000, 'a');
    expect_found_at(-1, Guarded(text), Guarded(pattern));
    text.replace(text.size() - length, length, pattern);
    expect_found_at(static_cast<int64_t>(text.size() - length), Guarded(text), Guarded(pattern));
  }
}

TEST(MemStr, ShortPatternsAreTheirFirstByte) {
  for (const int64_t length : {INT64_C(1), INT64_C(0), INT64_C(-1), INT64_MIN}) {
    EXPECT_EQ(mub_mem_str("abcb", 4, "bx", length), 1);
    EXPECT_EQ(mub_mem_str("abcb", 4, "x", length), -1);
    EXPECT_EQ(mub_mem_str("abcb", 4, "", length), -1) << "the terminator is no data";
  }
  EXPECT_EQ(mub_mem_str("abc", 3, "abcd", 4), -1);
}

// The comparison as it is defined, byte by byte.
template <class Fold>
int64_t first_byte_difference(std::string_view a, std::string_view b, Fold fold) {
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const int difference = fold(static_cast<uint8_t>(a[i])) - fold(static_cast<uint8_t>(b[i]));
    if (difference != 0) return difference;
  }
  return static_cast<int64_t>(a.size()) - static_cast<int64_t>(b.size());
}

int sign(int64_t number) { return (number > 0) - (number < 0); }

void expect_order(const std::string &a, const std::string &b) {
  const Guarded left(a);
  const Guarded right(b);
  const int64_t expected = first_byte_difference(a, b, [](int c) { return c; });
  const int64_t expected_folded =
      first_byte_difference(a, b, [](int c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
  ASSERT_EQ(mub_mem_cmp(left.data(), left.size(), right.data(), right.size()), expected);
  ASSERT_EQ(mub_mem_icmp(left.data(), left.size(), right.data(), right.size()), expected_folded);
  ASSERT_EQ(sign(mub::bytes::order(left.data(), left.size(), right.data(), right.size())), sign(expected));
  if (a.size() == b.size()) {
    ASSERT_EQ(mub::bytes::equal(left.data(), right.data(), left.size()), expected == 0);
  }
}

TEST(MemCmp, IsTheDifferenceOfTheFirstUnequalBytes) {
  for (const size_t length :
       {1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 64u, 255u, 256u, 257u, 511u, 600u}) {
    for (size_t at = 0; at < length; ++at) {
      std::string a(length, 'K');
      std::string b = a;
      a[at] = '\x05';
      b[at] = '\xF0';
      for (size_t i = at + 1; i < length; ++i) b[i] = '\x01';  // what follows must not count
      expect_order(a, b);
      expect_order(b, a);
      b = a;
      a[at] = 'q';
      b[at] = 'Q';
      expect_order(a, b);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(MemCmp, AgreesWithAModel) {
  Random random(2);
  for (int round = 0; round < 5000; ++round) {
    std::string a = random.text(random.below(40), 2);
    std::string b = random.one_in(3) ? random.text(random.below(40), 2) : a;
    if (!b.empty() && random.one_in(2)) b.resize(static_cast<size_t>(random.below(40)), 'A');
    SCOPED_TRACE(a + " / " + b);
    expect_order(a, b);
    if (HasFatalFailure()) return;
  }
}

TEST(MemCmp, LengthDifferencesAreCutTo32Bits) {
  EXPECT_EQ(mub_mem_cmp("", 0, "", INT64_C(1) << 32), 0);
  EXPECT_EQ(mub_mem_cmp("", 0, "", INT64_C(1) << 31), INT32_MIN);
  EXPECT_EQ(mub_mem_icmp("", INT64_MAX, "", 0), -1);
  EXPECT_EQ(mub_mem_cmp("abc", 3, "x", -1), 4);
}

std::string duplicate(const char *source, int64_t length) {
  char *copy = nullptr;
  mub_str_dup(&copy, source, length);
  const size_t characters = length < 0 ? std::strlen(source) : static_cast<size_t>(length);
  const std::string result(copy, characters + 1);
  mub_free(copy);
  return result;
}

TEST(Str, DuplicatesWholePartAndPadded) {
  EXPECT_EQ(duplicate("text", -1), std::string("text\0", 5));
  EXPECT_EQ(duplicate("text", 2), std::string("te\0", 3));
  EXPECT_EQ(duplicate("text", 7), std::string("text\0\0\0\0", 8));
  EXPECT_EQ(duplicate("", 0), std::string("\0", 1));
}

TEST(Str, DuplicateReplacesTheOldStringOrLeavesIt) {
  char *text = nullptr;
  mub_str_dup(&text, "old string", -1);
  mub_str_dup(&text, text + 4, -1);
  EXPECT_STREQ(text, "string");
  mub_test::for_every_allocation([&text](const mub_test::Fuse &fuse) {
    const bool failed = fuse.blows_in([&] { mub_str_dup(&text, "string", 3 + 3); });
    EXPECT_STREQ(text, "string") << failed;
  });
  mub_str_dup(&text, "never", INT64_MAX);
  EXPECT_STREQ(text, "string");
  mub_str_dup(&text, nullptr, 5);
  EXPECT_EQ(text, nullptr);
}

TEST(Str, TrimsInPlace) {
  using namespace std::string_literals;
  const struct {
    std::string text;
    int64_t length;
    std::string trimmed;
  } kCases[] = {
      {" \t a b \r\n"s, 9, "a b"s},
      {"   "s, 3, ""s},
      {" x"s, -1, ""s},
      {"x"s, -1, ""s},
      {"x"s, 0, ""s},
      {" "s, 1, ""s},
      {"\0"s, 1, "\0"s},
      {" \0x "s, 4, " \0x "s},
      {"\v\f"s, 2, "\v\f"s},
      {"\xE9 "s, 2, "\xE9"s},
      {"a\0\0"s, 3, "a"s},
      {"a b"s, 3, "a b"s},
      {" ab cd"s, 4, "ab"s},
  };
  for (const auto &row : kCases) {
    const Guarded text(row.text + '\0');
    mub_str_trim(text.data(), row.length);
    EXPECT_EQ(std::string(text.data(), row.trimmed.size() + 1), row.trimmed + '\0') << row.text;
  }
  mub_str_trim(nullptr, 4);
}

TEST(Str, SearchesKnowNullAndTheTerminator) {
  EXPECT_EQ(mub_str_chr("abcb", 'b'), 1);
  EXPECT_EQ(mub_str_rchr("abcb", 'b'), 3);
  EXPECT_EQ(mub_str_chr("abcb", 0), 4);
  EXPECT_EQ(mub_str_rchr("abcb", 256), 4);
  EXPECT_EQ(mub_str_chr("a\xE9", 0xE9), 1);
  EXPECT_EQ(mub_str_chr("abcb", 'x'), -1);
  EXPECT_EQ(mub_str_str("abcb", "cb"), 2);
  EXPECT_EQ(mub_str_str("abcb", ""), 0);
  EXPECT_EQ(mub_str_str("abcb", "bb"), -1);
  EXPECT_EQ(mub_str_str(nullptr, ""), -1);
  EXPECT_EQ(mub_str_str("", nullptr), -1);
  EXPECT_EQ(mub_str_chr(nullptr, 0), -1);
  EXPECT_EQ(mub_str_rchr(nullptr, 0), -1);
}

TEST(Str, NullSortsFirst) {
  for (const auto compare : {mub_str_cmp, mub_str_icmp}) {
    EXPECT_EQ(compare(nullptr, nullptr), 0);
    EXPECT_EQ(compare(nullptr, ""), -1);
    EXPECT_EQ(compare("", nullptr), 1);
    EXPECT_LT(compare("ab", "b"), 0);
  }
  EXPECT_GT(mub_str_cmp("a", "B"), 0);
  EXPECT_EQ(mub_str_icmp("aB", "Ab"), 0);
}

}  // namespace
