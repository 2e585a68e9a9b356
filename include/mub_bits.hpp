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
#include "mub_each.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct bits_life {
  using c_struct = mub_bits;
  static void init(c_struct *bits) noexcept { mub_bits_init(bits); }
  static void bare(c_struct *bits) noexcept { mub_bits_init(bits); }
  static void release(c_struct *bits) noexcept { mub_bits_term(bits); }
  static constexpr auto verify = mub_bits_verify;
  static constexpr auto memory_bytes = mub_bits_memory_bytes;
  // mub_bits_swap() does not swap: it passes the block to a stream.
  static void swap(c_struct *a, c_struct *b) noexcept { std::swap(*a, *b); }
};

// The number of a bit that is set; the end has a negative one.
class bits_place {
 public:
  using category = std::forward_iterator_tag;
  template <class Value>
  using reference = std::uint32_t;

  bits_place() = default;
  explicit bits_place(const mub_bits *bits) noexcept : bits_(bits), next_(0) { step(); }

  template <class Value>
  std::uint32_t at() const noexcept {
    return static_cast<std::uint32_t>(next_ - 1);
  }
  void step() noexcept { mub_each_set_bit(bits_, &next_); }
  std::int64_t entry() const noexcept { return next_ - 1; }

 private:
  const mub_bits *bits_ = nullptr;
  std::int64_t next_ = -1;
};

}  // namespace detail

/** @addtogroup bits_hpp
 * @{ */

/** A growable set of bits, numbered from 0, which owns its block; see mub_bits. */
class bits : public detail::owner<bits, detail::bits_life>, public detail::range<bits> {
 public:
  using value_type = std::uint32_t;
  using const_iterator = detail::iterator<detail::bits_place, const std::uint32_t>;
  using iterator = const_iterator;

  /** Constructs an empty set; nothing is allocated. */
  bits() noexcept : owner(std::in_place) {}

  /** Returns a copy; empty if memory ran out. */
  [[nodiscard]] bits clone() const {
    bits copy;
    if (!empty() && mub_bits_expand(copy.c(), c()->size) != 0)
      std::memcpy(copy.c()->data, c()->data, c()->size);
    return copy;
  }

  /** Returns the number of bits, set or clear; those beyond it read as clear. */
  std::int64_t size() const noexcept { return std::int64_t{8} * c()->size; }
  /** Checks whether the size is 0. A set whose bits are all clear is not empty: see count(). */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }
  /** Returns the size in bytes of 8 bits. */
  std::uint32_t size_bytes() const noexcept { return c()->size; }

  /**
   * Enlarges the set to at least `wanted` bits, from 0 to 2^32; false if memory ran out. Unlike in the
   * standard library, size() grows, too. See mub_bits_expand().
   */
  [[nodiscard]] bool reserve(std::int64_t wanted) {
    return mub_bits_expand(c(), static_cast<std::uint32_t>(wanted > 0 ? (wanted + 7) / 8 : 0)) != 0;
  }

  /** Checks whether a bit is set; see mub_bits_find(). */
  ///@{
  bool test(std::uint32_t bit) const { return mub_bits_find(c(), bit) != 0; }
  bool operator[](std::uint32_t bit) const { return test(bit); }
  ///@}

  /** Returns how many bits are set, in time proportional to the size. */
  std::int64_t count() const noexcept {
    std::int64_t count = 0;
    for (std::uint32_t i = 0; i < c()->size; ++i) {
      for (unsigned rest = c()->data[i]; rest != 0; rest &= rest - 1) ++count;
    }
    return count;
  }

  /**
   * Sets or clears a bit, enlarging the set if needed. It is unchanged if memory runs out: call reserve()
   * first to detect that. See mub_bits_insert().
   */
  void set(std::uint32_t bit, bool on = true) { mub_bits_insert(c(), bit, on); }

  /** Clears all bits; the size is unchanged. See mub_bits_zero(). */
  void clear() { mub_bits_zero(c()); }

  /**
   * Iterators over the numbers of the bits that are set, in ascending order. Setting and clearing bits is
   * allowed during an iteration, which visits those above its position as they are then.
   */
  ///@{
  const_iterator begin() const noexcept { return const_iterator(detail::bits_place(c())); }
  const_iterator end() const noexcept { return {}; }
  ///@}
};

/** @} */

}  // namespace v1
}  // namespace mub

#endif
