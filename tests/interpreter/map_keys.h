// Keys of maps: how they are drawn, passed, and turned into texts that order as they do.
#ifndef MUB_TESTS_INTERPRETER_MAP_KEYS_H
#define MUB_TESTS_INTERPRETER_MAP_KEYS_H

#include <array>
#include <cctype>
#include <cstring>
#include <string>
#include <tuple>

#include "interpreter/program.h"
#include "mub.h"

namespace mub_test {

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
template <class World>
struct ByteKeyArgument {
  explicit ByteKeyArgument(World &world) {
    Program &program = world.program;
    const auto how = program.below(8);
    if (how == 0) return;  // NULL, whatever the length
    if (how == 1) {
      const auto &slot = world.slots[program.below(World::kSlots)];
      const std::string_view own = stored_keys(slot.record.keys);
      const auto from = static_cast<size_t>(program.below(static_cast<int64_t>(own.size()) + 1));
      const std::string_view part = own.substr(from, static_cast<size_t>(program.below(40)));
      data = part.data();
      length = static_cast<int64_t>(part.size());
      bytes = part;
    } else {
      bytes = draw(program);
      data = bytes.c_str();
      length = static_cast<int64_t>(bytes.size());
      if (how == 2) {
        bytes.resize(std::strlen(bytes.c_str()));
        data = bytes.c_str();
        length = -1;
      }
    }
    text = world.self == nullptr || !folds_case(world.self->record, 0) ? bytes : lowered(bytes);
  }
  ByteKeyArgument(const ByteKeyArgument &) = delete;
  auto arguments() const { return std::tuple(static_cast<const void *>(data), length); }

  static std::string draw(Program &program) {
    static const char *const kParts[] = {"", "a", "A", "b", "\xFF", "ab", "AB", "key"};
    std::string bytes = kParts[program.below(8)];
    const auto more = program.below(6);
    if (more == 1) bytes += '\0';
    if (more == 2) bytes += std::string(static_cast<size_t>(program.below(40)), 'x');
    if (more > 2) bytes += std::to_string(program.below(40));
    return bytes;
  }

  const char *data = nullptr;
  int64_t length = -1;
  std::string bytes, text;
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
