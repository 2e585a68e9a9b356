// Bit sets: a block of bytes that grows when a bit after its end is set or cleared. Bit n is in byte n >> 3,
// with the mask 0x80 >> (n & 7).
//
//   data ──► [ byte 0 | byte 1 | … | byte size-1 | 0 ]
//
// Invariants:
//   1. data is null if and only if size is 0.
//   2. The block has size + 1 bytes, the last one always 0: mub_bits_swap() makes it the block of a stream.
//
// Threads: functions that take a const set write nothing.
#include "mub_bits.h"

#include <cstring>

#include "base/alloc.h"
#include "base/fault.h"
#include "base/growth.h"

namespace mub {
namespace {

constexpr uint32_t mask(uint32_t position) { return position < 8 ? 0x80u >> position : 0; }

constexpr uint32_t bit_in(uint32_t byte, uint32_t position) { return byte & mask(position); }

constexpr uint8_t with_bit(uint32_t byte, uint32_t position, bool on) {
  return static_cast<uint8_t>(on ? byte | mask(position) : byte & ~mask(position));
}

bool grow(mub_bits &bits, uint32_t bytes) {
  const uint32_t size = grown_bit_bytes(bits.size, bytes);
  void *data = regrown(bits.data, bits.size, int64_t{size} + 1, 1);
  if (data == nullptr) return false;
  bits.data = static_cast<uint8_t *>(data);
  bits.size = size;
  return true;
}

void put(mub_bits &bits, uint32_t bit, bool on) {
  uint8_t &byte = bits.data[bit >> 3];
  byte = with_bit(byte, bit & 7, on);
}

// Not inlined, so that setting an existing bit needs no stack frame.
__attribute__((noinline)) void insert_growing(mub_bits &bits, uint32_t bit, bool on) {
  if (grow(bits, (bit >> 3) + 1)) put(bits, bit, on);
}

void insert(mub_bits &bits, uint32_t bit, bool on) {
  if (bits.size <= bit >> 3) return insert_growing(bits, bit, on);
  if (bits.data != nullptr) put(bits, bit, on);  // GCOVR_EXCL_BR_LINE: without a block there is no size
}

uint32_t find(const mub_bits &bits, uint32_t bit) {
  const uint32_t index = bit >> 3;
  return bits.data != nullptr && index < bits.size ? bit_in(bits.data[index], bit & 7) : 0;
}

int64_t memory_bytes(const mub_bits &bits) { return bits.data == nullptr ? 0 : int64_t{bits.size} + 1; }

Fault verify(const mub_bits &bits) {
  if ((bits.data == nullptr) != (bits.size == 0)) return "The block is missing, or has no size.";
  return bits.size == 0 || bits.data[bits.size] == 0 ? nullptr
                                                     : "The byte after the last one of the set is not 0.";
}

}  // namespace
}  // namespace mub

extern "C" {

uint32_t mub_bits_get(uint32_t byte, uint32_t position) { return mub::bit_in(byte, position); }

uint8_t mub_bits_set(uint32_t byte, uint32_t position, int on) {
  return mub::with_bit(byte, position, on != 0);
}

mub_bits *mub_bits_init(mub_bits *bits) {
  *bits = {};
  return bits;
}

mub_bits *mub_bits_term(mub_bits *bits) {
  mub::release(bits->data);
  *bits = {};
  return bits;
}

int mub_bits_expand(mub_bits *bits, uint32_t bytes) {
  return bits->size >= bytes || mub::grow(*bits, bytes) ? 1 : 0;
}

void mub_bits_zero(mub_bits *bits) {
  if (bits->data != nullptr) std::memset(bits->data, 0, bits->size);
}

int mub_bits_verify(const mub_bits *bits, const char **what) { return mub::report(mub::verify(*bits), what); }

int64_t mub_bits_memory_bytes(const mub_bits *bits) { return mub::memory_bytes(*bits); }

void mub_bits_insert(mub_bits *bits, uint32_t bit, int on) { mub::insert(*bits, bit, on != 0); }

uint32_t mub_bits_find(const mub_bits *bits, uint32_t bit) { return mub::find(*bits, bit); }

void mub_bits_swap(mub_bits *bits, mub_stream *stream) { *stream = {bits->data, bits->size, bits->size}; }
}
