/**
 * @defgroup bits_hpp mub_bits.hpp: the set of bits
 * @ingroup hpp
 *
 * The growable set of bits of mub_bits.h.
 */
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
  static constexpr auto verify = mub_bits_verify;
  static constexpr auto memory_bytes = mub_bits_memory_bytes;
  // mub_bits_swap() does not swap: it passes the block to a stream.
  static void swap(record *a, record *b) noexcept { std::swap(*a, *b); }
};

}  // namespace detail

/** @addtogroup bits_hpp
 * @{ */

/** A growable set of bits, numbered from 0, which owns its block; see mub_bits. */
class bits : public detail::owner<bits, detail::bits_life> {
 public:
  /** Constructs an empty set; nothing is allocated. */
  bits() noexcept : owner(std::in_place) {}

  /** Returns a copy; empty if memory ran out. */
  [[nodiscard]] bits clone() const {
    bits copy;
    if (c()->size != 0 && copy.reserve(c()->size)) std::memcpy(copy.c()->data, c()->data, c()->size);
    return copy;
  }

  /** Returns the number of bits, set or clear; those beyond it read as clear. */
  std::int64_t size() const noexcept { return std::int64_t{8} * c()->size; }
  /** Checks whether the size is 0. */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }
  /** Returns the size in bytes of 8 bits. */
  std::uint32_t size_bytes() const noexcept { return c()->size; }

  /** Enlarges the set to at least `bytes` bytes; false if memory ran out. See mub_bits_expand(). */
  [[nodiscard]] bool reserve(std::uint32_t bytes) { return mub_bits_expand(c(), bytes) != 0; }

  /** Checks whether a bit is set; see mub_bits_find(). */
  bool test(std::uint32_t bit) const { return mub_bits_find(c(), bit) != 0; }

  /**
   * Sets or clears a bit, enlarging the set if needed. It is unchanged if memory runs out: call reserve()
   * first to detect that. See mub_bits_insert().
   */
  void set(std::uint32_t bit, bool on = true) { mub_bits_insert(c(), bit, on); }

  /** Clears all bits; the size is unchanged. See mub_bits_zero(). */
  void clear() { mub_bits_zero(c()); }
};

/** @} */

}  // namespace v1
}  // namespace mub

#endif
