// tolower for runs of bytes: calling it for each byte costs more than hashing or comparing the bytes.
#ifndef MUB_BYTES_LETTER_CASE_H
#define MUB_BYTES_LETTER_CASE_H

#include <cctype>
#include <cstdint>

namespace mub {

// Takes bytes as unsigned values. Construct one for each run of bytes: the program may change its locale in
// between.
class Lowering {
 public:
#if defined(__GLIBC__)
  uint8_t operator()(uint8_t byte) const { return static_cast<uint8_t>(table_[byte]); }

 private:
  // The table that tolower itself reads. In C++, the library's headers prevent tolower from being inlined.
  const int32_t *table_ = *__ctype_tolower_loc();
#else
  uint8_t operator()(uint8_t byte) const { return static_cast<uint8_t>(std::tolower(byte)); }
#endif
};

}  // namespace mub

#endif
