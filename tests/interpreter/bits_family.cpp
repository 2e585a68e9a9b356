// Bit sets under programs.
#include <algorithm>
#include <cstring>

#include "interpreter/roles.h"
#include "mub_bits.h"

namespace mub_test {

template <class R>
struct WorldOf;
template <>
struct WorldOf<mub_bits> : World {
  using World::World;
  ~WorldOf() { mub_bits_term(&bits); }
  void compare() {
    ASSERT_EQ(bits.size, model.size());
    ASSERT_TRUE(model.empty() ? bits.data == nullptr : std::equal(model.begin(), model.end(), bits.data));
  }
  // Mostly inside, sometimes right after the end or far beyond the next growth.
  uint32_t bit() {
    const int64_t end = 8 * int64_t{bits.size};
    return static_cast<uint32_t>(program.one_in(9) ? end + program.below(program.one_in(4) ? 20000 : 20)
                                                   : program.below(end + 1));
  }
  void expand(size_t bytes) {
    if (!failed && bytes > model.size()) model.resize(std::max(model.size() + 1024, bytes));
  }
  mub_bits bits = {};
  std::vector<uint8_t> model;
};
using Bits = WorldOf<mub_bits>;

uint32_t mask(uint32_t position) { return position < 8 ? 128u >> position : 0; }

void single_bytes(Bits &world) {
  const auto byte = static_cast<uint32_t>(world.program.below(512));
  for (const uint32_t position : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 31u, 32u, 40u, UINT32_MAX}) {
    EXPECT_EQ(mub_bits_get(byte, position), byte & mask(position));
    EXPECT_EQ(mub_bits_set(byte, position, -256), (byte | mask(position)) & 0xFF);
    EXPECT_EQ(mub_bits_set(byte, position, 0), byte & ~mask(position) & 0xFF);
  }
}
void expand(Bits &world) {
  const uint32_t bytes = world.bit() / 8;
  const int result = world.call([&] { return mub_bits_expand(&world.bits, bytes); });
  EXPECT_EQ(result, world.failed ? 0 : 1);
  world.expand(bytes);
}
void insert(Bits &world) {
  const uint32_t bit = world.bit();
  const bool on = world.program.one_in(2);
  world.call([&] { mub_bits_insert(&world.bits, bit, on ? -256 : 0); });
  world.expand(bit / 8 + 1);
  if (!world.failed) world.model[bit / 8] = mub_bits_set(world.model[bit / 8], bit % 8, on ? 1 : 0);
  if (!world.failed) {
    EXPECT_EQ(mub_bits_find(&world.bits, bit), on ? mask(bit % 8) : 0);
  }
}
void find(Bits &world) {
  for (const uint32_t bit : {world.bit(), 8 * world.bits.size, UINT32_MAX}) {
    const uint32_t expected = bit / 8 < world.model.size() ? world.model[bit / 8] & mask(bit % 8) : 0;
    world.read_by_all([&] { EXPECT_EQ(mub_bits_find(&world.bits, bit), expected); });
  }
}
// The block goes to the stream, with room for the terminator of a string. It comes back here.
void swap_and_begin_again(Bits &world) {
  mub_stream stream = {};
  mub_bits_swap(&world.bits, &stream);
  EXPECT_TRUE(stream.data == world.bits.data && stream.capacity == world.bits.size);
  EXPECT_TRUE(stream.length == stream.capacity &&
              (stream.data == nullptr || stream.data[stream.capacity] == 0));
  mub_bits_zero(&world.bits);
  std::fill(world.model.begin(), world.model.end(), 0);
  if (world.program.one_in(2)) return world.compare();
  EXPECT_EQ(mub_bits_term(&world.bits), &world.bits);
  world.model.clear();
  world.compare();
  world.bits.size = 77;
  EXPECT_EQ(mub_bits_init(&world.bits), &world.bits);
}

// steps of mub_bits: single_bytes expand insert insert insert find swap_and_begin_again

}  // namespace mub_test

#include "bits_steps.inc"
