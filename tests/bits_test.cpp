#include "mub_bits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "mub_string.h"
#include "support/fuse.h"
#include "support/random.h"

using mub_test::Blow;
using mub_test::Fuse;
using mub_test::Random;

namespace {

struct Bits : mub_bits {
  Bits() { mub_bits_init(this); }
  ~Bits() { mub_bits_term(this); }
};

TEST(Bits, AgreeWithAModelAlsoWhenMemoryRunsOut) {
  Random random(90);
  Bits bits;
  std::vector<bool> model;
  for (int step = 0; step < 3000; ++step) {
    // Mostly inside, sometimes right behind the end or far beyond the next growth.
    const auto size = static_cast<int64_t>(model.size());
    const int64_t n =
        random.one_in(9) ? size + random.below(random.one_in(4) ? 20000 : 20) : random.below(size + 1);
    const auto bit = static_cast<uint32_t>(n);
    const bool on = random.one_in(2), asks = random.one_in(4);
    int result = 0;
    const bool failed = Fuse(random.below(4), Blow::kOnce).blows_in([&] {
      if (asks) result = mub_bits_expand(&bits, bit / 8);
      if (!asks) mub_bits_insert(&bits, bit, on ? -256 : 0);
    });
    EXPECT_EQ(result, asks && !failed);
    const size_t wanted = size_t{8} * (bit / 8 + !asks);
    if (!failed && wanted > model.size()) model.resize(std::max(model.size() + 8192, wanted));
    if (!failed && !asks) model[bit] = on;
    if (random.one_in(100)) {
      mub_bits_zero(&bits);
      std::fill(model.begin(), model.end(), false);
    }
    if (random.one_in(100)) {
      mub_bits_term(&bits);
      model.clear();
    }
    ASSERT_EQ(bits.size, model.size() / 8);
    for (const int64_t probe : {n, random.below(size + 1), int64_t{bits.size} * 8 + 8, int64_t{UINT32_MAX}}) {
      const auto at = static_cast<size_t>(probe);
      const bool is_set = at < model.size() && model[at];
      ASSERT_EQ(mub_bits_find(&bits, static_cast<uint32_t>(probe)), is_set ? 128 >> probe % 8 : 0);
    }
  }
}

TEST(Bits, TestAndChangeSingleBytes) {
  const std::string digits = "10110010";  // 0xB2
  for (const uint32_t position : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 31u, 32u, 40u, UINT32_MAX}) {
    const uint32_t mask = position < 8 ? 128u >> position : 0;
    const uint32_t set = position < 8 && digits[position] == '1' ? mask : 0;
    EXPECT_EQ(mub_bits_get(0xFFFFFFB2, position), set);
    EXPECT_EQ(mub_bits_set(0xABB2, position, 1), 0xB2 | mask);
    EXPECT_EQ(mub_bits_set(0xABB2, position, 0), 0xB2 - set);
  }
}

// The block goes to the stream, and as it is to a string, which needs room for its terminator.
TEST(Bits, SwapGivesTheBlockAway) {
  Bits bits;
  mub_stream stream;
  mub_string text;
  mub_string_init(&text);
  for (const uint32_t bit : {1u, 7u, 8191u}) mub_bits_insert(&bits, bit, 1);
  mub_bits_swap(&bits, &stream);
  EXPECT_TRUE(stream.data == bits.data && bits.size == 1024);
  EXPECT_TRUE(stream.length == 1024 && stream.capacity == 1024);
  mub_bits_init(&bits);
  mub_stream_swap_string(&stream, &text);
  EXPECT_EQ(std::string(text.data), "A");
  EXPECT_TRUE(text.data[1023] == 1 && text.data[1024] == 0);
  mub_string_term(&text);
}

}  // namespace
