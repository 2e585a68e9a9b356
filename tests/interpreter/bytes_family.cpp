// Programs for byte streams and strings, for character views, and for functions on plain bytes.
#include "bytes_ops.inc"

#include <numeric>

#include "interpreter/units.h"

namespace mub_test {

// role (const )?mub_string \* \w+ = Peer<mub_string>
// role const %r \* \w+;const char \* text;int64_t count = Self<%s>, Text<%s, kRead>
// role (const )?%r \* .* = Self<%s>
// role const void \* bytes;int64_t (count|new_count) = Text<%s, kPut>
// role const void \* \w+;int64_t \w+ = Text<%s, kCounted>
// role const char \* text;int64_t count = Text<%s, kPut>
// role const char \* \w+ = Terminated
// role char \*\* string;const char \* source;int64_t length = Owned, Terminated, Capacity
// role (char \* string|void \* destination);int64_t (length|count) = Data
// role void \* destination;(const )?void \* source;int64_t count = Ranges
// role int64_t \* (position|count) = Position
// role uint8_t \*\* bytes = Out<uint8_t *>
// role (u?int64_t|uint32_t) value = Word

// ---- fields at the cursor of a stream

using Stream = Slot<mub_stream>;

int64_t left_at(const Stream &stream, int64_t at) {
  return at < 0 || at >= stream.filled ? 0 : stream.filled - at;
}
void put_clipped(Stream &stream, int64_t at, const Units &units) {
  const size_t count = std::min(clipped(left_at(stream, at)), units.size());
  if (count > 0) stream.units.replace(clipped(at), count, units, 0, count);
}

struct Position {
  explicit Position(auto &world) : at(world.program.near(world.self->length())), now(at) {
    world.is_far = true;
  }
  auto arguments() { return std::tuple(&now); }
  int64_t after(int64_t count) const { return wrapping_sum(at, count); }
  int64_t at, now;
};
constexpr auto draw_word = [](auto &world) {
  const uint64_t number = world.program.one_in(2) ? ~uint64_t{0} : world.program.word();
  return (number >> world.program.below(64)) + static_cast<uint64_t>(world.program.below(2));
};
using Word = Drawn<uint64_t, draw_word>;

uint64_t low(uint64_t value, int bits) { return value & ~uint64_t{0} >> (64 - bits); }

// The format of an integer, from the name of the operation.
struct Form {
  explicit Form(std::string_view name) : is_packed(name.find("flate") != name.npos) {
    constexpr std::string_view kNames[] = {"_byte", "_word", "_tword", "_dword", "_xword", "_lword"};
    constexpr int kWidths[] = {1, 2, 3, 4, 6, 8};
    for (int i = 0; i < 6; ++i) width = name.find(kNames[i]) != name.npos ? kWidths[i] : width;
    is_lword = is_packed && width == 8;
    longest = !is_packed ? width : is_lword ? 9 : 1 << width / 2;
  }
  // The number of bits that fit into a packed length.
  int bits_in(int length) const {
    return is_lword ? (length == 9 ? 64 : 7 * length) : 8 * length - (is_packed ? width / 2 : 0);
  }
  int length_of(uint64_t value) const {
    int length = is_packed ? 1 : width;
    while (length < longest && low(value, 8 * width) >> bits_in(length) != 0) ++length;
    return length;
  }
  // The first byte determines the number of bytes.
  int length_after(uint8_t head) const {
    return !is_packed ? width : is_lword ? std::countl_one(head) + 1 : (head >> (8 - width / 2)) + 1;
  }
  // The significance of each stored byte, in stored order.
  std::string_view places(int length) const {
    constexpr std::string_view kOfLword[] = {"0",      "10",      "201",      "3201",     "40123",
                                             "540123", "6450123", "76450123", "801234567"};
    if (is_lword) return kOfLword[length - 1];
    return is_packed ? std::string_view("3210").substr(clipped(4 - length))
                     : std::string_view("01234567").substr(0, clipped(length));
  }
  // The value, and the number of bytes that the cursor moves.
  std::pair<uint64_t, int> decoded(Stream &stream, int64_t at) const {
    const int64_t left = left_at(stream, at);
    const auto byte_at = [&](int64_t i) { return static_cast<uint8_t>(want(op::get_at_(), stream, i)); };
    const int length = length_after(byte_at(at));
    if (!is_packed && left < length) return {0, length};
    if (is_packed && at >= stream.filled) return {is_lword ? ~uint64_t{0} : 0, 0};
    if (is_lword && length > 1 && left < length) return {~uint64_t{0}, 1};
    uint64_t value = 0;
    for (const char place : places(length))
      value |= place == '8' ? (++at, 0) : uint64_t{byte_at(at++)} << (8 * (place - '0'));
    return {low(value, bits_in(length)), length};
  }
  int width = 0, longest;
  bool is_packed, is_lword;
};
uint64_t want(auto op, Stream &stream, Position &position) {
  const auto [value, moves] = Form(op.kName).decoded(stream, position.at);
  EXPECT_EQ(position.now, position.after(moves));
  return value;
}
// The written bytes must decode to the value.
void want(auto op, Stream &stream, Position &position, uint64_t value) {
  const Form form(op.kName);
  const int length = form.length_of(value);
  const bool has_room = left_at(stream, position.at) >= length;
  EXPECT_EQ(position.now, position.after(has_room || !form.is_lword ? length : 0));
  if (!has_room) return;
  put_clipped(stream, position.at, units_of(stream.record.data + position.at, length));
  EXPECT_EQ(form.decoded(stream, position.at), std::pair(low(value, form.bits_in(form.longest)), length));
}
void check(auto op, auto &, Word &value, int result) {
  EXPECT_EQ(result, Form(op.kName).length_of(value.value));
}
// Framed blocks: the content of another record after its length. The cursor moves even if the record cannot
// grow.
template <class Other>
void check(auto op, auto &world, Self<mub_stream> &self, Position &position, Peer<Other> &other,
           int64_t result) {
  const Form prefix(op.kName.ends_with("string") ? "_word" : "_dword");
  const int64_t body = position.after(prefix.width);
  int64_t count = other.slot.filled;
  if (op.kName.starts_with("set")) {
    put_clipped(self.slot, body, other.slot.content());
    for (int i = 0; i < prefix.width && left_at(self.slot, position.at) >= prefix.width; ++i)
      self.slot.units[clipped(position.at + i)] = count >> (8 * i) & 0xFF;
  } else {
    count = static_cast<int64_t>(prefix.decoded(self.slot, position.at).first);
    if (!world.failed) other.slot.take(part(self.slot.content(), body, count));
  }
  EXPECT_EQ(result, wrapping_sum(body, count));
  EXPECT_EQ(position.now, result);
}
void want(op::set_buffer_, Stream &stream, Position &position, const auto &text) {
  EXPECT_EQ(position.now, position.after(text.count));
  put_clipped(stream, position.at, part(text.all, 0, text.count));
}
void check(op::get_buffer_, auto &, Self<mub_stream> &self, Position &position, Out<uint8_t *> &bytes,
           Position &count, int64_t result) {
  EXPECT_EQ(result, position.after(count.at));
  EXPECT_EQ(position.now, result);
  const int64_t there = left_at(self.slot, position.at);
  EXPECT_EQ(*bytes.value, there > 0 ? self.slot.record.data + position.at : nullptr);
  EXPECT_EQ(count.now, there > 0 ? std::min(count.at, there) : 0);
}
// The old block of the string is not released.
void by_hand(op::clone_string_, auto &world, Stream &stream, auto clone) {
  Slot<mub_string> &out = Peer<mub_string>(world).slot;
  std::free(out.record.data);
  std::memset(&out.record, 0x55, sizeof out.record);
  out.clear();
  const int is_cloned = world.call([&] { return clone(&stream.record, &out.record); });
  EXPECT_EQ(is_cloned, world.failed ? 0 : 1);
  if (!world.failed) want(op::clone_(), stream, out);
}
void by_hand(op::check_, auto &world, auto &, auto check) {
  const Text<mub_stream, kCounted> text(world);
  const Units all = text.units();
  const char32_t sum = std::accumulate(all.begin(), all.end(), U'\0', std::bit_xor());
  EXPECT_EQ(check(text.data, text.count), static_cast<int>(sum));
  EXPECT_EQ(check(nullptr, 1), 0);
}
// bytes_test.cpp tests every length.
void by_hand(op::crc32_, auto &, auto &, auto crc32) {
  EXPECT_EQ(crc32("123456789", 9) + crc32("1", -1) + crc32(nullptr, 1), 0xCBF43926);
}

// ---- views, and functions on bytes and terminated texts

using Char = Slot<mub_char>;
using Terminated = Text<mub_char, kTerminated>;

void want(op::shrink_, Char &view, int64_t length) {
  if (view.data != nullptr && length >= 0) view.filled = length;
}
int64_t want(op::length_, Char &view) { return view.filled = view.measured(); }
void want(op::zero_, Char &view) {
  change_each(view, [](char32_t) { return U'\0'; });
}
void want(op::copy_, Char &view, const auto &text) {
  if (view.data != nullptr || text.data == nullptr) return;
  view.adopt(text.units() + U'\0');
  view.filled = text.size();
}

// Of a comparison of terminated texts, only the sign is the same on all machines.
void check(OneOf<op::cmp_, op::icmp_> auto op, auto &, Terminated &a, Terminated &b, int result) {
  EXPECT_EQ(std::clamp(result, -1, 1), std::clamp(want(op, a, b), -1, 1));
}

// The data of a view as plain bytes, and as a heap-allocated string.
struct Data : Self<mub_char> {
  using Self<mub_char>::Self;
  auto arguments() const { return std::tuple(slot.data, std::min(slot.filled, size_of(slot.units))); }
};
struct Owned : Self<mub_char> {
  using Self<mub_char>::Self;
  auto arguments() const { return std::tuple(&slot.record.data); }
};
void check(op::trim_, auto &, Data &string, None) {
  const Units all = string.slot.content(), kept = trimmed(all);
  const size_t first = all.find_first_not_of(U" \t\r\n");
  const bool starts_with_0 = first != Units::npos && all[first] == 0;
  if (string.slot.data == nullptr || starts_with_0 || (!all.empty() && kept == all)) return;
  string.slot.units.replace(0, kept.size() + 1, kept + U'\0');
}
void check(op::dup_, auto &world, Owned &string, Terminated &source, Capacity &length, None) {
  if (source.data == nullptr) return string.slot.adopt({});
  if (world.failed || world.asks_too_much) return;
  Units copy = source.units();
  if (length.value >= 0) copy.resize(clipped(length.value));
  string.slot.adopt(copy + U'\0');
}

// Two ranges in the bytes of a view, usually near each other.
struct Ranges : Self<mub_char> {
  explicit Ranges(auto &world) : Self<mub_char>(world) {
    Program &program = world.program;
    const int64_t size = size_of(slot.units);
    from = program.below(size + 1);
    to = std::clamp<int64_t>(program.one_in(2) ? program.below(size + 1) : from + program.below(37) - 18, 0,
                             size);
    count = program.below(size + 1 - std::max(from, to)) - program.below(2);
  }
  auto arguments() const { return std::tuple(slot.data + to, slot.data + from, count); }
  int64_t from, to, count;
};
// A copy goes from low to high addresses, and so may copy bytes that it has just written; at a distance of 7
// or less it goes through a buffer. A move leaves zeros, unless the ranges are near.
void check(OneOf<op::copy_, op::move_> auto op, auto &, Ranges &ranges, None) {
  const auto [from, to, count] = std::tuple(ranges.from, ranges.to, ranges.count);
  const bool is_near = std::abs(to - from) <= 7;
  Units &units = ranges.slot.units;
  const Units before = units;
  for (int64_t i = 0; i < count; ++i) units[clipped(to + i)] = (is_near ? before : units)[clipped(from + i)];
  for (int64_t i = from; i < from + count && !is_near && op.kName == "move"; ++i)
    if (i < to || i >= to + count) units[clipped(i)] = 0;
}

}  // namespace mub_test

#include "bytes_steps.inc"
