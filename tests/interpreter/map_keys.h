// Keys of maps: draws and passes them, and converts them to values that sort in the same order.
#ifndef MUB_TESTS_INTERPRETER_MAP_KEYS_H
#define MUB_TESTS_INTERPRETER_MAP_KEYS_H

#include <cctype>
#include <cstring>
#include <string>
#include <tuple>

#include "interpreter/machine.h"

namespace mub_test {

// Few different keys, so that a program draws them repeatedly; sequences have more.
constexpr int64_t kDrawnKeys = 160, kKeysOfRuns = 256;

// The key stream of a record; empty if it has none yet.
inline std::string_view stored_keys(const mub_stream &keys) {
  if (keys.data == nullptr) return "";
  return {reinterpret_cast<const char *>(keys.data), static_cast<size_t>(keys.length)};
}
// A text that sorts as the record sorts keys, in lower case if the record ignores case.
std::string folded(const auto &record, std::string_view bytes) {
  std::string text(bytes);
  if constexpr (requires { record.nocase; }) {
    for (size_t i = 0; record.nocase != 0 && i < text.size(); ++i)
      text[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
  }
  return text;
}

// Byte strings of a few letters in both cases and NULs, including the empty key and prefixes of other keys.
// They are passed with a length, up to their NUL, as NULL, or as a part of a record's key stream, which the
// call may move.
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
  const void *in_batch() const { return data; }

  std::string bytes;
  const char *data;
  int64_t length;
  std::string text;

 private:
  static std::string drawn(Program &program) {
    const char last = "xA\0\xFF"[program.below(4)];
    constexpr int64_t kLongest[] = {3, 3, 3, 3, 3, 40, 40, 400};
    const auto times = static_cast<size_t>(program.below(program.one_of(kLongest)));
    return program.text(2) + std::string(times, last);
  }
};
// Records with byte-string keys.
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
};

// Numbers of the full width: small ones of both signs, and ones that differ only in their highest or lowest
// bits.
template <class Integer>
Integer hard_number(int64_t n) {
  constexpr int kBits = 8 * sizeof(Integer);
  const auto m = static_cast<Integer>(n / 4);
  const Integer hard[] = {m, static_cast<Integer>(~m), static_cast<Integer>((m + 1) << (kBits - 9)),
                          static_cast<Integer>(m | Integer{1} << (kBits / 2))};
  return hard[n % 4];
}
// An unsigned number that sorts as the key does in its type.
template <class Bits>
Bits ordered(Bits bits, uint32_t key_type) {
  constexpr Bits kSign = Bits{1} << (8 * sizeof bits - 1);
  if (key_type < 5) return key_type % 2 != 0 ? bits ^ kSign : bits;
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}
// Records whose keys are numbers, or arrays of words.
template <class R, class T>
struct NumberKeys {
  using Text = T;
  struct KeyArgument {
    explicit KeyArgument(WorldOf<R> &world, int64_t number = -1)
        : key(hard_number<T>(number < 0 ? world.program.below(kDrawnKeys) : number)) {
      if constexpr (requires(R record) { record.key_type; }) {
        // Clear a bit of the exponent, to avoid NaN.
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
    T in_batch() const { return key; }
    T key, text;
    int64_t length = 0;  // for byte strings, negative: up to the NUL
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
};

}  // namespace mub_test

#endif
