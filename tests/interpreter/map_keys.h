// Keys of maps: how they are drawn, passed, and turned into what orders as they do.
#ifndef MUB_TESTS_INTERPRETER_MAP_KEYS_H
#define MUB_TESTS_INTERPRETER_MAP_KEYS_H

#include <cctype>
#include <cstring>
#include <string>
#include <tuple>

#include "interpreter/machine.h"
#include "mub.h"

namespace mub_test {

// Keys are drawn from so many, so that a program comes upon them again; runs are of more.
constexpr int64_t kDrawnKeys = 160, kKeysOfRuns = 256;

// The bytes of a record's keys; nothing when it has none yet.
inline std::string_view stored_keys(const mub_stream &keys) {
  if (keys.data == nullptr) return "";
  return {reinterpret_cast<const char *>(keys.data), static_cast<size_t>(keys.length)};
}
// A text that compares as a record compares keys, perhaps without their case.
std::string folded(const auto &record, std::string_view bytes) {
  std::string text(bytes);
  if constexpr (requires { record.nocase; }) {
    for (size_t i = 0; record.nocase != 0 && i < text.size(); ++i)
      text[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
  }
  return text;
}

// Byte strings: from a few letters, the empty one and prefixes of others among them, in both cases and with
// NULs; with an explicit length, up to their NUL, as NULL, or as a part of the keys that a record of the
// world has, which may move.
template <class R>
struct ByteKey {
  explicit ByteKey(WorldOf<R> &world, int64_t number = -1)
      : bytes(number < 0 ? drawn(world.program) : "k" + std::to_string(kKeysOfRuns + number)),
        data(bytes.c_str()) {
    Program &program = world.program;
    const auto how = number < 0 ? program.below(8) : 7;
    if (how < 2) {
      std::string_view part;  // NULL, whatever the length
      if (how == 1) {
        const auto own = stored_keys(world.slots[program.below(WorldOf<R>::kSlots)].record.keys);
        const auto from = static_cast<size_t>(program.below(static_cast<int64_t>(own.size()) + 1));
        part = own.substr(from, static_cast<size_t>(program.below(program.one_in(4) ? 600 : 40)));
      }
      bytes = part;
      data = part.data();
    }
    if (how == 2) bytes.resize(std::strlen(data));
    length = how == 0 || how == 2 ? -1 : static_cast<int64_t>(bytes.size());
    text = folded(world.self->record, bytes);
  }
  ByteKey(const ByteKey &) = delete;
  auto arguments() const { return std::tuple(data, length); }

  std::string bytes;
  const char *data;
  int64_t length;
  std::string text;

 private:
  static std::string drawn(Program &program) {
    const char last = "xA\0\xFF"[program.below(4)];
    const auto times = static_cast<size_t>(program.below(program.one_in(4) ? 40 : 3));
    return program.text(2) + std::string(times, last);
  }
};
// The keys of records that hold byte strings.
template <class R>
struct ByteKeys {
  using KeyArgument = ByteKey<R>;
  using Text = std::string;
  static void set_order(R *record, int which) {
    record->nocase = static_cast<decltype(record->nocase)>(which & 1);
  }
  static std::string text_of(const R &record, const auto &item) {
    return folded(record, stored_keys(record.keys).substr(item.key_offset, item.key_length));
  }
  static void check_store(const R &record, const auto &nodes) {
    int64_t bytes = 0;
    for (const auto *node : nodes) bytes += node->key_length;
    ASSERT_EQ(bytes, record.keys.length) << "the store has the bytes of the keys alone";
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
// A number that orders as a key of the type does.
template <class Bits>
Bits ordered(Bits bits, uint32_t key_type) {
  constexpr Bits kSign = Bits{1} << (8 * sizeof bits - 1);
  if (key_type < 5) return key_type % 2 != 0 ? bits ^ kSign : bits;
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}
// The keys of records that hold a number or an array of words in each entry, which pass them so.
template <class R, class T>
struct NumberKeys {
  using Text = T;
  struct KeyArgument {
    explicit KeyArgument(WorldOf<R> &world, int64_t number = -1)
        : key(hard_number<T>(number < 0 ? world.program.below(kDrawnKeys) : number)) {
      if constexpr (requires(R record) { record.key_type; }) {
        // One bit less in the exponent, and a float is a number.
        if (world.self->record.key_type >= 5) key &= ~(T{1} << (8 * sizeof key - 2));
      }
      text = text_of(world.self->record, *this);
    }
    auto arguments() const {
      if constexpr (std::is_integral_v<T>) {
        return std::tuple(key);
      } else {
        return std::tuple(key.data());
      }
    }
    T key, text;
    int64_t length = 0;  // never negative: numbers have no length to measure
  };
  static void set_order(R *record, int which) {
    if constexpr (requires { record->key_type; }) {
      constexpr uint32_t kSigned = sizeof(T) == 4 ? 1 : 3, kFloat = sizeof(T) == 4 ? 5 : 6;
      record->key_type = which == 0 ? kSigned : which == 2 ? kSigned + 1 : kFloat;
    }
  }
  static T text_of(const R &record, const auto &item) {
    T key;
    std::memcpy(&key, &item.key, sizeof key);
    if constexpr (requires { record.key_type; }) {
      return ordered(key, record.key_type);
    } else {
      return key;
    }
  }
  static void check_store(const R &, const auto &) {}
};

}  // namespace mub_test

#endif
