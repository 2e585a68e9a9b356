// Computes the CRC-32 constants at compile time.
//
// A register stands for a polynomial over GF(2) of degree below 32, reflected: bit 0 is the coefficient of
// x^31, bit 31 that of x^0. The modulus is P = x^32 + kPolynomial.
#ifndef MUB_CRC32_CRC32_MATH_H
#define MUB_CRC32_CRC32_MATH_H

#include <cstdint>

namespace mub::crc {

constexpr uint32_t kPolynomial = 0xEDB88320;

constexpr uint32_t times_x(uint32_t crc) { return (crc >> 1) ^ ((crc & 1) != 0 ? kPolynomial : 0); }

constexpr uint32_t times_x8(uint32_t crc) {
  for (int bit = 0; bit < 8; ++bit) crc = times_x(crc);
  return crc;
}

// x^exponent mod P.
constexpr uint32_t power_of_x(int exponent) {
  uint32_t power = uint32_t{1} << 31;
  for (int i = 0; i < exponent; ++i) power = times_x(power);
  return power;
}

// floor(x^96 / P) without its coefficient of x^0, reflected: bit 0 is the coefficient of x^64. It is computed
// by long division, one bit at a time; the remainder after the first step is x^32 mod P, which is
// kPolynomial.
constexpr uint64_t quotient_of_x96() {
  uint64_t quotient = 1;
  uint32_t rest = kPolynomial;
  for (int bit = 1; bit < 64; ++bit) {
    quotient |= uint64_t{rest & 1} << bit;
    rest = times_x(rest);
  }
  return quotient;
}

// How the register after 0, 1, 2 … bytes changes if it starts with all ones and is inverted at the end. The
// register is linear in its start, so xor with this value turns the hash of a run, which starts at 0, into
// its checksum. Longer ranges are folded in wider steps. With a limit of 1024 instead, 1 KiB takes 1.1 times
// as long; with 256, the same time (bench/crc32_bench.cpp).
constexpr int64_t kShortBytes = 512;

struct InversionEffect {
  uint32_t crc[kShortBytes + 1];
};

constexpr InversionEffect make_inversion_effect() {
  InversionEffect table{};
  uint32_t crc = 0xFFFFFFFF;
  for (uint32_t &effect : table.crc) {
    effect = ~crc;
    crc = times_x8(crc);
  }
  return table;
}

inline constexpr InversionEffect kInversionEffect = make_inversion_effect();

}  // namespace mub::crc

#endif
