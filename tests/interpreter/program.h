// A program is a sequence of bytes, from which an interpreter reads its choices. Any bytes are a valid
// program: each choice is reduced to its range, and past the end of the program every byte reads as 0.
#ifndef MUB_TESTS_INTERPRETER_PROGRAM_H
#define MUB_TESTS_INTERPRETER_PROGRAM_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace mub_test {

// Converts the result of std::string::find() to an index; npos becomes -1.
inline int64_t index_of(size_t position) { return static_cast<ptrdiff_t>(position); }

// A number as a size, limited to PTRDIFF_MAX.
inline size_t clipped(int64_t number) { return static_cast<size_t>(std::min<int64_t>(number, PTRDIFF_MAX)); }

class Program {
 public:
  Program(const uint8_t *bytes, size_t size) : next_(bytes), end_(bytes + size) {}

  bool is_at_end() const { return next_ == end_; }
  uint8_t byte() { return next_ == end_ ? 0 : *next_++; }
  // A number from 0 to `bound` - 1.
  int64_t below(int64_t bound) {
    const uint64_t drawn = bound <= 256 ? byte() : uint64_t{byte()} << 8 | byte();
    return static_cast<int64_t>(drawn % static_cast<uint64_t>(bound));
  }
  bool one_in(int64_t n) { return below(n) == n - 1; }
  // An element of an array or a string.
  auto &one_of(auto &&elements) {
    return elements[static_cast<size_t>(below(static_cast<int64_t>(std::size(elements))))];
  }

  uint64_t word() {
    uint64_t word = 0;
    for (int i = 0; i < 8; ++i) word = word << 8 | byte();
    return word;
  }

  // A number near `bound`, another boundary value, or a number below `bound`.
  int64_t near(int64_t bound) {
    constexpr int64_t kFar[] = {INT64_MIN, INT64_MAX, INT32_MIN, INT32_MAX, UINT32_MAX, 1LL << 32, -1, 0};
    const int64_t kind = below(4);
    if (kind == 0) return bound + below(5) - 2;
    if (kind == 1) return one_of(kFar);
    return bound > 0 ? below(bound) : below(3) - 1;
  }

  // Up to `longest` letters. The alphabet is often small, so that there are many repetitions.
  std::string text(int64_t longest) {
    const int64_t letters = byte() % 4 == 0 ? 200 : 2;
    std::string text(static_cast<size_t>(below(longest + 1)), '\0');
    for (char &letter : text) letter = static_cast<char>('a' + below(letters));
    return text;
  }

 private:
  const uint8_t *next_;
  const uint8_t *end_;
};

}  // namespace mub_test

#endif
