#include "mub_mem.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "core/bytes.h"
#include "core/text_search.h"
#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using namespace std::string_literals;
using mub_test::Guarded;
using mub_test::Random;

// What a copy byte by byte from low to high leaves, and a move that clears what it vacates; at a distance of 7 or
// less both are a copy through other memory.
std::string copied(std::string bytes, size_t to, size_t from, size_t count, bool clears) {
  const bool is_near = (to > from ? to - from : from - to) <= 7;
  if (is_near) return bytes.replace(to, count, bytes.substr(from, count));
  for (size_t i = 0; i < count; ++i) bytes[to + i] = bytes[from + i];
  for (size_t i = from; clears && i < from + count; ++i) {
    if (i < to || i >= to + count) bytes[i] = 0;
  }
  return bytes;
}

TEST(Mem, CopiesAndMovesForwardAtEveryDistance) {
  constexpr size_t kFrom = 150;
  std::string before;
  for (int i = 0; i < 450; ++i) before += static_cast<char>(i * 7 + 1);
  for (size_t to = 0; to <= 300; ++to) {
    for (const size_t count : {0u, 1u, 7u, 8u, 23u, 40u, 149u}) {
      SCOPED_TRACE(::testing::Message() << count << " bytes from " << kFrom << " to " << to);
      std::string bytes = before;
      mub_mem_copy(&bytes[to], &bytes[kFrom], static_cast<int64_t>(count));
      ASSERT_EQ(bytes, copied(before, to, kFrom, count, false));
      bytes = before;
      mub_mem_move(&bytes[to], &bytes[kFrom], static_cast<int64_t>(count));
      ASSERT_EQ(bytes, copied(before, to, kFrom, count, true));
    }
  }
}

// 4 GiB apart, ranges count as near each other: the low halves of the addresses decide.
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
    EXPECT_EQ(mub_mem_str(text.data(), count, "u", count), -1);
    EXPECT_EQ(mub_mem_icmp("a", count, "b", count), 0);
  }
  EXPECT_EQ(text, before);
}

// Every way to search that this machine has, each asked within its limits.
void expect_first(std::string_view data, std::string_view pattern) {
  const Guarded text(data);
  const Guarded wanted(pattern);
  const auto expected = static_cast<int64_t>(data.find(pattern));  // npos is -1
  ASSERT_EQ(mub_mem_str(text.data(), text.size(), wanted.data(), wanted.size()), expected);
  const int64_t starts = text.size() - wanted.size() + 1;
  if (wanted.size() < 2 || starts < 1) return;
  ASSERT_EQ(mub::bytes::find_portable(text.bytes(), text.size(), wanted.bytes(), wanted.size()), expected);
#if defined(__x86_64__)
  if (starts < mub::bytes::kSse2Starts) return;
  ASSERT_EQ(mub::bytes::find_sse2(text.bytes(), text.size(), wanted.bytes(), wanted.size()), expected);
  if (starts < mub::bytes::kAvx2Starts || !__builtin_cpu_supports("avx2")) return;
  ASSERT_EQ(mub::bytes::find_avx2(text.bytes(), text.size(), wanted.bytes(), wanted.size()), expected);
#endif
}

TEST(MemStr, AgreesWithAModel) {
  Random random(1);
  for (int round = 0; round < 4000 && !HasFatalFailure(); ++round) {
    const int alphabet = random.one_in(2) ? 2 : 5;
    const std::string data = random.text(1 + random.below(random.one_in(4) ? 400 : 70), alphabet);
    std::string pattern = random.text(1 + random.below(random.one_in(4) ? 60 : 6), alphabet);
    if (random.one_in(2)) {
      pattern =
          data.substr(static_cast<size_t>(random.below(static_cast<int64_t>(data.size()))), pattern.size());
    }
    SCOPED_TRACE(data + " / " + pattern);
    expect_first(data, pattern);
  }
}

TEST(MemStr, FindsAPatternAtEveryPosition) {
  for (const size_t length : {2u, 3u, 4u, 5u, 17u, 40u}) {
    const std::string pattern = "<" + std::string(length - 2, '-') + ">";
    for (size_t size = length; size <= 140; ++size) {
      for (size_t at = 0; at <= size - length && !HasFatalFailure(); ++at) {
        expect_first(std::string(size, '-').replace(at, length, pattern), pattern);
      }
    }
  }
}

TEST(MemStr, FindsAPatternBehindManyFalseMatches) {
  for (const size_t length : {6u, 40u, 300u}) {
    std::string pattern(length, 'a');
    pattern[length / 2 + 1] = 'b';
    for (size_t before = 0; before < 1400 && !HasFatalFailure(); ++before) {
      expect_first(std::string(before, 'a') + pattern + std::string(20, 'a'), pattern);
    }
    expect_first(std::string(20000, 'a'), pattern);
  }
}

TEST(MemStr, ShortPatternsAreTheirFirstByte) {
  for (const int64_t length : {INT64_C(1), INT64_C(0), INT64_MIN}) {
    EXPECT_EQ(mub_mem_str("abcb", 4, "bx", length), 1);
    EXPECT_EQ(mub_mem_str("abcb", 4, "", length), -1) << "the terminator is no data";
  }
  EXPECT_EQ(mub_mem_chr("\0xax\xFF", 5, -1), 4);
  EXPECT_EQ(mub_mem_rchr("\0xax\xFF", 5, 'x' + 256), 3);
}

