/* mub_bits.hpp: mub::bits, the growable set of bits of mub_bits.h. */
#ifndef MUB_BITS_HPP
#define MUB_BITS_HPP

#include <cstring>

#include "mub_base.hpp"
#include "mub_bits.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct bits_life {
  using record = mub_bits;
  static void init(record *bits) noexcept { mub_bits_init(bits); }
  static void bare(record *bits) noexcept { mub_bits_init(bits); }
  static void release(record *bits) noexcept { mub_bits_term(bits); }
  // mub_bits_swap() exchanges nothing: it gives the block to a stream.
  static void swap(record *a, record *b) noexcept { std::swap(*a, *b); }
};

}  // namespace detail

/** A set of bits, numbered from 0; see mub_bits. */
class bits : public detail::owner<bits, detail::bits_life> {
 public:
  /** Makes an empty set. */
  bits() noexcept : owner(std::in_place) {}

  /** A copy; empty if memory ran out. */
  [[nodiscard]] bits clone() const {
    bits copy;
    if (c()->size != 0 && copy.reserve(c()->size)) std::memcpy(copy.c()->data, c()->data, c()->size);
    return copy;
  }

  /** The size in bytes of 8 bits each; bits beyond it read as clear. */
  std::uint32_t size_bytes() const noexcept { return c()->size; }

  /** Grows to at least `bytes` bytes; false if memory ran out. See mub_bits_expand(). */
  [[nodiscard]] bool reserve(std::uint32_t bytes) { return mub_bits_expand(c(), bytes) != 0; }

  /** Whether a bit is set; see mub_bits_find(). */
  bool test(std::uint32_t bit) const { return mub_bits_find(c(), bit) != 0; }

  /**
   * Sets or clears a bit. Nothing changes if memory runs out: call reserve() first to find out. See
   * mub_bits_insert().
   */
  void set(std::uint32_t bit, bool on = true) { mub_bits_insert(c(), bit, on); }

  /** Clears all bits; see mub_bits_zero(). */
  void clear() { mub_bits_zero(c()); }
};

}  // namespace v1
}  // namespace mub

#endif
