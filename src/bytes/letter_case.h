// The runtime's tolower for many bytes: a call for each costs more than hashing or comparing them.
#ifndef MUB_BYTES_LETTER_CASE_H
#define MUB_BYTES_LETTER_CASE_H

#include <cctype>
#include <cstdint>

namespace mub {

// Bytes are taken as unsigned values. Made anew for every run, because the program may change its locale in
// between.
class Lowering {
 public:
#if defined(__GLIBC__)
  uint8_t operator()(uint8_t byte) const { return static_cast<uint8_t>(table_[byte]); }

 private:
  // What tolower itself reads; the standard library's headers keep C++ from inlining it.
  const int32_t *table_ = *__ctype_tolower_loc();
#else
  uint8_t operator()(uint8_t byte) const { return static_cast<uint8_t>(std::tolower(byte)); }
#endif
};

}  // namespace mub

#endif
