// A set of the numbers below kCount, on the stack: for checks, which do not allocate.
#ifndef MUB_BASE_NUMBER_SET_H
#define MUB_BASE_NUMBER_SET_H

#include <cstddef>
#include <cstdint>

namespace mub {

template <int64_t kCount>
class NumberSet {
 public:
  // False if the number was in the set already.
  bool add(int64_t number) {
    const uint64_t bit = uint64_t{1} << (number % 64);
    uint64_t &word = words_[static_cast<size_t>(number / 64)];
    const bool is_new = (word & bit) == 0;
    word |= bit;
    return is_new;
  }

 private:
  static_assert(kCount % 64 == 0);
  uint64_t words_[static_cast<size_t>(kCount / 64)] = {};
};

}  // namespace mub

#endif
