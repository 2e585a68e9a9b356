// Keys of maps: how they are drawn, passed, and turned into texts that order as they do.
#ifndef MUB_TESTS_INTERPRETER_MAP_KEYS_H
#define MUB_TESTS_INTERPRETER_MAP_KEYS_H

#include <array>
#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "interpreter/machine.h"
#include "mub.h"

namespace mub_test {

// Keys are drawn from so many, so that a program comes upon them again; runs are of more.
constexpr int64_t kDrawnKeys = 160, kKeysOfRuns = 256;

template <class Integer>
std::string big_endian(Integer integer) {
  std::string text;
  for (int shift = 8 * sizeof integer - 8; shift >= 0; shift -= 8)
    text += static_cast<char>(integer >> shift);
  return text;
}

inline std::string lowered(std::string text) {
  for (char &letter : text) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  return text;
}

// The bytes of a record's keys; nothing when it has none yet.
inline std::string_view stored_keys(const mub_stream &keys) {
  if (keys.data == nullptr) return "";
  return {reinterpret_cast<const char *>(keys.data), static_cast<size_t>(keys.length)};
}

// Whether a record compares keys without their case.
template <class R>
auto folds_case(const R &record, int) -> decltype(record.nocase != 0) {
  return record.nocase != 0;
}
template <class R>
bool folds_case(const R &, char) {
  return false;
}

// Byte strings: from a few letters, the empty one and prefixes of others among them, in both cases and with
// NULs; with an explicit length, up to their NUL, as NULL, or as a part of the keys that a record of the
// world has, which may move.
template <class R>
struct ByteKey {
  explicit ByteKey(WorldOf<R> &world) {
    Program &program = world.program;
    const auto how = program.below(8);
    if (how == 0) return;  // NULL, whatever the length
    if (how == 1) {
      const auto &slot = world.slots[program.below(WorldOf<R>::kSlots)];
      const std::string_view own = stored_keys(slot.record.keys);
      const auto from = static_cast<size_t>(program.below(static_cast<int64_t>(own.size()) + 1));
      const std::string_view part = own.substr(from, static_cast<size_t>(program.below(40)));
      data = part.data();
      length = static_cast<int64_t>(part.size());
      bytes = part;
    } else {
      pass(draw(program));
      if (how == 2) {
        bytes.resize(std::strlen(bytes.c_str()));
        data = bytes.c_str();
        length = -1;
      }
    }
    text = folds_case(world.self->record, 0) ? lowered(bytes) : bytes;
  }
  ByteKey(WorldOf<R> &world, int64_t number) {
    pass("k" + std::to_string(kKeysOfRuns + number));
    text = folds_case(world.self->record, 0) ? lowered(bytes) : bytes;
  }
  ByteKey(const ByteKey &) = delete;
  auto arguments() const { return std::tuple(static_cast<const void *>(data), length); }

  const char *data = nullptr;
  int64_t length = -1;
  std::string bytes, text;

 private:
  void pass(std::string drawn) {
    bytes = std::move(drawn);
    data = bytes.c_str();
    length = static_cast<int64_t>(bytes.size());
  }
  static std::string draw(Program &program) {
    static const char *const kParts[] = {"", "a", "A", "b", "\xFF", "ab", "AB", "key"};
    std::string bytes = kParts[program.below(8)];
    const auto more = program.below(6);
    if (more == 1) bytes += '\0';
    if (more == 2) bytes += std::string(static_cast<size_t>(program.below(40)), 'x');
    if (more > 2) bytes += std::to_string(program.below(40));
    return bytes;
  }
};

// An offset into the keys of a record, with the length of the key there.
struct Offset {
  uint32_t *at;
  uint32_t key_length;
};
// `adjust(offset, length)` is to lower the offsets of the keys that lie after what was cut out there, even
// below 0. Then they are as before.
template <class Adjust>
void expect_lowered(Program &program, const mub_stream &keys, const std::vector<Offset> &offsets,
                    Adjust adjust) {
  const auto offset = static_cast<uint32_t>(program.below(keys.length + 2));
  const int64_t length = program.near(keys.length);
  std::vector<uint32_t> before;
  for (const Offset &each : offsets) before.push_back(*each.at);
  adjust(offset, length);
  for (size_t i = 0; i < offsets.size(); ++i) {
    const bool is_lowered = before[i] + uint64_t{offsets[i].key_length != 0} > offset;
    EXPECT_EQ(*offsets[i].at, before[i] - (is_lowered ? static_cast<uint32_t>(length) : 0));
    *offsets[i].at = before[i];
  }
}

// What the kinds with byte strings share.
template <class R>
struct ByteKeyKind {
  using KeyArgument = ByteKey<R>;
  static void set_order(R *record, int which) {
    record->nocase = static_cast<decltype(record->nocase)>(which & 1);
  }
  template <class Item>
  static std::string bytes_of(const R &record, const Item &item) {
    return std::string(stored_keys(record.keys).substr(item.key_offset, item.key_length));
  }
  template <class Item>
  static std::string text_of(const R &record, const Item &item) {
    return record.nocase == 0 ? bytes_of(record, item) : lowered(bytes_of(record, item));
  }
  // The key store has the bytes of the live keys, and nothing else.
  template <class N>
  static void compare_keys(const R &record, const std::vector<const N *> &nodes) {
    std::map<uint32_t, uint32_t> parts;
    for (const N *node : nodes) {
      if (node->key_length != 0) parts[node->key_offset] = node->key_length;
    }
    int64_t end = 0;
    for (const auto &[offset, length] : parts) {
      ASSERT_EQ(offset, end);
      end += length;
    }
    ASSERT_EQ(end, record.keys.length);
  }
};

// Numbers that fill their width: small ones of both signs, ones that differ in their highest bits or lowest
// alone.
template <class Integer>
Integer hard_number(int64_t n) {
  constexpr int kBits = 8 * sizeof(Integer);
  const auto m = static_cast<Integer>(n / 4);
  const Integer hard[] = {m, static_cast<Integer>(~m), static_cast<Integer>((m + 1) << (kBits - 9)),
                          static_cast<Integer>(m | Integer{1} << (kBits / 2))};
  return hard[n % 4];
}

}  // namespace mub_test

#endif
