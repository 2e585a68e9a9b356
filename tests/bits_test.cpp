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

// The bytes that hold the model's bits, and the 0 behind them.
std::vector<uint8_t> bytes_of(const std::vector<bool> &bits) {
  std::vector<uint8_t> bytes(bits.empty() ? 0 : bits.size() / 8 + 1);
  for (size_t n = 0; n < bits.size(); ++n) {
    if (bits[n]) bytes[n / 8] = static_cast<uint8_t>(bytes[n / 8] + (128 >> n % 8));
  }
  return bytes;
}

TEST(Bits, AgreeWithAModelAlsoWhenMemoryRunsOut) {
  Random random(90);
  for (int round = 0; round < 20; ++round) {
    Bits bits;
    std::vector<bool> model;
    for (int step = 0; step < 300; ++step) {
      // Mostly inside, sometimes just behind the end or beyond the next growth.
      const auto size = static_cast<int64_t>(model.size());
      const int64_t reach = random.one_in(30) ? 20000 : random.one_in(10) ? 9 : 0;
      const int64_t n =
          random.one_in(8) ? size + std::max<int64_t>(reach, 1) - 1 : random.below(size + reach + 1);
      const bool on = random.one_in(2);
      const bool asks = random.one_in(4);
      const auto bytes = static_cast<uint32_t>(n / 8 + 1 - asks);
      int result = 0;
      const bool failed = Fuse(random.below(3), Blow::kOnce).blows_in([&] {
        if (asks) result = mub_bits_expand(&bits, bytes);
        if (!asks) mub_bits_insert(&bits, static_cast<uint32_t>(n), on ? -256 : 0);
      });
      if (!failed && bytes > model.size() / 8) model.resize(std::max<size_t>(model.size() + 8192, bytes * 8));
      if (asks) {
        EXPECT_EQ(result, !failed);
      } else if (!failed) {
        model[static_cast<size_t>(n)] = on;
      }
      if (random.one_in(100)) {
        mub_bits_zero(&bits);
        std::fill(model.begin(), model.end(), false);
      }
      ASSERT_EQ(bits.size, model.size() / 8);
      ASSERT_EQ(bits.data == nullptr, model.empty());
      for (const int64_t probe : {n, n + 1, random.below(size + 1), int64_t{UINT32_MAX}}) {
        const bool is_set = probe < static_cast<int64_t>(model.size()) && model[static_cast<size_t>(probe)];
        ASSERT_EQ(mub_bits_find(&bits, static_cast<uint32_t>(probe)), is_set ? 128 >> probe % 8 : 0);
      }
    }
    ASSERT_TRUE(model.empty() || std::vector(bits.data, bits.data + bits.size + 1) == bytes_of(model));
  }
}

TEST(Bits, TestAndChangeSingleBytes) {
  const std::string digits = "10110010";  // 0xB2
  for (uint32_t position = 0; position < 8; ++position) {
    const uint32_t mask = 128u >> position;
    EXPECT_EQ(mub_bits_get(0xFFFFFFB2, position), digits[position] == '1' ? mask : 0);
    EXPECT_EQ(mub_bits_set(0xABB2, position, 1), 0xB2 | mask);
    EXPECT_EQ(mub_bits_set(0xABB2, position, 0), 0xB2 - (digits[position] == '1' ? mask : 0));
  }
  for (const uint32_t position : {8u, 9u, 31u, 32u, 40u, UINT32_MAX}) {
    EXPECT_EQ(mub_bits_get(0xFFFFFFFF, position), 0u);
    EXPECT_EQ(mub_bits_set(0xB2, position, 1), 0xB2);
    EXPECT_EQ(mub_bits_set(0xB2, position, 0), 0xB2);
  }
}

// The block goes to the stream, and as it is to a string, which needs room for its terminator.
TEST(Bits, SwapGivesTheBlockAway) {
  Bits bits;
  mub_stream stream;
  mub_string text;
  mub_string_init(&text);
  for (const uint32_t bit : {1u, 7u, 8191u}) mub_bits_insert(&bits, bit, 1);
  uint8_t *const block = bits.data;
  mub_bits_swap(&bits, &stream);
  EXPECT_TRUE(bits.data == block && stream.data == block);
  EXPECT_TRUE(bits.size == 1024 && stream.length == 1024 && stream.capacity == 1024);
  mub_bits_init(&bits);
  mub_stream_swap_string(&stream, &text);
  EXPECT_EQ(std::string(text.data), "A");
  EXPECT_EQ(text.data[1023], 1);
  mub_string_shrink(&text, 1024);
  EXPECT_EQ(text.data[1024], 0);
  mub_string_term(&text);
}

TEST(Bits, RefuseWhatIsTooLarge) {
  Bits bits;
  mub_bits_insert(&bits, 3, 1);
  const bool failed = Fuse(0, Blow::kForever).blows_in([&] {
    mub_bits_insert(&bits, UINT32_MAX, 1);
    EXPECT_EQ(mub_bits_expand(&bits, UINT32_MAX), 0);
  });
  EXPECT_TRUE(failed && bits.size == 1024 && bits.data[0] == 0x10);
}

}  // namespace