int fold(char byte) { return byte >= 'A' && byte <= 'Z' ? byte + 32 : static_cast<uint8_t>(byte); }

void expect_difference(const std::string &a, const std::string &b, size_t at) {
  const Guarded left(a);
  const Guarded right(b);
  const int expected = static_cast<uint8_t>(a[at]) - static_cast<uint8_t>(b[at]);
  ASSERT_EQ(mub_mem_cmp(left.data(), left.size(), right.data(), right.size()), expected);
  ASSERT_EQ(mub_mem_icmp(left.data(), left.size(), right.data(), right.size()), fold(a[at]) - fold(b[at]));
  const int order = mub::bytes::order(left.data(), left.size(), right.data(), right.size());
  ASSERT_EQ(order < 0, expected < 0);
  ASSERT_NE(order, 0);
  ASSERT_FALSE(mub::bytes::equal(left.data(), right.data(), left.size()));
}

TEST(MemCmp, IsTheDifferenceOfTheFirstUnequalBytes) {
  for (const size_t length : {1u, 2u, 3u, 4u, 7u, 8u, 9u, 17u, 255u, 256u, 257u, 600u}) {
    for (size_t at = 0; at < length && !HasFatalFailure(); ++at) {
      const std::string same(at, 'K');
      const std::string a = same + '\x05' + std::string(length - at - 1, 'z');
      const std::string b = same + '\xF0' + std::string(length - at - 1, 'a');
      expect_difference(a, b, at);
      expect_difference(b, a, at);
      expect_difference(same + 'q' + same, same + 'R' + same, at);
      EXPECT_TRUE(mub::bytes::equal(a.data(), (a + "x").data(), static_cast<int64_t>(length)));
      EXPECT_EQ(mub_mem_cmp(a.data(), static_cast<int64_t>(length), a.data(), static_cast<int64_t>(at)),
                static_cast<int>(length - at));
    }
  }
  EXPECT_EQ(mub_mem_icmp("aBcDeFgHiJ", 10, "AbCdEfGhIjK", 11), -1);
}

TEST(MemCmp, LengthDifferencesAreCutTo32Bits) {
  EXPECT_EQ(mub_mem_cmp("", 0, "", INT64_C(1) << 32), 0);
  EXPECT_EQ(mub_mem_cmp("", 0, "", INT64_C(1) << 31), INT32_MIN);
  EXPECT_EQ(mub_mem_icmp("", INT64_MAX, "", 0), -1);
}

TEST(Str, DuplicateReplacesTheOldStringOrLeavesIt) {
  char *text = nullptr;
  mub_str_dup(&text, "old string", -1);
  mub_str_dup(&text, text + 4, 9);
  EXPECT_EQ(std::string(text, 10), "string\0\0\0\0"s) << "padded";
  mub_test::for_every_allocation([&text](const mub_test::Fuse &fuse) {
    const bool failed = fuse.blows_in([&] { mub_str_dup(&text, "new", 2); });
    EXPECT_STREQ(text, failed ? "string" : "ne");
    mub_str_dup(&text, "string", -1);
  });
  mub_str_dup(&text, "never", INT64_MAX);
  EXPECT_STREQ(text, "string");
  mub_str_dup(&text, nullptr, 5);
  EXPECT_EQ(text, nullptr);
}

TEST(Str, TrimsInPlace) {
  const struct {
    std::string text;
    int64_t length;
    std::string trimmed;
  } kCases[] = {{" \t a b \r\n", 9, "a b"}, {"   ", 3, ""},      {" x", -1, ""},
                {"x", INT64_MIN, ""},       {"x", 0, ""},        {"\0"s, 1, "\0"s},
                {" \0x "s, 4, " \0x "s},    {"\v\f", 2, "\v\f"}, {"\xE9 ", 2, "\xE9"},
                {"a\0\0"s, 3, "a"},         {"a b", 3, "a b"},   {" ab cd", 4, "ab"}};
  for (const auto &row : kCases) {
    const Guarded text(row.text + '\0');
    mub_str_trim(text.data(), row.length);
    EXPECT_EQ(std::string(text.data(), row.trimmed.size() + 1), row.trimmed + '\0') << row.text;
  }
  mub_str_trim(nullptr, 4);
}

TEST(Str, KnowsNullAndTheTerminator) {
  EXPECT_EQ(mub_str_chr("abcb", 'b' + 256), 1);
  EXPECT_EQ(mub_str_rchr("abcb", 'b'), 3);
  EXPECT_EQ(mub_str_chr("abcb", 0), 4);
  EXPECT_EQ(mub_str_str("abcb", "cb"), 2);
  EXPECT_EQ(mub_str_str("abcb", ""), 0);
  EXPECT_EQ(mub_str_str("abcb", "bb"), -1);
  EXPECT_EQ(mub_str_str(nullptr, ""), -1);
  EXPECT_EQ(mub_str_str("", nullptr), -1);
  EXPECT_EQ(mub_str_chr(nullptr, 0), -1);
  EXPECT_EQ(mub_str_rchr(nullptr, 0), -1);
  for (const auto compare : {mub_str_cmp, mub_str_icmp}) {
    EXPECT_EQ(compare(nullptr, nullptr), 0);
    EXPECT_EQ(compare(nullptr, ""), -1);
    EXPECT_EQ(compare("", nullptr), 1);
  }
  EXPECT_GT(mub_str_cmp("a", "B"), 0);
  EXPECT_LT(mub_str_icmp("a", "B"), 0);
}

}  // namespace
