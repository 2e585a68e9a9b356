// Programs for bit sets.
#include "bits_ops.inc"

#include "interpreter/units.h"

namespace mub_test {

// role uint32_t byte = Drawn<uint32_t, draw_byte>
// role uint32_t position = Drawn<uint32_t, draw_position>
// role int on = Drawn<int, draw_switch>
// role const %r \* bits;uint32_t bit = Self<%s>, Drawn<uint32_t, draw_any_bit>
// role uint32_t bit = Drawn<uint32_t, draw_bit>
// role uint32_t bytes = Drawn<uint32_t, draw_bytes>

template <>
struct Slot<mub_bits> {
  ~Slot() { mub_bits_term(&record); }
  int64_t length() const { return static_cast<int64_t>(bytes.size()); }
  void grow(int64_t wanted) {
    if (wanted > length()) bytes.resize(clipped(std::max(length() + 1024, wanted)));
  }
  void clear() { bytes.clear(); }
  bool is_intact() const { return true; }
  int64_t memory_bytes() const { return bytes.empty() ? 0 : length() + 1; }
  void compare() {
    ASSERT_EQ(record.size, bytes.size());
    expect_intact(mub_bits_verify, record);
    ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), record.data));
  }
  mub_bits record = {};
  std::vector<uint8_t> bytes;
};
using Bits = Slot<mub_bits>;

constexpr auto draw_byte = [](auto &world) { return static_cast<uint32_t>(world.program.below(512)); };
constexpr auto draw_position = [](auto &world) {
  return static_cast<uint32_t>(world.program.near(world.program.one_in(3) ? 32 : 8));
};
constexpr auto draw_switch = [](auto &world) { return static_cast<int>(world.program.below(3) - 1) * 256; };
// Mostly in range, sometimes right after the end or far beyond the next growth.
constexpr auto draw_bit = [](auto &world) {
  Program &program = world.program;
  const int64_t end = 8 * world.self->length(), beyond = program.one_in(4) ? 12000 : 20;
  return static_cast<uint32_t>(program.one_in(9) ? end + program.below(beyond) : program.below(end + 1));
};
constexpr auto draw_any_bit = [](auto &world) {
  return world.program.one_in(9) ? UINT32_MAX : draw_bit(world);
};
constexpr auto draw_bytes = [](auto &world) { return draw_bit(world) / 8; };

uint32_t mask(uint32_t position) { return position < 8 ? 128u >> position : 0; }
void check(op::get_, auto &, auto &byte, auto &position, uint32_t result) {
  EXPECT_EQ(result, byte.value & mask(position.value));
}
void check(op::set_, auto &, auto &byte, auto &position, auto &on, uint8_t result) {
  const uint32_t bit = mask(position.value);
  EXPECT_EQ(result, (on.value != 0 ? byte.value | bit : byte.value & ~bit) & 0xFF);
}
void want(op::insert_, Bits &slot, uint32_t bit, int on) {
  slot.grow(bit / 8 + 1);
  uint8_t &byte = slot.bytes[bit / 8];
  byte = static_cast<uint8_t>(on != 0 ? byte | mask(bit % 8) : byte & ~mask(bit % 8));
}
uint32_t want(op::find_, Bits &slot, uint32_t bit) {
  return bit / 8 < slot.bytes.size() ? slot.bytes[bit / 8] & mask(bit % 8) : 0;
}
void want(op::zero_, Bits &slot) { std::ranges::fill(slot.bytes, 0); }
// The stream has the same block, which has room for the terminator of a string.
void by_hand(op::swap_, auto &, Bits &slot, auto swap) {
  mub_bits &bits = slot.record;
  mub_stream stream = {};
  swap(&bits, &stream);
  EXPECT_TRUE(stream.data == bits.data && stream.length == bits.size && stream.capacity == bits.size);
  EXPECT_TRUE(bits.data == nullptr || bits.data[bits.size] == 0);
}

}  // namespace mub_test

#include "bits_steps.inc"
